#include "engine/sound/audio_transfer.h"

#include <algorithm>
#include <cmath>

#include "base/status.h"
#include "dv/audio_rates.h"

namespace kelvane {

namespace {

constexpr uint32_t kAssumedRate = 48000;  // hertz, of a clip without sound
// Output frames that a separate track waits for a source frame with sound, so that its rate need
// not be guessed: ten seconds, which the FIFO can hold.
constexpr uint64_t kMostWait = 250;
constexpr size_t kMargin = 256;  // bytes that the FIFO holds beyond what the next frame needs

std::string WrongRate(uint32_t rate)
{
    return "Wrong sample rate in input audio stream (" + std::to_string(rate) + " Hz)!";
}

}  // namespace

AudioTransfer::AudioTransfer(const AudioSetup& setup)
    : fSetup(setup), fFrames(setup.source_is_pal), fTrack(setup.interleave)
{
}

Result<> AudioTransfer::SetSourceStream(AudioStream& stream, const SampleCoding& coding,
                                        uint32_t rate, uint32_t channels)
{
    if (!coding.IsSupported() || channels == 0 || channels > kMostChannels)
        return Failure{kError, "Source audio format is not supported (PCM or float is needed)!"};
    if (!IsKnownRate(rate)) return Failure{kError, WrongRate(rate)};
    fStream.emplace(stream, coding);
    Know(rate, channels);
    return {};
}

// What the frames before this one were owed becomes due at the rate now known.
void AudioTransfer::Know(uint32_t rate, uint32_t channels)
{
    fRate = rate;
    fChannels = channels;
    fCadence = CadenceFor(rate, fSetup.destination_is_pal);
    fTrack.SetGroup(Group());
    if (fSetup.separate_track) fTrack.Owe(OwedWithoutRate() * Group());
}

uint64_t AudioTransfer::OwedWithoutRate() const
{
    const AudioRate* row = FindAudioRate(fRate);
    return row ? fOwedWithoutRate[static_cast<size_t>(row - kAudioRates)] : 0;
}

void AudioTransfer::OweWithoutRate(uint64_t number)
{
    fFramesWithoutRate++;
    for (size_t i = 0; i < std::size(kAudioRates); i++)
        fOwedWithoutRate[i] +=
            CadenceFor(kAudioRates[i].rate, fSetup.destination_is_pal).Count(number);
}

size_t AudioTransfer::Enough() const
{
    return std::min(fTrack.Pending() + fCadence.base * Group() + kMargin,
                    AudioFifo::kMaximum / 3 * 2);
}

Result<> AudioTransfer::FrameRead(std::span<uint8_t> frame)
{
    if (fStream) return {};
    if (fSetup.companions && !fCompanionsSought)
        if (auto opened = OpenCompanions(); !opened) return opened;
    if (fCompanion.IsOpen())
        fCompanion.Fill(fFifo, Enough());
    else if (fSetup.source_is_dv)
        ExtractFrom(frame);
    return {};
}

void AudioTransfer::FrameRepeated()
{
    if (fStream || fCompanion.IsOpen() || !fSetup.source_is_dv) return;
    if (fRate == 0) {
        fSilentFrames++;
        return;
    }
    const size_t before = fFifo.Count();
    // A full FIFO makes the silence short by that much.
    static_cast<void>(fFrames.PutSilence(fFrameRate, fFifo));
    fPut += fFifo.Count() - before;
}

double AudioTransfer::UnreadSeconds() const
{
    if (fRate == 0) return 0;
    const uint64_t bytes = (fStream ? fStream->LostBytes() : 0) + fCompanion.LostBytes() + fLost;
    return static_cast<double>(bytes) / static_cast<double>(Group()) / fRate;
}

Status AudioTransfer::Reason() const
{
    return fStream ? fStream->Reason() : fCompanion.Reason();
}

Result<> AudioTransfer::OpenCompanions()
{
    fCompanionsSought = true;
    const bool named = !fSetup.companion.empty();
    auto opened = named ? fCompanion.OpenCompanionAudio(fSetup.companion, fSetup.separate_track)
                        : fCompanion.FindCompanionAudio(fSetup.source_path, fSetup.separate_track);
    if (opened && fCompanion.IsOpen()) Know(fCompanion.Rate(), fCompanion.Channels());
    return opened;
}

void AudioTransfer::ExtractFrom(std::span<uint8_t> bytes)
{
    fFrame.AttachFrame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    const uint32_t rate = FrameAudioReader::RateOf(fFrame);
    if (fRate == 0) {
        if (rate == 0) {
            fSilentFrames++;
            return;
        }
        StartFrames(rate);
    }
    // A separate track has one rate for good: frames of another give silence there.
    if (rate != 0 && rate != fFrameRate && !fSetup.separate_track) {
        fMarks.push_back({fPut, rate});
        fFrameRate = rate;
    } else if (rate != 0 && rate != fFrameRate)
        fSilenced += fSetup.source_is_pal ? 1 / 25.0 : 1001 / 30000.0;
    const size_t before = fFifo.Count();
    // A full FIFO makes the sound short by a frame.
    if (fFrames.ExtractFrameAudio(fFrame, fFrameRate, fFifo) != kOK)
        fLost += fCadence.base * Group();
    fPut += fFifo.Count() - before;
}

// The frames so far had no sound: silence stands for them, except for what is past already.
void AudioTransfer::StartFrames(uint32_t rate)
{
    Know(rate, 2);
    fFrameRate = rate;
    uint64_t silence = SamplesOfFrames(fSilentFrames, rate, fSetup.source_is_pal);
    if (!fSetup.separate_track) silence -= std::min(silence, OwedWithoutRate());
    if (fFifo.PutSilence(static_cast<size_t>(silence * Group())) == kOK) fPut += silence * Group();
}

Status AudioTransfer::TurnRead()
{
    // Some turns read no frame and need sound all the same.
    if (fCompanion.IsOpen()) fCompanion.Fill(fFifo, Enough());
    return fStream ? fStream->Fill(fFifo, Enough()) : kOK;
}

Result<> AudioTransfer::CheckRate() const
{
    if (fRate == 0 || IsKnownRate(fRate)) return {};
    return Failure{kWrongSampleRate, WrongRate(fRate)};
}

// Each change of rate falls between two output frames. Where it does not, either silence fills the
// rest of the frame, or what is left of the old sound is dropped: whichever keeps closer step.
void AudioTransfer::SwitchRate(uint64_t number)
{
    while (!fMarks.empty()) {
        const uint64_t left = fMarks.front().at - fTaken;
        const uint64_t wanted = fCadence.Count(number) * Group();
        if (left >= wanted) return;
        const double second = static_cast<double>(fRate) * static_cast<double>(Group());
        const double later = fLate + static_cast<double>(wanted - left) / second;
        const double earlier = fLate - static_cast<double>(left) / second;
        if (left > 0 && std::fabs(later) < std::fabs(earlier)) {
            fLate = later;
            return;
        }
        fLate = earlier;
        fFifo.Drop(static_cast<size_t>(left));
        fTaken += left;
        Know(fMarks.front().rate, fChannels);
        fMarks.pop_front();
    }
}

void AudioTransfer::EmbedInto(std::span<uint8_t> bytes, uint64_t number)
{
    if (fSetup.separate_track) return;
    if (!IsKnownRate(fRate)) {
        OweWithoutRate(number);
        return;
    }
    SwitchRate(number);
    fScratch.assign(fCadence.Count(number) * Group(), 0);
    size_t there = fScratch.size();
    if (!fMarks.empty()) there = static_cast<size_t>(std::min(there, fMarks.front().at - fTaken));
    fTaken += fFifo.Get(std::span(fScratch).first(there));
    fFrame.AttachFrame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    EmbedFrameAudio(fFrame, fScratch, fRate, fChannels);
}

bool AudioTransfer::SourceEnded() const
{
    if (fStream) return fStream->Ended();
    if (fCompanion.IsOpen()) return fCompanion.Ended();
    return !fSetup.source_is_dv;
}

Status AudioTransfer::FrameWritten(uint64_t number, AudioTrack& track)
{
    if (fRate == 0 && fSetup.separate_track) {
        OweWithoutRate(number);
        if (fSetup.source_is_dv && fFramesWithoutRate < kMostWait) return kOK;
        StartFrames(kAssumedRate);
    } else if (fSetup.separate_track) {
        fTrack.Owe(fCadence.Count(number) * Group());
    }
    if (fRate == 0) return kOK;
    DeclareTrack(track);
    return fSetup.separate_track ? fTrack.FrameWritten(fFifo, SourceEnded(), track) : kOK;
}

Status AudioTransfer::Finish(AudioTrack& track)
{
    if (!fSetup.separate_track) return kOK;
    if (fRate == 0) Know(kAssumedRate, 2);
    DeclareTrack(track);
    // What lies behind the end of a film in a file beside it does not belong to the film.
    const size_t more = fCompanion.IsOpen() ? 0 : fCadence.base * Group();
    return fTrack.Finish(fFifo, more, track);
}

void AudioTransfer::DeclareTrack(AudioTrack& track)
{
    if (!fDeclared) track.SetFormat(fRate, fChannels);
    fDeclared = true;
}

}  // namespace kelvane
