#include "engine/sound/resampler.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace kelvane {

namespace {

constexpr size_t kSample = 2;  // bytes
constexpr float kFullScale = 32768.0f;

SRC_STATE* StateOf(void* converter)
{
    return static_cast<SRC_STATE*>(converter);
}

float FromBytes(const uint8_t* bytes)
{
    return static_cast<float>(static_cast<int16_t>(bytes[0] | bytes[1] << 8)) / kFullScale;
}

void ToBytes(float value, uint8_t* bytes)
{
    const float scaled = std::clamp(value * kFullScale, -kFullScale, kFullScale - 1);
    const auto sample = static_cast<uint16_t>(std::lrint(scaled));
    bytes[0] = static_cast<uint8_t>(sample);
    bytes[1] = static_cast<uint8_t>(sample >> 8);
}

// Samples of the input in a block whose ratio of output to input goes evenly from one to another:
// the mean of its inverse, by Simpson's rule.
double InputOf(size_t samples, double from_speed, double to_speed)
{
    const double middle = 2 / (1 / from_speed + 1 / to_speed);
    return static_cast<double>(samples) * (from_speed + 4 * middle + to_speed) / 6;
}

}  // namespace

void Resampler::Deleter::operator()(void* converter) const
{
    src_delete(StateOf(converter));
}

Resampler::Resampler(uint32_t channels, double speed) : fChannels(channels), fSpeed(speed)
{
    int error = 0;
    fConverter.reset(src_new(SRC_SINC_MEDIUM_QUALITY, static_cast<int>(channels), &error));
    if (!fConverter || src_set_ratio(StateOf(fConverter.get()), 1 / speed) != 0)
        throw std::bad_alloc();
}

Resampler::~Resampler() = default;

void Resampler::Append(std::span<const uint8_t> sound)
{
    for (size_t i = 0; i + kSample <= sound.size(); i += kSample)
        fInput.push_back(FromBytes(&sound[i]));
    fFed += sound.size() / kSample / fChannels;
    fThere = fFed;
}

void Resampler::Precede(std::span<const uint8_t> sound)
{
    Append(sound);
    fSkipped = static_cast<double>(fFed);
    Ask(fFed, fSpeed);
    fAsked.back().kept = false;
    fEnd = fSkipped;
}

void Resampler::Ask(size_t samples, double speed)
{
    fEnd += InputOf(samples, fSpeed, speed);
    fSpeed = speed;
    if (samples > 0) fAsked.push_back({samples, speed, fEnd});
}

// True when `wanted` samples of the input are there.
bool Resampler::Feed(AudioFifo& from, size_t wanted, bool ended)
{
    if (fFed >= wanted) return true;
    const size_t group = kSample * fChannels, missing = wanted - fFed;
    fBytes.resize(std::min(missing, from.Count() / group) * group);
    Append(std::span(fBytes).first(from.Get(fBytes)));
    if (fFed >= wanted || !ended) return fFed >= wanted;
    fInput.resize(fInput.size() + (wanted - fFed) * fChannels);
    fFed = wanted;
    return true;
}

std::span<const uint8_t> Resampler::Make(const Block& block)
{
    fOutput.assign(block.samples * fChannels, 0);
    SRC_DATA data{};
    data.data_in = fInput.data();
    data.input_frames = static_cast<long>(fInput.size() / fChannels);
    data.data_out = fOutput.data();
    data.output_frames = static_cast<long>(block.samples);
    data.src_ratio = 1 / block.speed;
    // It fails for what it is never given; and silence is what it leaves then.
    static_cast<void>(src_process(StateOf(fConverter.get()), &data));
    const auto used = data.input_frames_used * static_cast<long>(fChannels);
    fInput.erase(fInput.begin(), fInput.begin() + used);
    fBytes.resize(fOutput.size() * kSample);
    for (size_t i = 0; i < fOutput.size(); i++)
        ToBytes(fOutput[i], &fBytes[i * kSample]);
    return fBytes;
}

Status Resampler::Run(AudioFifo& from, bool ended, AudioFifo& to)
{
    while (!fAsked.empty()) {
        const Block block = fAsked.front();
        if (!Feed(from, static_cast<size_t>(std::ceil(block.end)) + kLookAhead, ended)) return kOK;
        const std::span<const uint8_t> made = Make(block);
        fAsked.pop_front();
        if (!block.kept) continue;
        if (const Status status = to.Put(made); status != kOK) return status;
    }
    return kOK;
}

}  // namespace kelvane
