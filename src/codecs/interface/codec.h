#pragma once

#include <cstdint>
#include <memory>

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

    // 0 when the pair is accepted and stored; -1 otherwise, and both formats stay as they were.
    [[nodiscard]] virtual int SetFormats(const MediaFormat& input, const MediaFormat& output);
    // The same for one side alone.
    [[nodiscard]] virtual int SetInputFormat(const MediaFormat& format);
    [[nodiscard]] virtual int SetOutputFormat(const MediaFormat& format);
    // No class gives this a meaning; always -1.
    virtual int Reserved(uint32_t word);
    // Converts one picture or frame. The sizes are those of the buffers on entry, the bytes
    // consumed and produced on return; an operation that fails for want of room or for bad data
    // produces 0 bytes. What is answered is told by each class. `flags` is 0.
    virtual int Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output,
                        uint32_t& outputSize, uint32_t flags);

    const MediaFormat& InputFormat() const { return fInput; }
    // An encoder that has private data to store with the stream names it here, from the first
    // Convert until a format changes.
    const MediaFormat& OutputFormat() const { return fOutput; }

protected:
    uint32_t fUnused = 0;  // kept clear; part of the record, no class has a use for it
    std::unique_ptr<uint8_t[]> fBuffer;
    MediaFormat fInput;
    MediaFormat fOutput;
};

}  // namespace kelvane
