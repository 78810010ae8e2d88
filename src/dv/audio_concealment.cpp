#include "dv/audio_concealment.h"

#include <algorithm>

namespace kelvane {

namespace {

constexpr uint16_t kLost16 = 0x8000;

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

// What replaces the lost value at `i`, with `steps` values from there to the next good one of its
// channel, which stands at `good`.
uint16_t Bridge(std::span<const uint16_t> values, size_t i, size_t good, size_t channels)
{
    const bool begins = i < channels, ends = good >= values.size();
    if (begins && ends) return 0;
    if (begins) return values[good];
    const uint16_t previous = values[i - channels];
    if (ends) return previous;
    const auto steps = static_cast<int32_t>((good - i) / channels);
    if (steps <= 2) return Between(previous, values[good]);
    const int32_t from = static_cast<int16_t>(previous), to = static_cast<int16_t>(values[good]);
    return static_cast<uint16_t>(from + (to - from) / (steps + 1));
}

}  // namespace

void ConcealBadSamples(std::span<uint16_t> values, size_t channels)
{
    if (std::ranges::none_of(values, IsBad)) return;
    for (size_t i = 0; i < values.size(); i++)
        if (IsBad(values[i])) values[i] = Repaired(values, i, channels);
}

void BridgeLostSamples(std::span<uint16_t> values, size_t channels)
{
    if (std::ranges::find(values, kLost16) == values.end()) return;
    for (size_t channel = 0; channel < channels; channel++) {
        size_t good = channel;  // the next good value behind the lost one
        for (size_t i = channel; i < values.size(); i += channels) {
            if (values[i] != kLost16) continue;
            good = std::max(good, i);
            while (good < values.size() && values[good] == kLost16)
                good += channels;
            values[i] = Bridge(values, i, good, channels);
        }
    }
}

}  // namespace kelvane
