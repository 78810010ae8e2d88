#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/status.h"
#include "format/media_format.h"

namespace kelvane {

// Base of the built-in picture converters: from one picture or frame in memory to another, for a
// fixed pair of formats. An instance belongs to the thread that uses it.
class Codec {
public:
    Codec() = default;
    virtual ~Codec() = default;
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    // kOK when the pair is accepted and stored; else both formats stay as they were.
    virtual Status SetFormats(const MediaFormat& input, const MediaFormat& output) = 0;
    // The same for one side alone.
    virtual Status SetInputFormat(const MediaFormat& format) = 0;
    virtual Status SetOutputFormat(const MediaFormat& format) = 0;
    // Converts one picture or frame and answers the bytes made, at the front of `output`; nothing
    // for want of room, for bad data or for formats that do not go together. Of bad data the part
    // that could be decoded is in `output`.
    [[nodiscard]] virtual std::optional<size_t> Convert(std::span<const uint8_t> input,
                                                        std::span<uint8_t> output) = 0;

    const MediaFormat& InputFormat() const { return fInput; }
    // An encoder that has private data to store with the stream names it here, from the first
    // Convert until a format changes.
    const MediaFormat& OutputFormat() const { return fOutput; }

protected:
    MediaFormat fInput;
    MediaFormat fOutput;
};

}  // namespace kelvane
