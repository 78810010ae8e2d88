#include "media/quicktime/qt_file.h"

#include <algorithm>
#include <utility>

#include "base/four_cc.h"
#include "base/quietly.h"
#include "base/status.h"
#include "media/quicktime/structure/qt_fields.h"
#include "media/quicktime/structure/qt_sound.h"

namespace kelvane {

QTFile::QTFile(const char* path, uint32_t mode, const VolumeTable& volumes)
    : fPath(path ? path : "")
{
    if (!path) return;
    fInitCheck = fFile.Open(path, mode == kCreate ? kOpenCreate : kOpenRead);
    if (fInitCheck != kOK) return;
    if (mode != kCreate) {
        fInitCheck = fReader.emplace(fMovie, fFile, volumes).Parse();
        return;
    }
    fInitCheck = fWriter.emplace(fMovie, fFile).Begin();
    if (fInitCheck != kOK) fWriter.reset();
}

QTFile::~QTFile()
{
    // Who wants to know closes before.
    Quietly([this] { static_cast<void>(Close()); });
}

const QTStream* QTFile::StreamAt(int32_t index) const
{
    return index >= 0 && index < CountStreams() ? &fMovie.streams[static_cast<size_t>(index)]
                                                : nullptr;
}

QTStream* QTFile::StreamAt(int32_t index)
{
    return const_cast<QTStream*>(std::as_const(*this).StreamAt(index));
}

bool QTFile::IsVideo(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s && s->kind == QTStream::kVideo;
}

MediaFormat QTFile::StreamFormat(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    if (!s) return {};
    const QTTrack& track = fMovie.TrackOf(*s);
    return s->kind == QTStream::kVideo ? QTVideoFormat(track) : QTSoundOf(track).format;
}

SampleCoding QTFile::SoundCoding(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    if (!s || s->kind != QTStream::kSound) return kNoSampleCoding;
    const QTSound sound = QTSoundOf(fMovie.TrackOf(*s));
    SampleCoding coding = sound.coding;
    if (sound.HasBigWords()) coding.big_endian = false;
    return coding;
}

uint32_t QTFile::TrackCodec(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s ? fMovie.TrackOf(*s).Format() : 0;
}

int64_t QTFile::Duration(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    if (!s) return 0;
    const QTTrack& track = fMovie.TrackOf(*s);
    const uint64_t scale = track.TimeScale();
    const uint64_t units =
        fWriter ? track.samples.Duration() : track.media_header.Get(kMediaHeader["duration"]);
    return scale ? static_cast<int64_t>(units * 1000000 / scale) : 0;
}

int64_t QTFile::SampleCount(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(fMovie.TrackOf(*s).samples.SampleCount()) : 0;
}

int64_t QTFile::ChunkCount(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(fMovie.TrackOf(*s).samples.ChunkCount()) : 0;
}

QTPictureTimes QTFile::PictureTimes(int32_t stream, const MediaFormat& format, uint64_t held) const
{
    const QTStream* s = StreamAt(stream);
    if (!s || s->kind != QTStream::kVideo) return {};
    const QTTrack& track = fMovie.TrackOf(*s);
    return {track.samples.times, QTFrameTimeOf(track, format), held};
}

QTStart QTFile::Start(int32_t video, const MediaFormat& format, int32_t sound) const
{
    const QTStream* picture = StreamAt(video);
    if (!picture) return {};
    const QTTrack& track = fMovie.TrackOf(*picture);
    const QTStream* heard = StreamAt(sound);
    return QTStartOf(fMovie, track, QTFrameTimeOf(track, format),
                     heard ? &fMovie.TrackOf(*heard) : nullptr);
}

int64_t QTFile::FramePosition(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    if (!s) return 0;
    return static_cast<int64_t>(s->kind == QTStream::kVideo ? s->sample : s->chunk - 1);
}

int64_t QTFile::CurrentSample(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(s->sample) : 0;
}

int64_t QTFile::CurrentChunk(int32_t stream) const
{
    const QTStream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(s->chunk) : 0;
}

uint64_t QTFile::FrameSize(int32_t stream, int64_t frame)
{
    const QTStream* s = StreamAt(stream);
    return fReader && s ? fReader->FrameSize(*s, frame) : 0;
}

Status QTFile::SeekFrame(int32_t stream, int64_t frame)
{
    QTStream* s = StreamAt(stream);
    return fReader && s ? fReader->SeekFrame(*s, frame) : kError;
}

Status QTFile::ReadFrame(int32_t stream, std::span<uint8_t> buffer, uint32_t& size)
{
    size = 0;
    QTStream* s = StreamAt(stream);
    return fReader && s ? fReader->ReadFrame(*s, buffer, size) : kError;
}

void QTFile::SetOptions(uint32_t options, const char* information)
{
    if (fWriter) fWriter->SetOptions(options, information);
}

void QTFile::SetNarrowLimit(uint64_t bytes)
{
    if (fWriter) fWriter->SetNarrowLimit(bytes);
}

Status QTFile::AddVideoTrack(const MediaFormat& format)
{
    return fWriter ? fWriter->AddVideoTrack(format) : kError;
}

Status QTFile::AddEncodedVideoTrack(const MediaFormat& format)
{
    return fWriter ? fWriter->AddEncodedVideoTrack(format) : kError;
}

Status QTFile::AddDVTrack(bool pal)
{
    return AddEncodedVideoTrack(DVFormat(pal));
}

Status QTFile::AddPCMAudioTrack(const MediaFormat& format)
{
    return fWriter ? fWriter->AddPCMAudioTrack(format) : kError;
}

Status QTFile::AddAudioTrack(const MediaFormat& format)
{
    return fWriter ? fWriter->AddAudioTrack(format) : kError;
}

Status QTFile::SetAudioFormat(int32_t stream, int32_t rate, int32_t channels, int32_t bits)
{
    const QTStream* s = StreamAt(stream);
    return fWriter && s ? fWriter->SetAudioFormat(*s, rate, channels, bits) : kError;
}

Status QTFile::WriteFrame(int32_t stream, const void* data, uint32_t size)
{
    const QTStream* s = StreamAt(stream);
    return fWriter && s ? fWriter->WriteFrame(*s, data, size) : kError;
}

Status QTFile::Close()
{
    return fWriter ? fWriter->Close() : kError;
}

bool IsQuickTimeFile(const char* path)
{
    constexpr uint32_t kHead = 100;
    // "ftyp" is how writers of today begin the file.
    constexpr uint32_t kFirst[] = {"moov"_4cc, "wide"_4cc, "mdat"_4cc, "free"_4cc, "skip"_4cc,
                                   "pnot"_4cc, "cmov"_4cc, "dcom"_4cc, "cmvd"_4cc, "ftyp"_4cc};
    uint8_t head[kHead] = {};
    if (!path || FileReadHead(path, head, kHead) < 8) return false;
    const auto code = [&head](size_t at) {
        return static_cast<uint32_t>(LoadBytes(std::span(head).subspan(at, 4), ByteOrder::kBig));
    };
    return std::ranges::find(kFirst, code(4)) != std::end(kFirst) || code(12) == "mdat"_4cc ||
           code(12) == "mvhd"_4cc;
}

}  // namespace kelvane
