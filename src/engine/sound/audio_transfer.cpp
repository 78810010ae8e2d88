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

// The sound of frames can be measured against their pictures.
bool FollowsFrames(const AudioSetup& setup)
{
    return setup.follows && setup.source_is_dv && !setup.OutrunsFrames();
}

std::string WrongRate(uint32_t rate)
{
    return "Wrong sample rate in input audio stream (" + std::to_string(rate) + " Hz)!";
}

}  // namespace

AudioTransfer::AudioTransfer(const AudioSetup& setup)
    : fSetup(setup),
      fSync(FollowsFrames(setup) ? std::optional<PictureSync>(setup.pace) : std::nullopt),
      fFrames(setup, fFifo, fSync ? &fSync->Map() : nullptr),
      fTrack(setup.interleave)
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
    const double speed = fSetup.follows ? fSetup.pace.speed : 1;
    const bool counted = FromFrames() && fSetup.FramesToFrames() && !fSetup.OutrunsFrames();
    if (speed != 1 && !counted && !fOutlet) {
        fOutlet.emplace(channels, speed);
        if (!FromFrames()) PutLead();
    }
    if (!fSetup.separate_track) return;
    const size_t owed = OwedWithoutRate();
    if (fOutlet) fOutlet->Ask(owed, speed);
    fTrack.Owe(owed * Group());
    fTaken += owed * Group();
}

// What is not measured frame by frame begins where the first picture lies.
void AudioTransfer::PutLead()
{
    const double frames = std::max(0.0, -fSetup.pace.begin);
    const double seconds = frames * FrameSeconds(fSetup.source_is_pal);
    static_cast<void>(fFifo.PutSilence(static_cast<size_t>(seconds * fRate) * Group()));  // a few
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
    size_t enough = fTrack.Pending() + fCadence.base * Group() + kMargin;
    // What goes faster takes more, and is looked at ahead.
    if (fOutlet)
        enough = static_cast<size_t>(static_cast<double>(enough) * fSetup.pace.speed) +
                 2 * Resampler::kLookAhead * Group();
    return std::min(enough, AudioFifo::kMaximum / 3 * 2);
}

Result<> AudioTransfer::FrameRead(std::span<uint8_t> frame)
{
    if (fStream || !TakesSound()) return {};
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
    if (TakesSound() && FromFrames() && fSetup.source_is_dv) fFrames.TakeSilence();
}

double AudioTransfer::UnreadSeconds() const
{
    if (fRate == 0) return 0;
    const uint64_t bytes =
        (fStream ? fStream->LostBytes() : 0) + fCompanion.LostBytes() + fFrames.LostBytes();
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
    if (fFrames.IsFirst(fFrame)) StartFrames(FrameAudioReader::InfoOf(fFrame));
    fFrames.Take(fFrame);
}

