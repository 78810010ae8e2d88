#pragma once

#include <cmath>

#include "base/byte_cursor.h"

namespace kelvane {

// How alike two pictures are, in decibels.
inline double PSNR(const Bytes& a, const Bytes& b)
{
    double squares = 0;
    for (size_t i = 0; i < a.size(); i++)
        squares += std::pow(a[i] - b[i], 2);
    return 10 * std::log10(255.0 * 255 / (squares / double(a.size())));
}

}  // namespace kelvane
