#pragma once

#include <cstdint>

#include "base/status.h"

namespace kelvane {

// The audio stream of a source, whatever its container.
class AudioStream {
public:
    virtual ~AudioStream() = default;
    // Samples of silence, those of all channels, in front of the first chunk.
    virtual uint64_t LeadingSilence() const { return 0; }
    // Room in bytes that the next chunk needs at most.
    virtual uint32_t ChunkSize() = 0;
    // Reads the next chunk into `room` bytes at `buffer`; `bytes` is what it had. 0, or the
    // container's status at the end or on failure.
    virtual Status ReadChunk(uint8_t* buffer, uint32_t room, uint32_t& bytes) = 0;
    // Passes over the next chunk, which could not be read: the bytes that it was to have.
    virtual uint64_t SkipChunk() = 0;
};

}  // namespace kelvane
