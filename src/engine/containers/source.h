#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"
#include "engine/containers/file_type.h"
#include "engine/sound/audio_stream.h"
#include "format/media_format.h"

namespace kelvane {

inline constexpr uint64_t kMostFrames = 1000000000;  // of a run

// One opened source file: the facts that the engine needs of it, its frames in order, and its
// separate audio stream if it has one.
class Source {
public:
    virtual ~Source() = default;

    // Reads a frame of the picture, from 0, into `buffer`; `size` is its bytes, 0 for a frame that
    // holds the one before. kEnd, kMissing, kUnread, kReferenceMissing, with size 0; kTooLarge when
    // only its first bytes fit into the buffer, with those. Cheap in rising order.
    virtual Status ReadFrame(int64_t number, std::span<uint8_t> buffer, int64_t& size) = 0;
    // Frames of the picture that the file promises.
    virtual uint64_t CountFrames() const = 0;
    // What the system said where it could not read the file's structure; kOK otherwise.
    virtual Status Trouble() const { return kOK; }
    // What a user should know of a file that could be opened; mostly nothing.
    virtual std::string Warning() const { return {}; }
    // The bitmap header of the picture with its codec's data, which frames that are copied need
    // beside them; empty when there is none.
    virtual std::vector<uint8_t> StreamHeader() const { return {}; }
    // The stream that `audio_format` describes; null when there is none.
    virtual AudioStream* Audio() { return nullptr; }

    SourceKind kind = kUnknownSource;
    MediaFormat format;        // of the picture
    MediaFormat audio_format;  // of a separate audio stream; kind 0 when there is none
    uint32_t handler = 0;      // codec of the picture as an AVI file names it
    bool is_pal = false;
};

// Recognises a file by its contents and opens it. Null with the reason in `message`.
std::unique_ptr<Source> OpenSource(const std::string& path, std::string& message);

// What the kinds share: a class is made with the path, and its Open() answers with the reason why
// it cannot be used, or with an empty text.
template <class Kind>
std::unique_ptr<Source> OpenedSource(const std::string& path, std::string& message)
{
    auto source = std::make_unique<Kind>(path);
    message = source->Open();
    if (!message.empty()) return nullptr;
    return source;
}

// The same for one kind.
std::unique_ptr<Source> OpenAVISource(const std::string& path, std::string& message);
std::unique_ptr<Source> OpenQuickTimeSource(const std::string& path, std::string& message);
std::unique_ptr<Source> OpenRawDVSource(const std::string& path, std::string& message);

}  // namespace kelvane
