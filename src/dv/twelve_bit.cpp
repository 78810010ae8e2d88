#include "dv/twelve_bit.h"

#include <bit>

namespace kelvane {

namespace {

constexpr uint32_t kCodes = 4096;
constexpr uint32_t kLinear = 512;   // codes 0 to 511 are the samples themselves
constexpr uint32_t kSegment = 256;  // codes in each coarser segment

consteval std::array<uint16_t, kCodes> ExpansionTable()
{
    std::array<uint16_t, kCodes> table{};
    for (uint32_t code = 0; code < kCodes / 2; code++) {
        uint32_t value = code;
        if (code >= kLinear) {
            const uint32_t segment = (code - kLinear) / kSegment;
            value = (kLinear << segment) + ((code - kLinear) % kSegment << (segment + 1));
        }
        table[code] = static_cast<uint16_t>(value);
        table[kCodes - 1 - code] = static_cast<uint16_t>(~value);
    }
    return table;
}

}  // namespace

constexpr std::array<uint16_t, kCodes> kExpansion12 = ExpansionTable();

uint16_t Compress12(int16_t sample)
{
    const uint32_t magnitude = static_cast<uint16_t>(sample < 0 ? ~sample : sample);
    uint32_t code = magnitude;
    if (magnitude >= kSegment) {
        const auto shift = static_cast<uint32_t>(std::bit_width(magnitude)) - 9;
        code = (magnitude >> shift) + kSegment * shift;
    }
    return static_cast<uint16_t>((sample < 0 ? ~code : code) % kCodes);
}

}  // namespace kelvane
