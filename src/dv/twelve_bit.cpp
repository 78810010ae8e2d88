#include "dv/twelve_bit.h"

#include <algorithm>
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

// 0x801F cannot come out of the expansion; it belongs to the set all the same.
bool IsBad(uint16_t value)
{
    return value == 0x807F || value == 0x803F || value == 0x801F || value == 0x80FF;
}

uint16_t Between(uint16_t a, uint16_t b)
{
    return static_cast<uint16_t>((static_cast<int16_t>(a) + static_cast<int16_t>(b)) >> 1);
}

// What replaces the bad value at `i`; the values before it are repaired already.
uint16_t Repaired(std::span<const uint16_t> values, size_t i, size_t channels)
{
    const size_t next = i + channels, afterNext = i + 2 * channels;
    if (i < channels) {
        if (next < values.size() && !IsBad(values[next])) return values[next];
        return afterNext < values.size() ? values[afterNext] : values[i];
    }
    const uint16_t previous = values[i - channels];
    if (next >= values.size()) return previous;
    if (!IsBad(values[next])) return Between(previous, values[next]);
    return afterNext < values.size() ? Between(previous, values[afterNext]) : previous;
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

void ConcealBadSamples(std::span<uint16_t> values, size_t channels)
{
    if (std::ranges::none_of(values, IsBad)) return;
    for (size_t i = 0; i < values.size(); i++)
        if (IsBad(values[i])) values[i] = Repaired(values, i, channels);
}

}  // namespace kelvane
