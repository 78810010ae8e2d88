#include "media/samples/audio_file.h"

#include "base/status.h"

namespace kelvane {

namespace {

// Calls `operation` on the file behind the switch; `otherwise` when there is none.
template <class Switch, class Result, class Operation>
Result With(Switch& file, Result otherwise, Operation operation)
{
    if (auto* wav = std::get_if<WAVFile>(&file)) return operation(*wav);
    if (auto* aiff = std::get_if<AIFFFile>(&file)) return operation(*aiff);
    return otherwise;
}

constexpr Status kNone = kFormatNotSupported;

}  // namespace

AudioFileType AudioFileTypeOf(const char* path)
{
    if (IsWAVFile(path)) return kWAVFileType;
    return IsAIFFFile(path) ? kAIFFFileType : kNoAudioFile;
}

AudioFile::AudioFile(const char* path, uint32_t mode, int32_t type)
{
    if (type == kWAVFileType) fFile.emplace<WAVFile>(path, mode);
    if (type == kAIFFFileType) fFile.emplace<AIFFFile>(path, mode);
}

Status AudioFile::InitCheck() const
{
    return With(fFile, kNone, [](auto& file) { return file.InitCheck(); });
}

const RawAudioFormat* AudioFile::Format() const
{
    constexpr const RawAudioFormat* kNoFormat = nullptr;
    return With(fFile, kNoFormat, [](auto& file) { return file.Format(); });
}

Status AudioFile::SetFormat(const RawAudioFormat& format)
{
    if (auto* aiff = std::get_if<AIFFFile>(&fFile)) {
        const bool plain = format.format == kSamplePCM || format.format == kSampleFloat;
        return aiff->SetFormat(format, !plain);
    }
    auto* wav = std::get_if<WAVFile>(&fFile);
    return wav ? wav->SetFormat(format) : kNone;
}

int64_t AudioFile::CountFrames() const
{
    return With(fFile, int64_t{kFormatNotSupported}, [](auto& file) { return file.CountFrames(); });
}

int64_t AudioFile::PromisedFrames() const
{
    return With(fFile, int64_t{kFormatNotSupported},
                [](auto& file) { return file.PromisedFrames(); });
}

Status AudioFile::SetPosition(int64_t frame)
{
    return With(fFile, kNone, [&](auto& file) { return file.SetPosition(frame); });
}

Status AudioFile::Read(void* buffer, int32_t& count)
{
    return With(fFile, kNone, [&](auto& file) { return file.Read(buffer, count); });
}

Status AudioFile::Write(const void* buffer, int32_t count)
{
    return With(fFile, kNone, [&](auto& file) { return file.Write(buffer, count); });
}

Status AudioFile::Finish()
{
    return With(fFile, kNone, [](auto& file) { return file.Finish(); });
}

}  // namespace kelvane
