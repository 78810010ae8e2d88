#include "sample/sample_sound.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

#include "dv/dif_frame.h"

namespace kelvane {

namespace {

constexpr double kLoudness = 6000.0;
constexpr int16_t kClick = 24000;
constexpr int kAudible = 16000;                                // only a click is this loud
constexpr uint64_t kFirstTone = 220, kStep = 20, kSteps = 40;  // hertz

}  // namespace

SampleSound::SampleSound(uint32_t rate, uint32_t channels)
    : fRate(rate), fChannels(channels), fSine(rate)
{
    for (uint32_t i = 0; i < rate; i++)
        fSine[i] = static_cast<int16_t>(kLoudness * std::sin(2 * std::numbers::pi * i / rate));
}

// Tones of whole hertz meet at the seconds' borders without a jump.
int16_t SampleSound::SampleAt(uint64_t n, uint32_t channel) const
{
    const uint64_t second = n / fRate, within = n % fRate;
    if (within < fRate * 3 / 1000) return within / 16 % 2 == 0 ? kClick : -kClick;
    const uint64_t tone = kFirstTone + kStep * (second % kSteps) + 7 * channel;
    return fSine[tone * within % fRate];
}

std::vector<uint8_t> SampleSound::Samples(uint64_t first, size_t count) const
{
    std::vector<uint8_t> samples;
    samples.reserve(count * fChannels * 2);
    for (uint64_t n = first; n < first + count; n++) {
        for (uint32_t channel = 0; channel < fChannels; channel++) {
            const int16_t sample = SampleAt(n, channel);
            samples.push_back(static_cast<uint8_t>(sample));
            samples.push_back(static_cast<uint8_t>(sample >> 8));
        }
    }
    return samples;
}

uint64_t SampleSound::FirstOfFrame(uint64_t frame, bool pal) const
{
    return pal ? frame * fRate / 25 : frame * fRate * 1001 / 30000;
}

void SampleSound::EmbedInto(std::span<uint8_t> frame, uint64_t number) const
{
    DIFFrame view(frame.data(), static_cast<uint32_t>(frame.size()));
    const bool pal = view.IsPAL();
    const uint64_t first = FirstOfFrame(number, pal);
    const uint64_t count = FirstOfFrame(number + 1, pal) - first;
    view.EmbedAudio(Samples(first, static_cast<size_t>(count)), fRate, fChannels);
}

std::vector<uint64_t> FindClicks(std::span<const uint8_t> samples, uint32_t channels)
{
    constexpr uint64_t kQuiet = 1000;  // samples between the end of a click and the next
    const size_t step = size_t{2} * channels;
    std::vector<uint64_t> clicks;
    uint64_t last = 0;
    for (size_t at = 0; at + step <= samples.size(); at += step) {
        if (std::abs(static_cast<int16_t>(samples[at] | samples[at + 1] << 8)) < kAudible) continue;
        const uint64_t n = at / step;
        if (clicks.empty() || n > last + kQuiet) clicks.push_back(n);
        last = n;
    }
    return clicks;
}

}  // namespace kelvane
