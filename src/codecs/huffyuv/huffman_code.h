#pragma once

#include <array>
#include <cstdint>

#include "base/byte_cursor.h"
#include "base/status.h"

namespace kelvane {

inline constexpr size_t kSymbols = 256;
inline constexpr unsigned kLongestCode = 31;  // bits

// A prefix code of the 256 byte values.
struct HuffmanCode {
    std::array<uint8_t, kSymbols> length{};  // bits, up to kLongestCode; 0: no such symbol
    std::array<uint32_t, kSymbols> code{};   // left-aligned in 32 bits
};

// Takes 256 lengths from a run-length text: a byte whose top three bits are a count and low five
// bits a length, or, with a count of 0, such a byte and the count in the next. kError when the text
// ends early or a run goes past symbol 255.
Status ReadLengths(ByteReader& text, HuffmanCode& code);

// Counts codes up from 0, longest first and in the order of the symbols within one length. -1
// unless the lengths make a complete code, one that gives a meaning to every sequence of bits.
Status AssignCodes(HuffmanCode& code);

}  // namespace kelvane