// The frames so far had no sound: silence stands for them, except for what is past already.
void AudioTransfer::StartFrames(const AudioInfo& info)
{
    fRate = info.sample_rate;
    fFrames.Begin(info, fSetup.separate_track ? 0 : OwedWithoutRate());
    fTaken = fFrames.Past();
    Know(info.sample_rate, fFrames.Channels());
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

// As the cadence has it, or as many as belong to the frame.
uint32_t AudioTransfer::SamplesFor(uint64_t number)
{
    const bool follows = fSync && FromFrames() && fSync->Follows(fTaken);
    if (!follows) return fCadence.Count(number);
    const FrameSamples& range = FindAudioRate(fRate)->For(fSetup.destination_is_pal);
    return fSync->Samples(fTaken, Group(), {range.least, range.most});
}

// Each change of rate falls between two output frames. Where it does not, either silence fills the
// rest of the frame, or what is left of the old sound is dropped: whichever keeps closer step.
void AudioTransfer::SwitchRate(uint64_t number)
{
    auto& marks = fFrames.Marks();
    while (!marks.empty()) {
        const uint64_t left = marks.front().at - fTaken;
        const uint64_t wanted = SamplesFor(number) * Group();
        if (left >= wanted) return;
        const double later = fLate + static_cast<double>(wanted - left) / BytesASecond();
        const double earlier = fLate - static_cast<double>(left) / BytesASecond();
        if (left > 0 && std::fabs(later) < std::fabs(earlier)) {
            fLate = later;
            return;
        }
        fLate = earlier;
        fFifo.Drop(static_cast<size_t>(left));
        fTaken += left;
        Know(marks.front().rate, fChannels);
        marks.pop_front();
    }
}

// Fills `sound` as far as there is any.
void AudioTransfer::TakeSound(std::span<uint8_t> sound)
{
    if (fOutlet) {
        fOutlet->Ask(sound.size() / Group(), fSetup.pace.speed);
        // It fails when its ring is full, which it never is with a frame at a time.
        static_cast<void>(RunOutlet(SourceEnded()));
        fMade.Get(sound);
        return;
    }
    size_t there = sound.size();
    const auto& marks = fFrames.Marks();
    if (!marks.empty()) there = static_cast<size_t>(std::min(there, marks.front().at - fTaken));
    const size_t got = fFifo.Get(sound.first(there));
    fTaken += got;
    if (!FromFrames()) fMissing += sound.size() - got;
}

// The audio blocks of a frame go where its picture goes.
void AudioTransfer::KeepBlocks(std::span<uint8_t> frame, const FrameOrigin& origin, AudioHalf half)
{
    if (frame.data() != origin.bytes.data()) CopyAudioBlocks(origin.bytes, frame, half);
    if (origin.repeated) SilenceAudioBlocks(frame, half);
}

// True when the frame's channels 3 and 4 are to stand in the output as they are.
bool AudioTransfer::KeepsOtherPair(const FrameOrigin& origin)
{
    if (!fSetup.KeepsOtherPair() || !FromFrames() || fRate != kFourChannelRate) return false;
    // Read only, as all that is asked of a frame here.
    fFrame.AttachFrame(const_cast<uint8_t*>(origin.bytes.data()),
                       static_cast<uint32_t>(origin.bytes.size()));
    const AudioInfo info = FrameAudioReader::InfoOf(fFrame);
    return info.sample_rate == kFourChannelRate && info.channels == 4;
}

void AudioTransfer::EmbedInto(std::span<uint8_t> bytes, uint64_t number, const FrameOrigin& origin)
{
    if (fSetup.separate_track) return;
    if (fSetup.untouched) return KeepBlocks(bytes, origin, AudioHalf::kBoth);
    if (!IsKnownRate(fRate)) {
        OweWithoutRate(number);
        return;
    }
    SwitchRate(number);
    fScratch.assign(SamplesFor(number) * Group(), 0);
    TakeSound(fScratch);
    const bool keeps = KeepsOtherPair(origin);
    fFrame.AttachFrame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (!keeps) return EmbedFrameAudio(fFrame, fScratch, fRate, fChannels);
    fFrame.EmbedFirstPair(fScratch);
    KeepBlocks(bytes, origin, AudioHalf::kSecond);
}

bool AudioTransfer::SourceEnded() const
{
    if (fStream) return fStream->Ended();
    if (fCompanion.IsOpen()) return fCompanion.Ended();
    return !fSetup.source_is_dv;
}

// As long as the frame lasts: the cadence is a few samples too many in an hour.
size_t AudioTransfer::ExactSamples() const
{
    const bool pal = fSetup.destination_is_pal;
    return SamplesOfFrames(fFramesOwed + 1, fRate, pal) - SamplesOfFrames(fFramesOwed, fRate, pal);
}

// One more frame's sound is owed to the track.
void AudioTransfer::OweFrame(uint64_t number)
{
    const bool resampled = fOutlet.has_value();
    const size_t samples = resampled ? ExactSamples() : fCadence.Count(number);
    const size_t bytes = samples * Group();
    fFramesOwed++;
    double speed = fSetup.pace.speed;
    if (fSync && FromFrames()) {
        if (fSync->Follows(fTaken) && !resampled) BeginOutlet(bytes);
        const double given = resampled ? fOutletBegin + fOutlet->Position() * double(Group())
                                       : static_cast<double>(fTaken);
        speed = fSync->Speed(given, BytesASecond(), FrameSeconds(fSetup.destination_is_pal));
    }
    if (resampled) fOutlet->Ask(samples, speed);
    fTrack.Owe(bytes);
    fTaken += bytes;
}

// From the frame after this one on sound follows its pictures; what is owed before goes as it is.
void AudioTransfer::BeginOutlet(size_t bytes)
{
    fScratch.assign(fTrack.Pending() + bytes, 0);
    const size_t got = fFifo.Get(fScratch);
    static_cast<void>(fMade.Put(std::span(fScratch).first(got)));  // no more than it was elsewhere
    fOutlet.emplace(fChannels, 1.0);
    fOutlet->Precede(std::span(fScratch).last(bytes));
    fOutletBegin = static_cast<double>(fTaken + bytes);
}

Status AudioTransfer::RunOutlet(bool ended)
{
    return fOutlet ? fOutlet->Run(fFifo, ended, fMade) : Status(kOK);
}

Status AudioTransfer::FrameWritten(uint64_t number, AudioTrack& track)
{
    if (fRate == 0 && fSetup.separate_track) {
        OweWithoutRate(number);
        if (fSync) fSync->Advance();
        if (fSetup.source_is_dv && fFramesWithoutRate < kMostWait) return kOK;
        StartFrames({.sample_rate = kAssumedRate, .channels = 2});
    } else {
        if (fSetup.separate_track) OweFrame(number);
        if (fSync) fSync->Advance();
    }
    if (fRate == 0) return kOK;
    DeclareTrack(track);
    if (!fSetup.separate_track) return kOK;
    if (const Status made = RunOutlet(SourceEnded()); made != kOK) return made;
    return fTrack.FrameWritten(fOutlet ? fMade : fFifo, SourceEnded(), track);
}

Status AudioTransfer::Finish(AudioTrack& track)
{
    if (!fSetup.separate_track) return kOK;
    if (fRate == 0) Know(kAssumedRate, 2);
    DeclareTrack(track);
    if (const Status last = fFrames.Finish(); last != kOK) return last;
    if (fOutlet) {
        if (const Status made = RunOutlet(true); made != kOK) return made;
        return fTrack.Finish(fMade, 0, track);
    }
    // What lies behind the end of a film in a file beside it does not belong to the film; nor does
    // what is more than a frame in a stream.
    const size_t frame = fCadence.base * Group();
    if (fStream) fRest = fStream->PassRest();
    const bool belongs = !fCompanion.IsOpen() && fFifo.Count() + fRest <= fTrack.Pending() + frame;
    return fTrack.Finish(fFifo, FromFrames() || belongs ? frame : 0, track);
}

size_t AudioTransfer::ChannelsLeftOut() const
{
    const size_t more =
        !FromFrames() && !fSetup.separate_track && fChannels > 2 ? fChannels - 2 : 0;
    return fCompanion.ChannelsLeftOut() + more;
}

double AudioTransfer::SecondsLeftOver()
{
    if (fRate == 0) return 0;
    if (fStream) fRest += fStream->PassRest();
    return static_cast<double>(fFifo.Count() + fRest + fCompanion.BytesLeft()) / BytesASecond();
}

double AudioTransfer::SecondsShort() const
{
    if (fRate == 0 || FromFrames()) return 0;
    const double missing = fOutlet ? fOutlet->Missing() * static_cast<double>(Group())
                                   : static_cast<double>(fMissing + fTrack.Padded());
    return missing / BytesASecond();
}

void AudioTransfer::DeclareTrack(AudioTrack& track)
{
    if (!fDeclared) track.SetFormat(fRate, fChannels);
    fDeclared = true;
}

}  // namespace kelvane
