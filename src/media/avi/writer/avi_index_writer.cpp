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

void PutStandardHead(ByteWriter& writer, uint32_t entries, uint32_t tag, uint64_t base)
{
    writer.Put16(2);  // longs an entry
    writer.Put8(0);
    writer.Put8(kIndexOfChunks);
    writer.Put32(entries);
    writer.PutCode(tag);
    writer.Put64(base);
    writer.Put32(0);
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
    Bytes body;
    body.reserve(kHeadSize + (end - first) * kStandardIndexEntry.Size());
    ByteWriter writer(body, ByteOrder::kLittle);
    PutStandardHead(writer, static_cast<uint32_t>(end - first), stream.chunk_tag, base);
    for (size_t i = first; i < end; i++) {
        writer.Put32(static_cast<uint32_t>(stream.frames[i].offset - base));
        writer.Put32(stream.frames[i].size);
    }
    size_t number = 0;
    while (&fStructure.streams[number] != &stream)
        number++;
    Chunk* index = nullptr;
    const Status status = fAppender.Put(StandardIndexId(number), body, fAppender.Media(), index);
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
    Bytes entry;
    ByteWriter writer(entry, ByteOrder::kLittle);
    writer.Put64(index.offset - 8);
    writer.Put32(index.length + 8);
    writer.Put32(static_cast<uint32_t>(duration));
    std::ranges::copy(
        entry, super.data->begin() + static_cast<std::ptrdiff_t>(kHeadSize + used * entry.size()));
    Set(super, kSuperIndex["nEntriesInUse"], used + 1);
}

// The file gets zeros now and the body at the end.
Status AVIIndexWriter::StartMatroxIndex(AVIStream& stream)
{
    if (EntriesInUse(*stream.super_index) >= RoomInSuperIndex(stream)) return kError;
    auto body = std::make_unique<Bytes>(kMatroxIndexSize);
    Chunk* index = nullptr;
    const Status status = fAppender.Put(StandardIndexId(0), *body, fAppender.Media(), index);
    if (status != kOK) return status;
    Bytes head;
    ByteWriter writer(head, ByteOrder::kLittle);
    PutStandardHead(writer, 0, stream.chunk_tag, fAppender.End());
    std::ranges::copy(head, body->begin());
    index->data = std::move(body);
    index->dirty_data = true;
    fMatroxIndex = index;
    AddToSuperIndex(stream, *index, 0);
    return kOK;
}

void AVIIndexWriter::AddToMatroxIndex(AVIStream& stream)
{
    constexpr size_t kEntry = kStandardIndexEntry.Size();
    Chunk& index = *fMatroxIndex;
    const uint32_t used = EntriesInUse(index);
    const FrameEntry& frame = stream.frames[stream.frames.Count() - 1];
    const uint64_t base = Get(&index, kStandardIndex["qwBaseOffset"]);
    const auto entry = std::span(*index.data).subspan(kHeadSize + used * kEntry, kEntry);
    StoreBytes(entry.first(4), frame.offset - base, ByteOrder::kLittle);
    StoreBytes(entry.last(4), frame.size, ByteOrder::kLittle);
    Set(index, kStandardIndex["nEntriesInUse"], used + 1);

    Chunk& super = *stream.super_index;
    const size_t last = kHeadSize + (EntriesInUse(super) - 1) * kSuperIndexEntry.Size();
    StoreBytes(std::span(*super.data).subspan(last + 12, 4), used + 1, ByteOrder::kLittle);
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
    ByteWriter writer(body, ByteOrder::kLittle);
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
        writer.PutCode(lowest->chunk_tag);
        writer.Put32(kKeyFrame);
        writer.Put32(static_cast<uint32_t>(frame.offset - 8 - base));
        writer.Put32(frame.size);
    }
}

}  // namespace kelvane
