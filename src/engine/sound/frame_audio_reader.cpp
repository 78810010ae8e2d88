#include "engine/sound/frame_audio_reader.h"

#include <algorithm>
#include <cstring>

#include "base/status.h"
#include "dv/audio_concealment.h"
#include "dv/audio_rates.h"
#include "engine/sound/channel_choice.h"
#include "engine/sound/sample_cadence.h"

namespace kelvane {

namespace {

constexpr uint32_t kFirstPair = 3, kSecondPair = 12, kAllChannels = 15;  // masks

bool HasFourChannels(const AudioInfo& info)
{
    return info.channels == 4 && info.sample_rate == kFourChannelRate;
}

// Puts two silent channels behind each pair; how many bytes there are then.
size_t WidenPairs(std::vector<uint8_t>& samples, size_t bytes)
{
    const size_t pairs = std::min(bytes, samples.size() / 2) / kStereoSample;
    for (size_t i = pairs; i-- > 0;) {
        uint8_t* to = &samples[2 * i * kStereoSample];
        memmove(to, &samples[i * kStereoSample], kStereoSample);
        memset(to + kStereoSample, 0, kStereoSample);
    }
    return 2 * pairs * kStereoSample;
}

void BridgeLost(std::span<uint8_t> bytes)
{
    std::vector<uint16_t> samples(bytes.size() / 2);
    for (size_t i = 0; i < samples.size(); i++)
        samples[i] = static_cast<uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    BridgeLostSamples(samples, 2);
    for (size_t i = 0; i < samples.size(); i++) {
        bytes[2 * i] = static_cast<uint8_t>(samples[i]);
        bytes[2 * i + 1] = static_cast<uint8_t>(samples[i] >> 8);
    }
}

}  // namespace

AudioInfo FrameAudioReader::InfoOf(DIFFrame& frame)
{
    AudioInfo info;
    return frame.GetAudioInfo(info) && info.samples > 0 ? info : AudioInfo();
}

// The frame's channels as the FIFO has them, in fScratch: how many bytes.
size_t FrameAudioReader::Extract(DIFFrame& frame, const AudioInfo& info)
{
    if (!HasFourChannels(info)) {
        const size_t bytes = frame.ExtractAudio(fScratch, kFirstPair);
        if (fBridged) BridgeLost(std::span(fScratch).first(bytes));
        return fChannels == 2 ? bytes : WidenPairs(fScratch, bytes);
    }
    const bool chosen = fChoice == ChannelChoice::k3And4 || fChoice == ChannelChoice::kMix ||
                        (fChoice == ChannelChoice::kAll && fChannels == 4);
    if (chosen) {
        const size_t bytes = frame.ExtractAudio(fScratch, kAllChannels);
        return TakeChannels(fChoice, std::span(fScratch).first(bytes));
    }
    if (!fLeftOutSound && fChoice != ChannelChoice::k1And2)
        fLeftOutSound =
            IsHeard(std::span(fScratch).first(frame.ExtractAudio(fScratch, kSecondPair)));
    return frame.ExtractAudio(fScratch, kFirstPair);
}

Status FrameAudioReader::ExtractFrameAudio(DIFFrame& frame, uint32_t rate, AudioFifo& fifo)
{
    const AudioInfo info = InfoOf(frame);
    const bool fits = info.sample_rate == rate;
    size_t bytes = fits ? Extract(frame, info) : 0;
    const FrameSamples& right = FindAudioRate(rate)->For(fPAL);
    if (fits && info.samples >= right.least && info.samples <= right.most)
        return fifo.Put(std::span(fScratch).first(bytes));
    const size_t usual = UsualSamples(rate) * Group();
    bytes = std::min(bytes, usual);
    if (fifo.Put(std::span(fScratch).first(bytes)) != kOK) return kError;
    return fifo.PutSilence(usual - bytes);
}

Status FrameAudioReader::PutSilence(uint32_t rate, AudioFifo& fifo)
{
    return fifo.PutSilence(UsualSamples(rate) * Group());
}

// A thirtieth of a second for an NTSC frame is a little short: every fifth frame makes up for it.
size_t FrameAudioReader::UsualSamples(uint32_t rate)
{
    if (fPAL) return rate / 25;
    constexpr uint64_t kRun = 5;
    fUsualFrames++;
    size_t samples = rate / 30;
    if (fUsualFrames % kRun == 0)
        samples += SamplesOfFrames(fUsualFrames, rate, false) -
                   SamplesOfFrames(fUsualFrames - kRun, rate, false) - kRun * samples;
    return samples;
}

void EmbedFrameAudio(DIFFrame& frame, std::span<uint8_t> sound, uint32_t rate, uint32_t channels)
{
    if (channels > 2) {
        const size_t group = size_t{2} * channels, samples = sound.size() / group;
        for (size_t i = 0; i < samples; i++)
            memmove(sound.data() + i * kStereoSample, sound.data() + i * group, kStereoSample);
        sound = sound.first(samples * kStereoSample);
    }
    frame.EmbedAudio(sound, rate, std::min(channels, 2u));
}

}  // namespace kelvane
