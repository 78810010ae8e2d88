#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "engine/containers/source.h"
#include "engine/options/conversion_settings.h"
#include "engine/sound/audio_track.h"
#include "format/media_format.h"
#include "media/avi/structure/avi_limits.h"
#include "media/quicktime/structure/qt_limits.h"

namespace kelvane {

// One destination file being written; finished by Finish, or by the destructor.
class Destination {
public:
    virtual ~Destination() = default;

    // Writes the next frame of the picture. 0 or -1.
    virtual Status WriteFrame(std::span<const uint8_t> frame) = 0;
    // Stores a bitmap header with its codec data for the picture, where the container can.
    virtual Status SetStreamHeader(std::span<const uint8_t> header)
    {
        static_cast<void>(header);
        return kOK;
    }
    // The separate audio track; null when sound goes into the frames or nowhere.
    virtual AudioTrack* Audio() { return nullptr; }
    // Writes what is due at the end. 0 or -1.
    virtual Status Finish() { return kOK; }

    MediaFormat format;  // of the picture
    bool is_pal = false;
};

// What is settled about a destination before it is created; nothing is touched until then.
struct DestinationPlan {
    std::string path;
    int32_t type = kDestinationNone;
    MediaFormat format;  // of the picture
    bool is_pal = false;
    uint32_t options = 0;         // ConversionOption bits
    uint32_t codec = 0;           // output compressor, 0 none
    uint32_t source_handler = 0;  // codec of the source's picture, as an AVI names it
    // The sound of a separate track as it is declared when the file begins: what the engine moves
    // is 16-bit PCM, of the source's rate and channels where they are known.
    MediaFormat track;
    // Frames that a run will write.
    uint64_t frames = 0;
    // Tests make them small.
    AVILimits avi_limits{};
    uint64_t narrow_qt_limit = kNarrowQTLimit;
};
DestinationPlan PlanDestination(const std::string& path, const ConversionSettings& settings,
                                const Source& source, int32_t type);

// All files that the destination needs for its planned frames; these are replaced when it is
// created. Should it need one more, that one is created only where none exists.
std::vector<std::string> FilesOf(const DestinationPlan& plan);

using CreatedDestination = Result<std::unique_ptr<Destination>>;

// Creates the files.
CreatedDestination CreateDestination(const DestinationPlan& plan);

// The same for one family of types.
CreatedDestination CreateAVIDestination(const DestinationPlan& plan);
CreatedDestination CreateQuickTimeDestination(const DestinationPlan& plan);
CreatedDestination CreateRawDVDestination(const DestinationPlan& plan);

// Files beside the destination that hold the media of its planned frames; none for most types.
std::vector<std::string> AVIMediaFiles(const DestinationPlan& plan);

// The sound of a separate track while nothing else is known.
inline constexpr RawAudioFormat kUsualSound = {kSamplePCM, 2, 16, 48000};
inline constexpr char kFormatRefused[] = "Output format not supported.";
// Why a destination could not be created.
Failure CannotCreate(Status status);

}  // namespace kelvane
