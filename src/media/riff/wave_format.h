#pragma once

#include "base/field_table.h"

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

}  // namespace kelvane
