#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvane {

// The tables of the published HuffYUV format, version 2.1.1.

// Methods of prediction, as in byte 0 of the header extension. The decorrelated forms subtract
// green from blue and red.
enum HuffYUVMethod : uint8_t {
    kLeft = 0,
    kGradient = 1,
    kMedian = 2,
    kLeftDecorrelated = 64,
    kGradientDecorrelated = 65,
};

// With the method median: bytes of the first predicted row that stay left-predicted.
inline constexpr size_t kMedianAfter = 8;

// The run-length text of the three tables, with its final 00, that a stream of this kind (16, 24
// or 32 bits a pixel) and method carries. Empty for a pair that does not exist: kind 16 has the
// methods left, gradient and median, the others left and the two decorrelated ones.
std::span<const uint8_t> HuffYUVTableText(int kind, uint8_t method);

// Tables for streams without any in the header: the lengths as text, and the codes of the 256
// symbols, right-aligned. These codes do not follow from the lengths.
struct ClassicTable {
    std::span<const uint8_t> lengths;
    std::span<const uint8_t, 256> codes;
};
// `plane` from 0 to 2. Chroma has a table of its own in kind 16 only.
ClassicTable HuffYUVClassicTable(int kind, int plane);

}  // namespace kelvane
