#include "media/avi/avi_file.h"

#include <algorithm>

#include "base/quietly.h"
#include "base/status.h"
#include "base/television.h"
#include "media/avi/reader/avi_index.h"
#include "media/avi/reader/avi_parser.h"
#include "media/avi/structure/avi_stream_format.h"

namespace kelvane {

namespace {

// Null with kError or the system's reason when it cannot be opened.
FileHolder Opened(const char* path, uint32_t flags, Status& status)
{
    FileHolder file(path ? FileOpen(path, flags) : kNoFile);
    if (!file.IsOpen()) status = path ? Status::System() : kError;
    return file;
}

}  // namespace

AVIFile::AVIFile(const char* path, uint32_t mode)
    : fMode(mode & ~kAVIListMedia), fReferenced(path ? path : "")
{
    fStructure.flags = mode & kAVIListMedia;
    if (fMode != kCreate) {
        OpenSource(path);
        return;
    }
    fFile = Opened(path, kOpenCreate, fInitCheck);
    if (fFile.IsOpen()) fWriter = std::make_unique<AVIWriter>(fStructure, fFile.Handle(), path);
}

AVIFile::~AVIFile()
{
    Quietly([this] { static_cast<void>(Finish()); });
}

void AVIFile::OpenSource(const char* path)
{
    fFile = Opened(path, fMode == kUpdate ? kOpenUpdate : kOpenRead, fInitCheck);
    if (!fFile.IsOpen()) return;
    AVIParser parser(fFile.Handle(), fMode == kDescribe, fStructure);
    fInitCheck = parser.Run();
    fTrouble = parser.Trouble();
    fHeaderTrouble = parser.HeaderTrouble();
    if (fMode == kDescribe) return;
    AVIIndex index(fStructure, fFile.Handle());
    const Status built = index.BuildTables();
    if (fInitCheck == kOK) fInitCheck = built;
    fTrouble = FirstFailure(fTrouble, index.Trouble());
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

int64_t AVIFile::CountFrames(int32_t stream) const
{
    const AVIStream* counted = StreamAt(stream);
    return counted ? static_cast<int64_t>(counted->frames.Count() + counted->missing) : 0;
}

bool AVIFile::WasWalked() const
{
    return std::ranges::any_of(fStructure.streams, [](const AVIStream& s) { return s.walked > 0; });
}

uint64_t AVIFile::FramesSalvaged(int32_t stream) const
{
    const AVIStream* salvaged = StreamAt(stream);
    if (!salvaged) return 0;
    const bool index = fStructure.old_index || salvaged->super_index ||
                       Get32(fStructure.main_header, kMainHeader["dwFlags"]) & kHasIndex;
    return index || fStructure.broken_off ? salvaged->walked : 0;
}

int64_t AVIFile::FrameOffset(int32_t stream, int64_t frame, uint32_t& size) const
{
    size = 0;
    const AVIStream* searched = StreamAt(stream);
    if (!searched || frame < 0 || static_cast<uint64_t>(frame) >= searched->frames.Count())
        return -1;
    const FrameEntry& entry = searched->frames[static_cast<size_t>(frame)];
    size = entry.size;
    return static_cast<int64_t>(entry.offset);
}

uint32_t AVIFile::FrameBytes(int32_t stream, int64_t frame) const
{
    uint32_t size = 0;
    FrameOffset(stream, frame, size);
    return size;
}

Status AVIFile::SeekFrame(int32_t stream, int64_t frame)
{
    AVIStream* sought = StreamAt(stream);
    if (!sought || frame < 0 || frame > CountFrames(stream)) return kError;
    sought->position = frame;
    return kOK;
}

Status AVIFile::ReadFrame(int32_t stream, std::span<uint8_t> buffer, uint32_t& size)
{
    size = 0;
    AVIStream* read = StreamAt(stream);
    if (!read || !buffer.data() || fMode == kCreate) return kError;
    if (read->position >= CountFrames(stream)) return kEnd;
    const auto frame = static_cast<size_t>(read->position);
    if (frame >= read->frames.Count()) return kMissing;
    const FrameEntry& entry = read->frames[frame];
    Status status = entry.IsHeld() ? kOK : ReadEntry(fFile.Handle(), entry, buffer, size);
    if (status == kOK && !read->IsAudio() && IsReference(buffer.first(size))) {
        const auto bytes = static_cast<uint32_t>(SystemFor(read->IsPAL()).dv_frame_size);
        status = fReferenced.Read(ParseReference(buffer.first(size)), bytes, buffer, size);
    }
    if (status == kOK) read->position++;
    return status;
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
    if (!fWriter) return kOK;
    if (!fFinished) {
        const Status written = fWriter->Finish();
        fFinished = FirstFailure(written, fFile.Close());
    }
    return *fFinished;
}

int64_t AVIFile::FramesWritten(int32_t stream) const
{
    const AVIStream* written = fWriter ? StreamAt(stream) : nullptr;
    return written ? written->chunks : 0;
}

void AVIFile::SetLimits(const AVILimits& limits)
{
    if (fWriter) fWriter->SetLimits(limits);
}

}  // namespace kelvane
