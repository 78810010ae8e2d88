#include "engine/sound/companion_audio.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "base/status.h"
#include "dv/audio_rates.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr size_t kMostReaders = 4;
constexpr size_t kSample = 2;  // bytes of what Fill delivers

// What the system says of a file that is there and does not let itself be read; kOK for all others.
Status WhyUnreadable(const std::string& path, Status opened)
{
    uint8_t head[100];  // by which its kind is told
    Status status = opened;
    if (status.SystemError() == 0) {
        if (FileReadHead(path.c_str(), head, sizeof head) >= 0) return kOK;
        status = Status::System();
    }
    for (const int absent : {ENOENT, ENOTDIR, ENAMETOOLONG, EISDIR, EINVAL})
        if (status.SystemError() == absent) return kOK;
    return status;
}

constexpr char kReadError[] = "Error reading source file (audio) ! ";

// A file that lets itself be opened.
bool IsThere(const std::string& path)
{
    uint8_t byte;
    return FileReadHead(path.c_str(), &byte, 1) >= 0;
}

bool SameFormat(const RawAudioFormat& a, const RawAudioFormat& b)
{
    return a.format == b.format && a.ch == b.ch && a.bitspersample == b.bitspersample &&
           a.srate == b.srate;
}

}  // namespace

CompanionReader::CompanionReader(const std::string& path)
    : fFile(path.c_str(), kRead, AudioFileTypeOf(path.c_str()))
{
    fTrouble = FindTrouble();
    fCoding = fFile.Coding();
    if (IsUsable()) fLeft = fFile.PromisedFrames();
}

const char* CompanionReader::FindTrouble() const
{
    const Status opened = fFile.InitCheck();
    const RawAudioFormat* format = fFile.Format();
    if (opened == kFormatNotSupported) return "it is no WAVE or AIFF file.";
    if (opened == kAudioNotSupported) return "its samples are neither PCM nor float.";
    if (opened != kOK || !format || !fFile.HasSound()) return "it is damaged.";
    if (!fFile.Coding().IsSupported()) return "its samples have a size that is not known.";
    return format->ch > kMostChannels ? "it has too many channels." : nullptr;
}

size_t CompanionReader::Read(uint8_t* samples, size_t frames)
{
    const size_t wanted = std::min(frames, static_cast<size_t>(fLeft));
    int32_t count =
        static_cast<int32_t>(std::min<size_t>(wanted, std::numeric_limits<int32_t>::max()));
    if (count == 0) return 0;
    const size_t frame_size = SampleFrameSize(Format());
    uint8_t* into = samples;
    if (!fCoding.IsPlain()) {
        fRaw.resize(static_cast<size_t>(count) * frame_size);
        into = fRaw.data();
    }
    if (const Status status = fFile.ReadRaw(into, count); status != kOK || count == 0)
        return PassUnread(samples, wanted, status);
    fLeft -= count;
    fPosition += count;
    const auto got = static_cast<size_t>(count);
    if (!fCoding.IsPlain())
        ConvertSamples(fCoding, std::span(fRaw).first(got * frame_size), samples);
    return got;
}

// The file was found to hold these, and does not give them.
size_t CompanionReader::PassUnread(uint8_t* samples, size_t frames, Status status)
{
    if (fReason == kOK) fReason = status;
    const auto passed = static_cast<int64_t>(frames);
    fLeft -= passed;
    fPosition += passed;
    fLost += frames;
    // It answers for every position; a read there tells more.
    static_cast<void>(fFile.SetPosition(fPosition));
    std::fill_n(samples, frames * kSample * Format().ch, uint8_t{0});
    return frames;
}

uint64_t CompanionAudio::LostBytes() const
{
    uint64_t most = 0;
    for (const auto& reader : fReaders)
        most = std::max(most, reader->LostFrames());
    return most * kSample * fChannels;
}

Status CompanionAudio::Reason() const
{
    for (const auto& reader : fReaders)
        if (reader->Reason() != kOK) return reader->Reason();
    return kOK;
}

Result<> CompanionAudio::FindCompanionAudio(const std::string& source_path, bool separate_track)
{
    if (IsOpen()) return {};
    for (const CompanionName& name : CompanionNames(source_path))
        if (OpenRun(name) || fUnreadable != kOK) return Settle(separate_track);
    return {};
}

Result<> CompanionAudio::OpenCompanionAudio(const std::string& path, bool separate_track)
{
    if (IsOpen()) return {};
    if (OpenRun(GivenCompanion(path)) || fUnreadable != kOK) return Settle(separate_track);
    uint8_t byte;
    if (fUnused.empty() && FileReadHead(path.c_str(), &byte, 1) < 0)
        return Refuse(kReadError + path + " can't be read." + Status::System().Reason());
    const std::string why = fUnused.empty() ? "it can't be opened." : fUnused.back().why;
    fUnused.clear();
    return Refuse(kReadError + path + " can't be used: " + why);
}

