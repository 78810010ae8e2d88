#include "engine/sound/frame_sound.h"

#include <algorithm>

#include "dv/audio_rates.h"
#include "engine/sound/sample_cadence.h"

namespace kelvane {

RateBridge::RateBridge(uint32_t channels, uint32_t from, uint32_t to)
    : fGroup(size_t{2} * channels),
      fFrom(from),
      fTo(to),
      fResampler(channels, static_cast<double>(from) / to)
{
}

uint64_t RateBridge::Cross(size_t bytes, AudioFifo& fifo)
{
    fTaken += bytes / fGroup;
    const uint64_t due = fTaken * fTo / fFrom - fGiven;
    fGiven += due;
    fResampler.Ask(static_cast<size_t>(due), static_cast<double>(fFrom) / fTo);
    fStatus = fResampler.Run(fInput, false, fifo);
    return due * fGroup;
}

// What goes into frames keeps its rate, frame by frame, as long as it keeps its speed.
FrameSound::FrameSound(const AudioSetup& setup, AudioFifo& fifo, FrameSoundMap* map)
    : fPAL(setup.source_is_pal),
      fOneRate(setup.separate_track || setup.OutrunsFrames()),
      fChoice(setup.channels),
      fWide(setup.separate_track),
      fFifo(fifo),
      fMap(map),
      fReader(setup.source_is_pal, setup.KeepsOtherPair() ? ChannelChoice::k1And2 : setup.channels,
              setup.separate_track)
{
}

bool FrameSound::IsFirst(DIFFrame& frame) const
{
    return fFirstRate == 0 && FrameAudioReader::InfoOf(frame).sample_rate != 0;
}

double FrameSound::SilentSeconds() const
{
    const bool left_alone = fFirstRate == 0 && !fWide;
    const uint64_t frames = left_alone ? 0 : fFramesBefore + fSilentFrames;
    return static_cast<double>(frames) * FrameSeconds(fPAL);
}

void FrameSound::Begin(const AudioInfo& info, uint64_t past)
{
    fFirstRate = fRate = info.sample_rate;
    const bool four = info.channels == 4 && info.sample_rate == kFourChannelRate;
    fChannels = fWide && four && fChoice == ChannelChoice::kAll ? 4 : 2;
    fReader.SetChannels(fChannels);
    const auto at = [&](uint64_t frames) { return SamplesOfFrames(frames, fRate, fPAL) * Group(); };
    const uint64_t silence = at(fFramesBefore);
    fPast = std::min(silence, past * Group());
    if (fFifo.PutSilence(static_cast<size_t>(silence - fPast)) != kOK) fLost += silence - fPast;
    fPut = silence;
    for (uint64_t frame = 0; fMap && frame < fFramesBefore; frame++)
        fMap->AddFrame(at(frame + 1) - at(frame));
}

Status FrameSound::Finish()
{
    return fBridge ? fBridge->End(fFifo) : Status(kOK);
}

void FrameSound::ChangeRate(uint32_t rate)
{
    fRate = rate;
    if (!fOneRate) {
        fMarks.push_back({fPut, rate});
        return;
    }
    if (fBridge && fBridge->End(fFifo) != kOK) fLost += Group();
    fBridge =
        rate == fFirstRate ? nullptr : std::make_unique<RateBridge>(fChannels, rate, fFirstRate);
}

// A frame's sound is what came into the target since it held `before` bytes.
void FrameSound::Count(size_t before, Status status)
{
    const size_t came = Target().Count() - before;
    const uint64_t put = fBridge ? fBridge->Cross(came, fFifo) : came;
    fPut += put;
    if (fMap) fMap->AddFrame(put);
    // A full FIFO makes the sound short by a frame.
    if (status != kOK || (fBridge && fBridge->Lost()))
        fLost += SamplesOfFrames(1, fFirstRate, fPAL) * Group();
}

void FrameSound::Take(DIFFrame& frame)
{
    const uint32_t rate = FrameAudioReader::InfoOf(frame).sample_rate;
    if (fFirstRate == 0) {
        fFramesBefore++;
        return;
    }
    if (rate == 0) fSilentFrames++;
    if (rate != 0 && rate != fRate) ChangeRate(rate);
    const size_t before = Target().Count();
    Count(before, fReader.ExtractFrameAudio(frame, fRate, Target()));
}

void FrameSound::TakeSilence()
{
    if (fFirstRate == 0) {
        fFramesBefore++;
        return;
    }
    const size_t before = Target().Count();
    Count(before, fReader.PutSilence(fRate, Target()));
}

}  // namespace kelvane
