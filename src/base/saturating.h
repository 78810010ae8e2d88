#pragma once

#include <cstdint>
#include <limits>

namespace kelvane {

// Sums and products of numbers that a file gives. Where they would wrap they are the largest number
// instead, which as a place or size is beyond every file.
constexpr uint64_t SaturatingAdd(uint64_t a, uint64_t b)
{
    uint64_t sum;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<uint64_t>::max() : sum;
}

constexpr uint64_t SaturatingMultiply(uint64_t a, uint64_t b)
{
    uint64_t product;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<uint64_t>::max() : product;
}

}  // namespace kelvane
