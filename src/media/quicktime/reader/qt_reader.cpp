#include "media/quicktime/reader/qt_reader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "base/four_cc.h"
#include "base/saturating.h"
#include "media/quicktime/reader/qt_compressed_header.h"
#include "media/quicktime/reader/qt_movie_parser.h"
#include "media/quicktime/reader/qt_references.h"
#include "media/quicktime/structure/qt_formats.h"
#include "media/quicktime/structure/qt_sound.h"

namespace kelvane {

namespace {

// A walk over more atoms than this beside the movie is broken off: a file of nothing but tiny
// atoms must not be read from end to end.
constexpr int kMaxTopLevelAtoms = 20000;

// Bytes of a chunk of sound in another file, which is not looked at before it is read.
constexpr uint64_t kMostExternalSound = 64 << 20;

bool IsLetters(uint32_t type)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        const uint32_t c = type >> shift & 0xFF;
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))) return false;
    }
    return true;
}

// Bytes of a chunk of sound: of PCM a value for every channel in every unit of time ("stts"); of
// packed sound by the size that the file states for a sample, if it states one.
uint64_t ChunkBytes(QTTrack& track, const QTSamplePlace& chunk)
{
    const QTSound sound = QTSoundOf(track);
    if (sound.coding.IsSupported())
        return SaturatingMultiply(SaturatingMultiply(chunk.samples, sound.FrameBytes()),
                                  track.samples.SampleDuration(chunk.first_sample));
    const uint32_t format = track.Format();
    const auto channels =
        static_cast<uint32_t>(track.Described(kSoundDescription["number of channels"]));
    const auto bits = static_cast<uint32_t>(track.Described(kSoundDescription["sample size"]));
    if (!IsQTPackedSound(format))
        return SaturatingMultiply(QTSoundBytes(format, chunk.samples, channels, bits),
                                  track.samples.SampleDuration(chunk.first_sample));
    const uint32_t size = track.samples.sample_size;
    return size > 1 ? chunk.samples * size : QTSoundBytes(format, chunk.samples, channels, bits);
}

}  // namespace

QTReader::QTReader(QTMovie& movie, PositionedFile& file, const VolumeTable& volumes)
    : fMovie(movie), fFile(file), fVolumes(volumes)
{
}

Status QTReader::Parse()
{
    std::optional<uint64_t> media;
    std::optional<AtomHead> movie;
    AtomHead head;
    for (int i = 0; i < kMaxTopLevelAtoms && !(media && movie); i++) {
        std::array<uint8_t, kMaxAtomHead> window;
        const uint64_t position = i ? head.Next() : 0;
        fFile.SetPosition(position);
        size_t got = 0;
        const Status status = fFile.Read(window, got);
        // Without the heads before it nobody knows where the movie is.
        if (status == kUnread && !movie) return {kError, status.SystemError()};
        if (!ReadAtomHead(std::span(window).first(got), position, head)) break;
        if (!IsLetters(head.type)) break;
        if (head.type == "mdat"_4cc && !media) media = head.body;
        if (head.type == "moov"_4cc && !movie) movie = head;
    }
    const bool whole = movie && movie->end <= fFile.Length();
    if (media && !whole) {
        const Status salvaged = Salvage(*media, movie ? movie->start : fFile.Length());
        if (salvaged != kNotThisClass || !movie) return salvaged;
    }
    return movie ? ParseMovieAtom(*movie) : kNotThisClass;
}

// A capture that broke off has no movie yet, or the beginning of one.
Status QTReader::Salvage(uint64_t media, uint64_t end)
{
    fSalvage = SalvageQTMovie(fFile, media, end, fMovie);
    if (fSalvage.status == kUnread) return {kError, fSalvage.status.SystemError()};
    AddStreams();
    return fSalvage.frames > 0 ? kOK : kNotThisClass;
}

void QTReader::AddStreams()
{
    for (size_t track = 0; track < fMovie.tracks.size(); track++)
        fMovie.AddStreams(track);
    fExternalFiles.resize(fMovie.tracks.size());
}

Status QTReader::ParseMovieAtom(const AtomHead& head)
{
    const uint64_t end = std::min(head.end, fFile.Length());
    const uint64_t size = end > head.body ? end - head.body : 0;
    if (size > kMaxMovieHeader) return kCorrupted;
    Bytes body(static_cast<size_t>(size));
    fFile.SetPosition(head.body);
    size_t got = 0;
    if (const Status status = fFile.Read(body, got); status == kUnread)
        return {kError, status.SystemError()};
    body.resize(got);
    ParseQTMovie(body, fMovie);
    AddStreams();
    return kOK;
}

uint64_t QTReader::FrameSize(const QTStream& stream, int64_t frame)
{
    if (frame < 0) return 0;
    QTTrack& track = fMovie.TrackOf(stream);
    if (stream.kind == QTStream::kVideo)
        return track.samples.SampleSize(static_cast<uint64_t>(frame));
    QTSamplePlace place;
    if (!track.samples.FindChunk(static_cast<uint64_t>(frame) + 1, place)) return 0;
    const uint64_t bytes = ChunkBytes(track, place);
    // What the file cannot hold cannot be read either, and nobody shall make room for it.
    return bytes > (track.external_names.empty() ? fFile.Length() : kMostExternalSound) ? 0 : bytes;
}

