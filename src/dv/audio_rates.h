#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kelvane {

// Samples a channel that one frame may hold at a rate: unlocked sound varies between the two.
struct FrameSamples {
    uint32_t least, most;
};

struct AudioRate {
    uint32_t rate;  // hertz
    FrameSamples pal, ntsc;

    const FrameSamples& For(bool isPAL) const { return isPAL ? pal : ntsc; }
};

// Indexed by the SMP field of the AAUX AS pack (IEC 61834-4). AF_SIZE counts from the least.
inline constexpr AudioRate kAudioRates[] = {
    {48000, {1896, 1944}, {1580, 1620}},
    {44100, {1742, 1786}, {1452, 1489}},
    {32000, {1264, 1296}, {1053, 1080}},
};

// At this one a frame can hold four channels, of 12 bits.
inline constexpr uint32_t kFourChannelRate = 32000;

// Null for a rate that DV frames do not know.
constexpr const AudioRate* FindAudioRate(uint32_t rate)
{
    const auto* row =
        std::ranges::find(kAudioRates, rate, [](const AudioRate& r) { return r.rate; });
    return row == std::end(kAudioRates) ? nullptr : row;
}

constexpr bool IsKnownRate(uint32_t rate)
{
    return FindAudioRate(rate) != nullptr;
}

}  // namespace kelvane
