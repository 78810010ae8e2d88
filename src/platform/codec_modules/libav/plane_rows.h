#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/codec_modules/libav/dv_planes.h"

// What both directions between pictures and planes share: arithmetic that compilers turn into
// eight lanes of 16 bits.

namespace kelvane {

// A sum that fits 16 bits. Kept so narrow before it is shifted, sums take eight lanes of a vector
// and not four.
inline int16_t Narrow(int32_t sum)
{
    return static_cast<int16_t>(sum);
}

// The upper half of a product: a weight of b 65536ths of a.
inline int16_t High(int16_t a, int16_t b)
{
    return static_cast<int16_t>(int32_t{a} * int32_t{b} >> 16);
}

inline int16_t ClipToByte(int16_t value)
{
    const int16_t low = value < 0 ? int16_t{0} : value;
    return low > 255 ? int16_t{255} : low;
}

}  // namespace kelvane
