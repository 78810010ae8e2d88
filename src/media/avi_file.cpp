#include "media/avi_file.h"

#include "base/status.h"
#include "base/television.h"
#include "media/avi_parser.h"
#include "media/avi_stream_format.h"

namespace kelvane {

AVIFile::AVIFile(const char* path, uint32_t mode) : fMode(mode & ~kAVIListMedia)
{
    fStructure.flags = mode & kAVIListMedia;
    if (fMode != kCreate) {
        OpenSource(path);
        return;
    }
    fFile = FileHolder(path ? FileOpen(path, kOpenCreate) : kNoFile);
    if (fFile.IsOpen()) {
        fWriter = std::make_unique<AVIWriter>(fStructure, fFile.Handle(), path);
    } else {
        fInitCheck = kError;
    }
}

AVIFile::~AVIFile()
{
    static_cast<void>(Finish());
}

void AVIFile::OpenSource(const char* path)
{
    fFile = FileHolder(path ? FileOpen(path, fMode == kUpdate ? kOpenUpdate : kOpenRead) : kNoFile);
    if (!fFile.IsOpen()) {
        fInitCheck = kError;
        return;
    }
    fInitCheck = AVIParser(fFile.Handle(), fMode == kDescribe, fStructure).Run();
    if (fMode != kDescribe) fIndex.BuildTables(fFile.Handle());
}

AVIStream* AVIFile::StreamAt(int32_t index)
{
    return index >= 0 && index < CountStreams() ? &fStructure.streams[static_cast<size_t>(index)]
                                                : nullptr;
}

const AVIStream* AVIFile::StreamAt(int32_t index) const
{
    return const_cast<AVIFile*>(this)->StreamAt(index);
}

uint32_t AVIFile::StreamHandler(int32_t index) const
{
    const AVIStream* stream = StreamAt(index);
    return stream ? stream->Handler() : 0;
}

void AVIFile::StreamFormat(int32_t index, MediaFormat& format) const
{
    const AVIStream* stream = StreamAt(index);
    format = stream ? FormatOfStream(*stream) : MediaFormat();
}

int32_t AVIFile::FirstStreamOf(bool audio) const
{
    for (int32_t i = 0; i < std::min(CountStreams(), 4); i++) {
        const AVIStream& stream = *StreamAt(i);
        if (audio ? stream.IsAudio() : stream.IsVideo() || stream.IsInterleaved()) return i;
    }
    return -1;
}

int32_t AVIFile::VideoStream() const
{
    return FirstStreamOf(false);
}

int32_t AVIFile::AudioStream() const
{
    return FirstStreamOf(true);
}

int64_t AVIFile::FrameOffset(int32_t stream, int32_t frame, uint32_t& size) const
{
    size = 0;
    const AVIStream* searched = StreamAt(stream);
    if (!searched || frame < 0) return -1;
    const auto index = static_cast<uint32_t>(frame);
    FrameEntry entry{};
    if (index < searched->frames.Count()) {
        entry = searched->frames[index];
    } else if (!fIndex.Search(static_cast<size_t>(stream), index, entry)) {
        return -1;
    }
    size = entry.size;
    return static_cast<int64_t>(entry.offset);
}

Status AVIFile::SeekFrame(int32_t stream, int64_t frame)
{
    AVIStream* s = StreamAt(stream);
    if (!s || frame < 0 || frame > CountFrames(stream)) return kError;
    s->position = static_cast<int32_t>(frame);
    return kOK;
}

int64_t AVIFile::CountFrames(int32_t stream) const
{
    const AVIStream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(s->frames.Count()) : 0;
}

Status AVIFile::ReadFrame(int32_t stream, std::span<uint8_t> buffer, uint32_t& size)
{
    size = 0;
    AVIStream* read = StreamAt(stream);
    if (!read || !buffer.data() || fMode == kCreate) return kError;
    uint32_t wanted = 0;
    const int64_t offset = FrameOffset(stream, read->position, wanted);
    if (offset < 0 || wanted > buffer.size()) return kError;
    const int64_t got =
        FileReadAt(fFile.Handle(), static_cast<uint64_t>(offset), buffer.data(), wanted);
    if (got != wanted) return kError;
    size = wanted;
    if (IsReference(buffer.first(wanted))) {
        const Status status = ReadReferenced(*read, buffer, size);
        if (status != kOK) return status;
    }
    read->position++;
    return kOK;
}

Status AVIFile::ReadReferenced(const AVIStream& stream, std::span<uint8_t> buffer, uint32_t& size)
{
    const Reference reference = ParseReference(buffer.first(size));
    const auto frame = static_cast<uint32_t>(SystemFor(stream.IsPAL()).dv_frame_size);
    size = 0;
    if (frame > buffer.size()) return kError;
    if (!fReferenced.Read(reference, buffer.data(), frame)) return kReferenceMissing;
    size = frame;
    return kOK;
}

Status AVIFile::BeginDVAVI(uint32_t flags, uint32_t handler, int32_t audio_rate_code)
{
    return fWriter ? fWriter->BeginDVAVI(flags, handler, audio_rate_code) : kError;
}

Status AVIFile::BeginAVI(uint32_t flags)
{
    return fWriter ? fWriter->BeginAVI(flags) : kError;
}

Status AVIFile::AddVideoStream(const MediaFormat& format)
{
    return fWriter ? fWriter->AddVideoStream(format) : kError;
}

Status AVIFile::AddEncodedVideoStream(const MediaFormat& format)
{
    return fWriter ? fWriter->AddEncodedVideoStream(format) : kError;
}

Status AVIFile::AddAudioStream(const MediaFormat& format)
{
    return fWriter ? fWriter->AddAudioStream(format) : kError;
}

Status AVIFile::SetAudioFormat(int32_t stream, int32_t rate, int32_t channels, int32_t bits)
{
    return fWriter ? fWriter->SetAudioFormat(stream, rate, channels, bits) : kError;
}

Status AVIFile::SetVideoFormat(int32_t stream, std::span<const uint8_t> block)
{
    return fWriter ? fWriter->SetVideoFormat(stream, block) : kError;
}

Status AVIFile::WriteFrame(int32_t stream, const void* data, int32_t size)
{
    if (!fWriter || !data || size < 1) return kError;
    return fWriter->WriteFrame(stream,
                               {static_cast<const uint8_t*>(data), static_cast<size_t>(size)});
}

Status AVIFile::Finish()
{
    return fWriter ? fWriter->Finish() : kOK;
}

void AVIFile::SetLimits(const AVILimits& limits)
{
    if (fWriter) fWriter->SetLimits(limits);
}

}  // namespace kelvane
