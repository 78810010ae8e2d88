#include "media/samples/audio_file.h"

#include <utility>

#include "base/status.h"

namespace kelvane {

namespace {

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

const SampleFile* AudioFile::File() const
{
    if (const auto* wav = std::get_if<WAVFile>(&fFile)) return wav;
    return std::get_if<AIFFFile>(&fFile);
}

SampleFile* AudioFile::File()
{
    return const_cast<SampleFile*>(std::as_const(*this).File());
}

Status AudioFile::InitCheck() const
{
    return File() ? File()->InitCheck() : kNone;
}

const RawAudioFormat* AudioFile::Format() const
{
    return File() ? File()->Format() : nullptr;
}

SampleCoding AudioFile::Coding() const
{
    return File() ? File()->Coding() : kNoSampleCoding;
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
    return File() ? File()->CountFrames() : int64_t{kFormatNotSupported};
}

int64_t AudioFile::PromisedFrames() const
{
    return File() ? File()->PromisedFrames() : int64_t{kFormatNotSupported};
}

Status AudioFile::SetPosition(int64_t frame)
{
    return File() ? File()->SetPosition(frame) : kNone;
}

Status AudioFile::Read(void* buffer, int32_t& count)
{
    return File() ? File()->Read(buffer, count) : kNone;
}

Status AudioFile::ReadRaw(void* buffer, int32_t& count)
{
    return File() ? File()->ReadRaw(buffer, count) : kNone;
}

Status AudioFile::Write(const void* buffer, int32_t count)
{
    return File() ? File()->Write(buffer, count) : kNone;
}

Status AudioFile::Finish()
{
    return File() ? File()->Finish() : kNone;
}

}  // namespace kelvane
