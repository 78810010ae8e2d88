#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"

namespace kelvane {

// The separate audio track of a destination, whatever its container.
class AudioTrack {
public:
    virtual ~AudioTrack() = default;
    // Once, before the first chunk, when the sound is known: 16-bit samples.
    virtual void SetFormat(uint32_t rate, uint32_t channels) = 0;
    // 0, or the container's status.
    virtual Status WriteChunk(std::span<const uint8_t> chunk) = 0;
};

}  // namespace kelvane