// Opens the file of this name and of the channels that follow. False when the first does not open.
bool CompanionAudio::OpenRun(CompanionName name)
{
    while (fReaders.size() < kMostReaders) {
        auto reader = std::make_unique<CompanionReader>(name.path);
        // A disk may give at the second try what it refused at the first.
        if (!reader->IsUsable()) reader = std::make_unique<CompanionReader>(name.path);
        if (!reader->IsUsable()) {
            fUnreadable = WhyUnreadable(name.path, reader->Opened());
            if (fUnreadable != kOK)
                fPaths.push_back(name.path);
            else if (IsThere(name.path))
                fUnused.push_back({name.path, reader->Trouble()});
            break;
        }
        fReaders.push_back(std::move(reader));
        fPaths.push_back(name.path);
        if (name.counter >= name.path.size()) break;
        NextChannel(name);
    }
    return IsOpen();
}

Result<> CompanionAudio::Settle(bool separate_track)
{
    // Sound that lies there is not passed over in silence.
    if (fUnreadable != kOK)
        return Refuse(kReadError + fPaths.back() + " can't be read." + fUnreadable.Reason());
    const RawAudioFormat format = fReaders[0]->Format();
    const bool same = std::ranges::all_of(
        fReaders, [&](const auto& reader) { return SameFormat(reader->Format(), format); });
    if (!same) return Refuse("Source audio files have different formats!");
    if (fReaders.size() > 1 && format.ch != 1) return Refuse("Source audio files should be mono!");
    fRate = static_cast<uint32_t>(format.srate);
    if (fReaders.size() == 1) {
        fUsed = 1;
        fChannels = format.ch;
        return {};
    }
    const bool four =
        fReaders.size() == kMostReaders && !separate_track && fRate == kFourChannelRate;
    if (fReaders.size() == kMostReaders && !four) fReaders.resize(2);
    fChannels = four ? 4 : 2;
    fUsed = fChannels;
    fLeftOut = fPaths.size() - fUsed;
    return {};
}

Failure CompanionAudio::Refuse(const std::string& message)
{
    fReaders.clear();
    return {kCompanionAudioMismatch, message};
}

bool CompanionAudio::Ended() const
{
    return std::ranges::all_of(fReaders.begin(), fReaders.begin() + static_cast<ptrdiff_t>(fUsed),
                               [](const auto& reader) { return reader->Ended(); });
}

uint64_t CompanionAudio::BytesLeft() const
{
    int64_t most = 0;
    for (size_t i = 0; i < fUsed && i < fReaders.size(); i++)
        most = std::max(most, fReaders[i]->FramesLeft());
    return static_cast<uint64_t>(most) * kSample * fChannels;
}

void CompanionAudio::Fill(AudioFifo& fifo, size_t enough)
{
    if (!IsOpen() || fifo.Count() > enough) return;
    // Room for what is wanted and as much again, so that a late chunk never runs the ring dry.
    const size_t wanted =
        std::min(2 * (enough + 1 - fifo.Count()), AudioFifo::kMaximum - fifo.Count());
    if (fifo.Free() < wanted && fifo.Grow(wanted - fifo.Free()) != kOK) return;
    if (fUsed == 1)
        FillFromOne(fifo);
    else
        FillFromMany(fifo);
}

void CompanionAudio::FillFromOne(AudioFifo& fifo)
{
    const size_t frame = kSample * fChannels;
    if (fifo.TailRoom() < fifo.Free() && fifo.Grow(0) != kOK) return;
    const size_t got = fReaders[0]->Read(fifo.TailPointer(), fifo.TailRoom() / frame);
    fifo.Advance(got * frame);
}

void CompanionAudio::FillFromMany(AudioFifo& fifo)
{
    const size_t frames = fifo.Free() / fUsed / kSample;
    const size_t frame = kSample * fUsed;
    fMono.resize(frames * kSample);
    fMixed.assign(frames * frame, 0);
    size_t most = 0;
    for (size_t channel = 0; channel < fUsed; channel++) {
        const size_t got = fReaders[channel]->Read(fMono.data(), frames);
        for (size_t i = 0; i < got; i++)
            memcpy(&fMixed[i * frame + channel * kSample], &fMono[i * kSample], kSample);
        most = std::max(most, got);
    }
    static_cast<void>(fifo.Put(std::span(fMixed).first(most * frame)));  // it fits: see frames
}

}  // namespace kelvane
