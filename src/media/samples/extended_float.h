#pragma once

#include <cstdint>
#include <span>

namespace kelvane {

// The 80-bit extended float of IEEE 754 as AIFF holds it, big-endian: sign and exponent biased by
// 16383, then a mantissa of 64 bits with its top bit explicit. What is not finite is written as
// infinity.
void StoreExtended(double value, std::span<uint8_t, 10> bytes);
double LoadExtended(std::span<const uint8_t, 10> bytes);

}  // namespace kelvane
