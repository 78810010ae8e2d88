#include "sample/unlocked_tape.h"

#include <cmath>
#include <numbers>

#include "dv/dif_frame.h"
#include "dv/dif_layout.h"

namespace kelvane {

namespace {

constexpr double kRate = 48000, kTone = 997, kLoud = 10000;
constexpr int16_t kClick = 16000;
constexpr uint64_t kClickSamples = 100;

template <class Work>
void ForAudioPacks(std::span<uint8_t> frame, const Work& work)
{
    for (size_t sequence = 0; sequence * kDIFSequenceSize < frame.size(); sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            work(&frame[AudioBlockAt(sequence, block) + kAudioPackAt]);
}

void Put(std::vector<uint8_t>& sound, int16_t sample)
{
    sound.push_back(static_cast<uint8_t>(sample));
    sound.push_back(static_cast<uint8_t>(static_cast<uint16_t>(sample) >> 8));
}

}  // namespace

void SetInAudioPacks(std::span<uint8_t> frame, size_t at, uint8_t value)
{
    ForAudioPacks(frame, [&](uint8_t* pack) {
        if (pack[0] == kPackAudioSource) pack[at] = value;
    });
}

void EraseAudioPacks(std::span<uint8_t> frame)
{
    ForAudioPacks(frame, [](uint8_t* pack) { pack[0] = kNoPack; });
}

int16_t UnlockedTape::ToneAt(double sample)
{
    return static_cast<int16_t>(
        std::lrint(kLoud * std::sin(2 * std::numbers::pi * kTone * sample / kRate)));
}

uint64_t UnlockedTape::FirstSample(uint64_t frame) const
{
    const double of_frame = fPAL ? kRate / 25 : kRate * 1001 / 30000;
    return static_cast<uint64_t>(static_cast<double>(frame) * of_frame * fSpeed);
}

void UnlockedTape::Record(std::span<uint8_t> frame, uint64_t number) const
{
    std::vector<uint8_t> sound;
    const uint64_t first = FirstSample(number), end = FirstSample(number + 1);
    for (uint64_t i = first; i < end; i++) {
        Put(sound, ToneAt(static_cast<double>(i)));
        Put(sound, IsFlash(number) && i < first + kClickSamples ? kClick : int16_t{0});
    }
    DIFFrame(frame.data(), static_cast<uint32_t>(frame.size()))
        .EmbedAudio(sound, static_cast<uint32_t>(kRate), 2);
    constexpr uint64_t kPeriod = 50;
    if (fDamage == kLostPacks && number % kPeriod > kPeriod - 4) EraseAudioPacks(frame);
    if (fDamage == kWrongCounts && number % kPeriod == 7) SetInAudioPacks(frame, 1, 0xFF);
}

}  // namespace kelvane
