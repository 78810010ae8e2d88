#pragma once

#include <array>
#include <cstdint>

namespace kelvane {

// The non-linear 12-bit coding of 32 kHz four-channel sound (IEC 61834-2): seven segments a sign,
// each half as fine as the one below it.

extern const std::array<uint16_t, 4096> kExpansion12;

// The 16-bit sample of a code; only its low 12 bits count.
inline uint16_t Expand12(uint32_t code)
{
    return kExpansion12[code % kExpansion12.size()];
}
// The 12-bit code of a sample. Extremes come back as values that ConcealBadSamples repairs.
uint16_t Compress12(int16_t sample);

}  // namespace kelvane
