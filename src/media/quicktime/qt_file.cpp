#include "media/quicktime/qt_file.h"

#include <algorithm>

#include "base/four_cc.h"
#include "base/quietly.h"
#include "base/status.h"

namespace kelvane {

QTFile::QTFile(const char* path, uint32_t mode, const VolumeTable& volumes)
    : fPath(path ? path : ""), fMode(mode), fVolumes(volumes)
{
    if (!path) return;
    fInitCheck = fFile.Open(path, mode == kCreate ? kOpenCreate : kOpenRead);
    if (fInitCheck == kOK) mode == kCreate ? Create() : Parse();
}

QTFile::~QTFile()
{
    // Who wants to know closes before.
    if (IsDestination()) Quietly([this] { static_cast<void>(Close()); });
}

const QTFile::Stream* QTFile::StreamAt(int32_t stream) const
{
    return stream >= 0 && stream < CountStreams() ? &fStreams[static_cast<size_t>(stream)]
                                                  : nullptr;
}

QTFile::Stream* QTFile::StreamAt(int32_t stream)
{
    return stream >= 0 && stream < CountStreams() ? &fStreams[static_cast<size_t>(stream)]
                                                  : nullptr;
}

// A track with both headers is two streams.
void QTFile::AddStreams(size_t track)
{
    if (fMovie.tracks[track].video_header) fStreams.push_back({kVideo, track});
    if (fMovie.tracks[track].sound_header) fStreams.push_back({kSound, track});
}

bool QTFile::IsVideo(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s && s->kind == kVideo;
}

MediaFormat QTFile::StreamFormat(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    if (!s) return {};
    const QTTrack& track = fMovie.tracks[s->track];
    return s->kind == kVideo ? QTVideoFormat(track) : QTSoundFormat(track);
}

uint32_t QTFile::TrackCodec(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s ? fMovie.tracks[s->track].Format() : 0;
}

int64_t QTFile::Duration(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    if (!s) return 0;
    const QTTrack& track = fMovie.tracks[s->track];
    const uint64_t scale = track.TimeScale();
    const uint64_t units = fMode == kCreate ? track.samples.Duration()
                                            : track.media_header.Get(kMediaHeader["duration"]);
    return scale ? static_cast<int64_t>(units * 1000000 / scale) : 0;
}

int64_t QTFile::SampleCount(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(fMovie.tracks[s->track].samples.SampleCount()) : 0;
}

int64_t QTFile::ChunkCount(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(fMovie.tracks[s->track].samples.ChunkCount()) : 0;
}

int64_t QTFile::FramePosition(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    if (!s) return 0;
    return static_cast<int64_t>(s->kind == kVideo ? s->sample : s->chunk - 1);
}

int64_t QTFile::CurrentSample(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(s->sample) : 0;
}

int64_t QTFile::CurrentChunk(int32_t stream) const
{
    const Stream* s = StreamAt(stream);
    return s ? static_cast<int64_t>(s->chunk) : 0;
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
