#include "media/avi/writer/avi_index_writer.h"

#include <algorithm>
#include <limits>

#include "base/status.h"
#include "media/riff/wave_format.h"

namespace kelvane {

namespace {

constexpr size_t kHeadSize = kStandardIndex.Size();
constexpr uint32_t kMatroxIndexSize = 65536 - 8;                   // room for 8188 entries
constexpr uint64_t kReach = std::numeric_limits<uint32_t>::max();  // of an entry's dwOffset
constexpr uint32_t kMostDoublings = 7;                             // 25600 chunks: 3.7 GB of PAL

uint32_t StandardIndexId(size_t stream)
{
    return "ix00"_4cc + static_cast<uint32_t>(stream / 10 % 10 << 8 | stream % 10);
}

uint32_t EntriesInUse(const Chunk& index)
{
    return Get32(&index, kSuperIndex["nEntriesInUse"]);
}

void SetSuperEntry(Chunk& index, size_t entry, const HeaderField& field, uint64_t value)
{
    SetEntry(index, kHeadSize, entry, kSuperIndexEntry.Size(), field, value);
}

void PutOldEntry(Bytes& body, uint32_t tag, uint64_t offset, uint32_t size)
{
    body.resize(body.size() + kOldIndexEntry.Size());
    const auto entry = std::span(body).last(kOldIndexEntry.Size());
    const auto set = [&](const HeaderField& field, uint64_t value) {
        static_cast<void>(SetField(entry, field, value, ByteOrder::kLittle));
    };
    set(kOldIndexEntry["dwChunkId"], tag);
    set(kOldIndexEntry["dwType"], kKeyFrame);
    set(kOldIndexEntry["dwOffset"], offset);
    set(kOldIndexEntry["dwSize"], size);
}

// The body of a standard index without entries, with room for them.
std::unique_ptr<Bytes> StandardIndexBody(size_t bytes, uint32_t tag, uint64_t base)
{
    Chunk index;
    index.data = std::make_unique<Bytes>(bytes);
    Set(index, kStandardIndex["wLongsPerEntry"], kStandardIndexEntry.Size() / 4);
    Set(index, kStandardIndex["bIndexType"], kIndexOfChunks);
    Set(index, kStandardIndex["dwChunkId"], tag);
    Set(index, kStandardIndex["qwBaseOffset"], base);
    return std::move(index.data);
}

// Behind the entries in use; there is room.
void AddToStandardIndex(Chunk& index, const FrameEntry& frame)
{
    constexpr size_t kSize = kStandardIndexEntry.Size();
    const uint32_t used = EntriesInUse(index);
    const uint64_t base = Get(&index, kStandardIndex["qwBaseOffset"]);
    SetEntry(index, kHeadSize, used, kSize, kStandardIndexEntry["dwOffset"], frame.offset - base);
    SetEntry(index, kHeadSize, used, kSize, kStandardIndexEntry["dwSize"], frame.size);
    Set(index, kStandardIndex["nEntriesInUse"], used + 1);
}

}  // namespace

uint32_t AVIIndexWriter::RoomInSuperIndex(const AVIStream& stream) const
{
    const size_t room = (stream.super_index->length - kHeadSize) / kSuperIndexEntry.Size();
    return std::min(static_cast<uint32_t>(room), fLimits.super_index_entries);
}

// When three quarters of the super index are used, each further index takes twice as many chunks
// as the one before, so that its room lasts for days.
uint32_t AVIIndexWriter::ChunksPerIndex(const AVIStream& stream) const
{
    const uint32_t used = EntriesInUse(*stream.super_index);
    const uint32_t free = RoomInSuperIndex(stream) / 4 * 3;
    const uint32_t doublings = used < free ? 0 : std::min(used - free + 1, kMostDoublings);
    return fLimits.chunks_per_index << doublings;
}

Status AVIIndexWriter::BeforeChunk(AVIStream& stream, size_t size)
{
    if (!stream.super_index) return kOK;
    if (Has(kAVIMatrox)) {
        const bool due =
            !fMatroxIndex || EntriesInUse(*fMatroxIndex) > fLimits.matrox_index_entries ||
            fAppender.End() + size > Get(fMatroxIndex, kStandardIndex["qwBaseOffset"]) + kReach;
        return due ? StartMatroxIndex(stream) : kOK;
    }
    const auto indexed = static_cast<size_t>(stream.indexed);
    if (indexed < stream.frames.Count() &&
        fAppender.End() + size > stream.frames[indexed].offset + kReach)
        return WriteStandardIndex(stream);
    return EntriesInUse(*stream.super_index) < RoomInSuperIndex(stream) ? kOK : kError;
}

Status AVIIndexWriter::AfterChunk(AVIStream& stream)
{
    if (!stream.super_index) return kOK;
    if (Has(kAVIMatrox)) {
        AddToMatroxIndex(stream);
        return kOK;
    }
    const size_t waiting = stream.frames.Count() - static_cast<size_t>(stream.indexed);
    return waiting > ChunksPerIndex(stream) ? WriteStandardIndex(stream) : kOK;
}

Status AVIIndexWriter::FinishStreams()
{
    Status status = kOK;
    if (Has(kAVIMatrox)) return status;
    for (AVIStream& stream : fStructure.streams)
        if (stream.super_index) status = FirstFailure(status, WriteStandardIndex(stream));
    return status;
}

// Of the chunks that are in none yet; an empty index is not written.
Status AVIIndexWriter::WriteStandardIndex(AVIStream& stream)
{
    const auto first = static_cast<size_t>(stream.indexed);
    const size_t end = stream.frames.Count();
    if (first == end) return kOK;
    const uint64_t base = stream.frames[first].offset - 8;
    Chunk filled;
    filled.data = StandardIndexBody(kHeadSize + (end - first) * kStandardIndexEntry.Size(),
                                    stream.chunk_tag, base);
    for (size_t i = first; i < end; i++)
        AddToStandardIndex(filled, stream.frames[i]);
    size_t number = 0;
    while (&fStructure.streams[number] != &stream)
        number++;
    Chunk* index = nullptr;
    const Status status =
        fAppender.Put(StandardIndexId(number), *filled.data, fAppender.Media(), index);
    if (status != kOK) return status;
    AddToSuperIndex(stream, *index, DurationOf(stream));
    stream.indexed = static_cast<int32_t>(end);
    return kOK;
}

// Of the chunks that are in no index yet: their number, or sample frames of sound.
uint64_t AVIIndexWriter::DurationOf(const AVIStream& stream) const
{
    const auto first = static_cast<size_t>(stream.indexed);
    if (!stream.IsAudio()) return stream.frames.Count() - first;
    const uint64_t frame = Get(stream.format, kWaveFormat["nChannels"]) *
                           Get(stream.format, kWaveFormat["wBitsPerSample"]) / 8;
    uint64_t bytes = 0;
    for (size_t i = first; i < stream.frames.Count(); i++)
        bytes += stream.frames[i].size;
    return frame > 0 ? bytes / frame : 0;
}

void AVIIndexWriter::AddToSuperIndex(AVIStream& stream, const Chunk& index, uint64_t duration)
{
    Chunk& super = *stream.super_index;
    const uint32_t used = EntriesInUse(super);
    SetSuperEntry(super, used, kSuperIndexEntry["qwOffset"], index.offset - 8);
    SetSuperEntry(super, used, kSuperIndexEntry["dwSize"], index.length + 8);
    SetSuperEntry(super, used, kSuperIndexEntry["dwDuration"], duration);
    Set(super, kSuperIndex["nEntriesInUse"], used + 1);
    fCount++;
}

// The file gets zeros now and the body at the end.
Status AVIIndexWriter::StartMatroxIndex(AVIStream& stream)
{
    if (EntriesInUse(*stream.super_index) >= RoomInSuperIndex(stream)) return kError;
    Chunk* index = nullptr;
    const Status status =
        fAppender.Put(StandardIndexId(0), Bytes(kMatroxIndexSize), fAppender.Media(), index);
    if (status != kOK) return status;
    index->data = StandardIndexBody(kMatroxIndexSize, stream.chunk_tag, fAppender.End());
    index->dirty_data = true;
    fMatroxIndex = index;
    AddToSuperIndex(stream, *index, 0);
    return kOK;
}

void AVIIndexWriter::AddToMatroxIndex(AVIStream& stream)
{
    AddToStandardIndex(*fMatroxIndex, stream.frames[stream.frames.Count() - 1]);
    Chunk& super = *stream.super_index;
    SetSuperEntry(super, EntriesInUse(super) - 1, kSuperIndexEntry["dwDuration"],
                  EntriesInUse(*fMatroxIndex));
}

Status AVIIndexWriter::WriteOldIndex()
{
    const Bytes body = MergedOldIndex();
    if (body.empty()) return kOK;
    Chunk* riff = fStructure.segments.empty() ? fStructure.riff : fStructure.segments.back().riff;
    const Status status = fAppender.Put("idx1"_4cc, body, riff, fStructure.old_index);
    Chunk& header = *fStructure.main_header;
    const uint32_t others = Get32(&header, kMainHeader["dwFlags"]) & ~kHasIndex;
    Set(header, kMainHeader["dwFlags"], others | (status == kOK ? kHasIndex : 0));
    return status;
}

Bytes AVIIndexWriter::MergedOldIndex() const
{
    const uint64_t base = Has(kAVICanopus) || Has(kAVIMatrox) ? fStructure.media->offset : 0;
    std::vector<size_t> next(fStructure.streams.size());
    Bytes body;
    for (;;) {
        const AVIStream* lowest = nullptr;
        size_t* place = nullptr;
        for (size_t i = 0; i < next.size(); i++) {
            const AVIStream& stream = fStructure.streams[i];
            if (next[i] == stream.frames.Count()) continue;
            if (lowest && lowest->frames[*place].offset < stream.frames[next[i]].offset) continue;
            lowest = &stream;
            place = &next[i];
        }
        if (!lowest) return body;
        const FrameEntry& frame = lowest->frames[(*place)++];
        if (frame.offset - 8 - base > kReach) return body;
        PutOldEntry(body, lowest->chunk_tag, frame.offset - 8 - base, frame.size);
    }
}

}  // namespace kelvane