Status QTReader::SeekFrame(QTStream& stream, int64_t frame)
{
    if (frame < 0) return kError;
    QTSampleTables& tables = fMovie.TrackOf(stream).samples;
    const uint64_t place = static_cast<uint64_t>(frame);
    QTSamplePlace found;
    if (stream.kind == QTStream::kVideo) {
        if (place > tables.SampleCount()) return kError;
        stream.sample = place;
        stream.chunk = tables.FindSample(place, found) ? found.chunk : tables.ChunkCount() + 1;
    } else {
        if (place > tables.ChunkCount()) return kError;
        stream.chunk = place + 1;
        stream.sample =
            tables.FindChunk(stream.chunk, found) ? found.first_sample : tables.SampleCount();
    }
    return kOK;
}

Status QTReader::ReadFrame(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size)
{
    return stream.kind == QTStream::kVideo ? ReadVideo(stream, buffer, size)
                                           : ReadSound(stream, buffer, size);
}

Status QTReader::ReadVideo(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size)
{
    QTTrack& track = fMovie.TrackOf(stream);
    QTSamplePlace place;
    if (stream.sample >= track.samples.SampleCount()) return kEnd;
    if (!track.samples.FindSample(stream.sample, place)) return kMissing;
    const uint32_t bytes = track.samples.SampleSize(stream.sample);
    const Status status = ReadMedia(stream, place, bytes, buffer, size);
    if (status != kOK) return status;
    stream.sample++;
    stream.chunk = place.chunk;
    return kOK;
}

Status QTReader::ReadSound(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size)
{
    QTTrack& track = fMovie.TrackOf(stream);
    QTSamplePlace place;
    if (!track.samples.FindChunk(stream.chunk, place)) {
        const bool end = stream.chunk > track.samples.ChunkCount() && !track.samples.LacksChunks();
        return end ? kEnd : kMissing;
    }
    const Status status = ReadMedia(stream, place, ChunkBytes(track, place), buffer, size);
    if (QTSoundOf(track).HasBigWords()) SwapWords(buffer.data(), buffer.data(), size / 2);
    if (status != kOK) return status;
    stream.sample = SaturatingAdd(place.first_sample, place.samples);
    stream.chunk++;
    return kOK;
}

// Reads `bytes` bytes, or the first of them that the buffer has room for.
Status QTReader::ReadMedia(const QTStream& stream, const QTSamplePlace& place, uint64_t bytes,
                           std::span<uint8_t> buffer, uint32_t& size)
{
    constexpr size_t kMostAtOnce = std::numeric_limits<uint32_t>::max();
    const auto into = buffer.first(
        static_cast<size_t>(std::min<uint64_t>(bytes, std::min(buffer.size(), kMostAtOnce))));
    if (fSalvage.frames > 0 && place.offset == kSalvagedSilence) {
        std::ranges::fill(into, uint8_t{0});
        size = static_cast<uint32_t>(into.size());
        return size < bytes ? kTooLarge : kOK;
    }
    FileHandle file = kNoFile;
    if (const Status status = OpenMedia(stream, place, file); status != kOK) return status;
    if (const Status status = FileReadWhole(file, place.offset, into); status != kOK) return status;
    const bool too_large = into.size() < bytes;
    if (too_large && SaturatingAdd(place.offset, bytes) > FileSize(file)) return kMissing;
    size = static_cast<uint32_t>(into.size());
    return too_large ? kTooLarge : kOK;
}

// The file that holds the media: this one, or another that is opened when it is first read from.
Status QTReader::OpenMedia(const QTStream& stream, const QTSamplePlace& place, FileHandle& file)
{
    file = fFile.Handle();
    const QTTrack& track = fMovie.TrackOf(stream);
    const auto& descriptions = track.samples.descriptions;
    if (descriptions.empty()) return kOK;
    const size_t which = std::clamp<size_t>(place.description, 1, descriptions.size()) - 1;
    const size_t reference = static_cast<size_t>(
        descriptions[which].fields.Get(kDescriptionHead["data reference index"]));
    const auto& references = track.data_references;
    if (reference < 1 || reference > track.external_names.size() ||
        (reference <= references.size() && references[reference - 1].IsSelfContained()))
        return kOK;
    std::vector<FileHolder>& files = fExternalFiles[stream.track];
    files.resize(track.external_names.size());
    FileHolder& holder = files[reference - 1];
    if (!holder.IsOpen()) {
        const std::string path = ResolveReference(track.external_names[reference - 1], fVolumes);
        holder = FileHolder(FileOpen(path.c_str(), kOpenRead));
        if (!holder.IsOpen()) return Status::System(kReferenceMissing);
    }
    file = holder.Handle();
    return kOK;
}

}  // namespace kelvane
