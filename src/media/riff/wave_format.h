#pragma once

#include <cstdint>
#include <span>

#include "base/field_table.h"
#include "format/media_format.h"

namespace kelvane {

// WAVEFORMAT with the bits of a sample: "fmt " of a WAVE file, "strf" of an AVI audio stream.
// Little-endian.
inline constexpr auto kWaveFormat = HeaderFields<16>({
    {"Format", 0, 2},  // RFC 2361
    {"nChannels", 2, 2},
    {"nSamplesPerSec", 4, 4},
    {"nAvgBytesPerSec", 8, 4},
    {"nBlockAlign", 12, 2},
    {"wBitsPerSample", 14, 2},
});

// What lies beyond a short body is 0. Behind the extensible tag the true one counts, by which the
// sub-format begins; valid bits need no look, as samples stand at the top of theirs.
RawAudioFormat LoadWaveFormat(std::span<const uint8_t> body);
// The body has room for it. `frame` are the bytes of a sample frame.
void StoreWaveFormat(const RawAudioFormat& format, uint32_t frame, std::span<uint8_t> body);

}  // namespace kelvane
