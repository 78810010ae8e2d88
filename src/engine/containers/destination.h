#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "base/status.h"
#include "engine/containers/source.h"
#include "engine/options/conversion_settings.h"
#include "engine/sound/audio_track.h"
#include "format/media_format.h"
#include "media/avi/structure/avi_limits.h"

namespace kelvane {

// One destination file being written; finished by Finish, or by the destructor.
class Destination {
public:
    virtual ~Destination() = default;

    // Writes the next frame of the picture. 0 or -1.
    virtual Status WriteFrame(std::span<const uint8_t> frame) = 0;
    // Stores a bitmap header with its codec data for the picture, where the container can.
    virtual void SetStreamHeader(std::span<const uint8_t> header) { static_cast<void>(header); }
    // The separate audio track; null when sound goes into the frames or nowhere.
    virtual AudioTrack* Audio() { return nullptr; }
    // Writes what is due at the end. 0 or -1.
    virtual Status Finish() { return kOK; }

    MediaFormat format;  // of the picture
    bool is_pal = false;
};

// What is settled about a destination before it is created.
struct DestinationPlan {
    const ConversionSettings& settings;
    const Source& source;
    int32_t type;        // DestinationType
    MediaFormat format;  // of the picture
    bool is_pal;
    AVILimits avi_limits{};  // tests make them small
};
DestinationPlan PlanDestination(const ConversionSettings& settings, const Source& source,
                                int32_t type);

// Creates the file. Null with the reason in `message`.
std::unique_ptr<Destination> CreateDestination(const std::string& path, const DestinationPlan& plan,
                                               std::string& message);

// The same for one family of types.
std::unique_ptr<Destination> CreateAVIDestination(const std::string& path,
                                                  const DestinationPlan& plan,
                                                  std::string& message);
std::unique_ptr<Destination> CreateQuickTimeDestination(const std::string& path,
                                                        const DestinationPlan& plan,
                                                        std::string& message);
std::unique_ptr<Destination> CreateRawDVDestination(const std::string& path,
                                                    const DestinationPlan& plan,
                                                    std::string& message);

inline constexpr char kCannotCreate[] = "Could not create destination file.";
inline constexpr char kFormatRefused[] = "Output format not supported.";

// The sound of a separate track as it is declared when the file begins: what the engine moves is
// 16-bit PCM, of the source's rate and channels where they are known.
MediaFormat TrackFormat(const Source& source);

}  // namespace kelvane
