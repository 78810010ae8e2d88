#include "engine/sound/channel_choice.h"

#include <cstdlib>
#include <cstring>

namespace kelvane {

namespace {

constexpr size_t kSample = 2, kPair = 2 * kSample, kAll = 2 * kPair;  // bytes

int16_t Sample(const uint8_t* from)
{
    return static_cast<int16_t>(from[0] | from[1] << 8);
}

void PutMean(uint8_t* to, const uint8_t* a, const uint8_t* b)
{
    const auto mean = static_cast<uint16_t>((Sample(a) + Sample(b)) >> 1);
    to[0] = static_cast<uint8_t>(mean);
    to[1] = static_cast<uint8_t>(mean >> 8);
}

}  // namespace

size_t TakeChannels(ChannelChoice choice, std::span<uint8_t> samples)
{
    const size_t groups = samples.size() / kAll;
    if (choice == ChannelChoice::kAll) return groups * kAll;
    for (size_t i = 0; i < groups; i++) {
        const uint8_t* from = &samples[i * kAll];
        uint8_t* to = &samples[i * kPair];
        if (choice != ChannelChoice::kMix) {
            memmove(to, from + (choice == ChannelChoice::k3And4 ? kPair : 0), kPair);
            continue;
        }
        PutMean(to, from, from + kPair);
        PutMean(to + kSample, from + kSample, from + kPair + kSample);
    }
    return groups * kPair;
}

bool IsHeard(std::span<const uint8_t> samples)
{
    constexpr int kLoudest = 32;
    for (size_t i = 0; i + kSample <= samples.size(); i += kSample)
        if (std::abs(Sample(&samples[i])) > kLoudest) return true;
    return false;
}

}  // namespace kelvane
