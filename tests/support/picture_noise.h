#pragma once

#include <cmath>

#include "base/byte_cursor.h"

namespace kelvane {

// Decibels between two pictures of four bytes a pixel; the fourth byte does not count. 99 for
// equal pictures, 0 for those that cannot be compared.
inline double PictureNoise(const Bytes& a, const Bytes& b)
{
    if (a.size() != b.size() || a.empty()) return 0;
    double squares = 0;
    for (size_t i = 0; i < a.size(); i++)
        if (i % 4 != 3) squares += (a[i] - b[i]) * (a[i] - b[i]);
    if (squares == 0) return 99;
    return 10 * std::log10(255.0 * 255.0 * (double(a.size()) * 3 / 4) / squares);
}

}  // namespace kelvane
