#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "engine/containers/file_type.h"
#include "engine/sound/audio_stream.h"
#include "format/media_format.h"
#include "format/sample_coding.h"

namespace kelvane {

inline constexpr uint64_t kMostFrames = 1000000000;  // of a run

// What came of reading a frame.
struct FrameRead {
    Status status;
    size_t size = 0;  // bytes read
};

// One opened source file: the facts that the engine needs of it, its frames in order, and its
// separate audio stream if it has one.
class Source {
public:
    virtual ~Source() = default;

    // Reads a frame of the picture, from 0, into `buffer`; its size is 0 for a frame that holds the
    // one before. kEnd, kMissing, kUnread, kReferenceMissing, with size 0; kTooLarge when only its
    // first bytes fit into the buffer, with those. Cheap in rising order.
    virtual FrameRead ReadFrame(int64_t number, std::span<uint8_t> buffer) = 0;
    // Frames of the picture that the file promises, those that hold another among them.
    virtual uint64_t CountFrames() const = 0;
    // Pictures that the file holds and that no frame of the film shows.
    virtual uint64_t LeftOut() const { return 0; }
    // What the system said where it could not read the file's structure; kOK otherwise.
    virtual Status Trouble() const { return kOK; }
    // The same of its header alone: it may have sound that nobody knows of.
    virtual Status HeaderTrouble() const { return kOK; }
    // Frames of the picture that were found in a damaged file without what should name them.
    virtual uint64_t FramesSalvaged() const { return 0; }
    // What a user should know of a file that could be opened; mostly nothing.
    virtual std::string Warning() const { return {}; }
    // The bitmap header of the picture with its codec's data, which frames that are copied need
    // beside them; empty when there is none.
    virtual std::vector<uint8_t> StreamHeader() const { return {}; }
    // The stream that `audio_format` describes; null when there is none.
    virtual AudioStream* Audio() { return nullptr; }

    std::string path;
    MediaFormat format;                    // of the picture
    MediaFormat audio_format;              // of a separate audio stream; kind 0: there is none
    SampleCoding audio_coding{.bits = 0};  // of its samples; 0 bits: not to be brought to 16
    bool has_companions = false;           // sound can lie in files beside it
    uint32_t handler = 0;                  // codec of the picture, as an AVI names it
    bool is_pal = false;
};

using OpenedSource = Result<std::unique_ptr<Source>>;

// Recognises a file by its contents and opens it.
OpenedSource OpenSource(const std::string& path);

// What the kinds share: a class is made with the path, and its Open() answers with the reason why
// it cannot be used, or with an empty text.
template <class Kind>
OpenedSource OpenAs(const std::string& path)
{
    auto source = std::make_unique<Kind>(path);
    source->path = path;
    if (std::string reason = source->Open(); !reason.empty()) return Failure{kError, reason};
    return OpenedSource(std::move(source));
}

// The same for one kind.
OpenedSource OpenAVISource(const std::string& path);
OpenedSource OpenQuickTimeSource(const std::string& path);
OpenedSource OpenRawDVSource(const std::string& path);

}  // namespace kelvane
