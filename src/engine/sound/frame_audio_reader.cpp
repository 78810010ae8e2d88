#include "engine/sound/frame_audio_reader.h"

#include <algorithm>
#include <cstring>

#include "base/status.h"
#include "dv/audio_rates.h"
#include "engine/sound/sample_cadence.h"

namespace kelvane {

uint32_t FrameAudioReader::RateOf(DIFFrame& frame)
{
    AudioInfo info;
    return frame.GetAudioInfo(info) && info.samples > 0 ? info.sample_rate : 0;
}

Status FrameAudioReader::ExtractFrameAudio(DIFFrame& frame, uint32_t rate, AudioFifo& fifo)
{
    constexpr uint32_t kFirstPair = 3;
    AudioInfo info;
    size_t bytes = 0, claimed = 0;
    if (frame.GetAudioInfo(info) && info.sample_rate == rate) {
        claimed = info.samples;
        bytes = frame.ExtractAudio(fScratch, kFirstPair);
    }
    const FrameSamples& right = FindAudioRate(rate)->For(fPAL);
    if (claimed >= right.least && claimed <= right.most)
        return fifo.Put(std::span(fScratch).first(bytes));
    const size_t usual = UsualSamples(rate) * kStereoSample;
    bytes = std::min(bytes, usual);
    if (fifo.Put(std::span(fScratch).first(bytes)) != kOK) return kError;
    return fifo.PutSilence(usual - bytes);
}

Status FrameAudioReader::PutSilence(uint32_t rate, AudioFifo& fifo)
{
    return fifo.PutSilence(UsualSamples(rate) * kStereoSample);
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
