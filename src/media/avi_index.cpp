#include "media/avi_index.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "base/television.h"
#include "media/avi_codecs.h"
#include "media/avi_parser.h"
#include "media/file_access.h"
#include "media/wave_format.h"

namespace kelvane {

namespace {

constexpr size_t kHeadSize = kStandardIndex.Size();  // of a super index too
constexpr uint32_t kDropped = 0x80000000;            // an entry of this size gives no frame
constexpr size_t kMostStandardIndexes = 20'000;      // of all streams; eight full super indexes
constexpr size_t kMostNumberedStreams = 100;         // by two digits

// Entries that the body really holds.
size_t CountEntries(const Chunk& index, size_t entry_size)
{
    if (!index.data || index.data->size() < kHeadSize) return 0;
    const uint64_t claimed = Get(&index, kSuperIndex["nEntriesInUse"]);
    return std::min<uint64_t>(claimed, (index.data->size() - kHeadSize) / entry_size);
}

uint64_t SuperEntry(const Chunk& index, size_t entry, const HeaderField& field)
{
    return GetEntry(index, kHeadSize, entry, kSuperIndexEntry.Size(), field);
}

// Offset and size as the index has them; the size with its key-frame bit.
FrameEntry StandardEntry(const Chunk& index, size_t entry)
{
    constexpr size_t kSize = kStandardIndexEntry.Size();
    const uint64_t base = Get(&index, kStandardIndex["qwBaseOffset"]);
    return {base + GetEntry(index, kHeadSize, entry, kSize, kStandardIndexEntry["dwOffset"]),
            static_cast<uint32_t>(
                GetEntry(index, kHeadSize, entry, kSize, kStandardIndexEntry["dwSize"]))};
}

uint64_t CountDropped(const Chunk& index)
{
    uint64_t dropped = 0;
    for (size_t i = CountEntries(index, kStandardIndexEntry.Size()); i-- > 0;)
        dropped += StandardEntry(index, i).size == kDropped;
    return dropped;
}

// The entry after `skipped` others that give a frame.
bool FindUndropped(const Chunk& index, uint64_t skipped, FrameEntry& found)
{
    const size_t count = CountEntries(index, kStandardIndexEntry.Size());
    for (size_t i = 0; i < count; i++) {
        found = StandardEntry(index, i);
        if (found.size == kDropped || skipped-- > 0) continue;
        found.size &= ~kDropped;
        return true;
    }
    return false;
}

// 0 to 99 by the first two characters of a chunk's id, or -1.
int StreamNumber(uint32_t id)
{
    const uint32_t tens = (id & 0xFF) - '0', units = (id >> 8 & 0xFF) - '0';
    return tens < 10 && units < 10 ? static_cast<int>(tens * 10 + units) : -1;
}

struct OldEntry {
    uint32_t id, offset, size;
};

OldEntry OldEntryAt(const Chunk& index, size_t entry)
{
    const auto get = [&](const HeaderField& field) {
        return static_cast<uint32_t>(GetEntry(index, 0, entry, kOldIndexEntry.Size(), field));
    };
    return {get(kOldIndexEntry["dwChunkId"]), get(kOldIndexEntry["dwOffset"]),
            get(kOldIndexEntry["dwSize"])};
}

size_t CountOldEntries(const Chunk* index)
{
    return index && index->data ? index->data->size() / kOldIndexEntry.Size() : 0;
}

}  // namespace

void AVIIndex::BuildTables(FileHandle file)
{
    ChunkSource source(file, ByteOrder::kLittle);
    fFileEnd = source.FileEnd();
    fEntriesLeft = fFileEnd / kStandardIndexEntry.Size();
    for (AVIStream& stream : fStructure.streams) {
        StartTable(stream);
        if (stream.super_index && !(fStructure.flags & kAVIListMedia))
            LoadStandardIndexes(source, stream);
    }
    for (size_t i = 0; const Chunk* chunk = fStructure.tree.ChunkAt(i); i++)
        if (chunk->data) fByOffset.try_emplace(chunk->offset, chunk);
    for (AVIStream& stream : fStructure.streams)
        if (stream.super_index) AddStandardIndexes(stream);
    AddOldIndex();
}

// The estimate only says how the table starts; a header that lies costs nothing.
void AVIIndex::StartTable(AVIStream& stream)
{
    uint64_t estimate = Get32(stream.header, kStreamHeader["dwLength"]);
    if (stream.IsAudio()) {
        estimate *= Get(stream.format, kWaveFormat["nChannels"]) *
                    (Get(stream.format, kWaveFormat["wBitsPerSample"]) / 8);
        const uint32_t chunk = Get32(stream.header, kStreamHeader["dwSuggestedBufferSize"]);
        if (chunk > 1) estimate = estimate / chunk + 1;
    } else if (fStructure.extended_header) {
        estimate = Get32(fStructure.extended_header, kExtendedHeader["dwTotalFrames"]);
        SetInMemory(*stream.header, kStreamHeader["dwLength"], estimate);
    }
    stream.frames.Start(std::clamp<uint64_t>(estimate, 10, 10000));
    if ((stream.IsVideo() || stream.IsInterleaved()) && IsDVHandler(Swap32(stream.Handler())))
        stream.largest_frame = SystemFor(stream.IsPAL()).dv_frame_size;
}

void AVIIndex::AddFrame(AVIStream& stream, const FrameEntry& entry)
{
    stream.frames.Add(entry);
    // A frame that is not in the file is not read, so nobody needs room for it.
    const auto most = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
    if (entry.size <= most && entry.offset <= fFileEnd && entry.size <= fFileEnd - entry.offset)
        stream.largest_frame = std::max(stream.largest_frame, static_cast<int32_t>(entry.size));
}

// Enters the standard indexes as chunks. One that two entries name is loaded once.
void AVIIndex::LoadStandardIndexes(ChunkSource& source, const AVIStream& stream)
{
    const Chunk& super = *stream.super_index;
    const size_t count = CountEntries(super, kSuperIndexEntry.Size());
    for (size_t i = 0; i < count && fLoaded < kMostStandardIndexes; i++) {
        uint32_t id = 0, length = 0;
        source.Seek(SuperEntry(super, i, kSuperIndexEntry["qwOffset"]));
        if (fByOffset.contains(source.Position() + 8)) continue;
        if (!source.Read32(id) || !source.ReadLength(length)) continue;
        const uint64_t offset = source.Position();
        ChunkPlan plan{.id = id, .length = length, .data = source.ReadBody(length)};
        if (!plan.data) continue;
        if (IsStandardIndexId(id)) plan.datatype = kDataStandardIndex;
        // The one before shows the place without a search.
        plan.anchor = fLastLoaded;
        if (!fLastLoaded) plan.parent = fStructure.media ? fStructure.media : fStructure.riff;
        fLastLoaded = fStructure.tree.NoteChunk(std::move(plan), offset);
        fByOffset.emplace(offset, fLastLoaded);
        fLoaded++;
    }
}

const Chunk* AVIIndex::IndexAt(uint64_t offset) const
{
    const auto found = fByOffset.find(offset + 8);
    return found == fByOffset.end() ? nullptr : found->second;
}

void AVIIndex::AddStandardIndexes(AVIStream& stream)
{
    const Chunk& super = *stream.super_index;
    stream.chunk_tag = Get32(&super, kSuperIndex["dwChunkId"]);
    const size_t count = CountEntries(super, kSuperIndexEntry.Size());
    for (size_t i = 0; i < count; i++) {
        const Chunk* index = IndexAt(SuperEntry(super, i, kSuperIndexEntry["qwOffset"]));
        if (!index) continue;
        const size_t frames = CountEntries(*index, kStandardIndexEntry.Size());
        for (size_t k = 0; k < frames && fEntriesLeft > 0; k++, fEntriesLeft--) {
            FrameEntry entry = StandardEntry(*index, k);
            if (entry.size == kDropped) continue;
            entry.size &= ~kDropped;
            AddFrame(stream, entry);
        }
    }
}

// What is added to the offsets of "idx1". The first entry tells what they count from: it is taken
// to be the first chunk of the list, whatever value it holds. Only dvgrab's "7Fxx" in front, which
// stands for no chunk, is passed over.
uint64_t AVIIndex::OldIndexCorrection()
{
    OldEntry entry = OldEntryAt(*fStructure.old_index, 0);
    if (entry.id == FourCC("7Fxx")) entry = OldEntryAt(*fStructure.old_index, 1);
    const uint64_t first = entry.offset;
    const uint64_t media = fStructure.media ? fStructure.media->offset : 0;
    if (first + 8 >= media) return 0;
    fStructure.flags |= kAVICanopus;
    return media - first + 4;
}

// One pass for all streams that have no super index.
void AVIIndex::AddOldIndex()
{
    const size_t count = CountOldEntries(fStructure.old_index);
    if (count == 0) return;
    const uint64_t correction = OldIndexCorrection();
    struct {
        AVIStream* stream = nullptr;
        FrameEntry last{};
        uint32_t empty = 0;  // entries before the first frame
    } numbered[kMostNumberedStreams];
    for (size_t i = 0; i < std::min(fStructure.streams.size(), std::size(numbered)); i++)
        if (!fStructure.streams[i].super_index) numbered[i].stream = &fStructure.streams[i];
    for (size_t i = 0; i < count; i++) {
        const OldEntry entry = OldEntryAt(*fStructure.old_index, i);
        const int number = StreamNumber(entry.id);
        if (number < 0 || !numbered[number].stream) continue;
        auto& [stream, last, empty] = numbered[number];
        stream->chunk_tag = entry.id;
        // An empty entry repeats the frame before it: writers drop frames that way. Those in front
        // of the first frame stand for that one, so that sound and picture stay in step.
        if (entry.size != 0) last = {entry.offset + 8 + correction, entry.size};
        if (last.size == 0) {
            empty++;
            continue;
        }
        for (; empty > 0; empty--)
            AddFrame(*stream, last);
        AddFrame(*stream, last);
    }
}

bool AVIIndex::Search(size_t stream, uint32_t frame, FrameEntry& found) const
{
    const AVIStream& searched = fStructure.streams[stream];
    return searched.super_index ? SearchSuperIndex(searched, frame, found)
                                : SearchOldIndex(stream, frame, found);
}

// By the running sum of the durations, which count chunks in a video stream. Dropped entries count
// here as little as in the tables.
bool AVIIndex::SearchSuperIndex(const AVIStream& stream, uint32_t frame, FrameEntry& found) const
{
    const Chunk& super = *stream.super_index;
    const size_t count = CountEntries(super, kSuperIndexEntry.Size());
    uint64_t left = frame;
    uint64_t looked_at = 0;  // as in the tables, no more than the file can hold
    for (size_t i = 0; i < count && looked_at <= fFileEnd / kStandardIndexEntry.Size(); i++) {
        const Chunk* index = IndexAt(SuperEntry(super, i, kSuperIndexEntry["qwOffset"]));
        if (index) looked_at += CountEntries(*index, kStandardIndexEntry.Size());
        const uint64_t duration = SuperEntry(super, i, kSuperIndexEntry["dwDuration"]);
        const uint64_t dropped = index ? CountDropped(*index) : 0;
        const uint64_t frames = duration - std::min(duration, dropped);
        if (left < frames) return index && FindUndropped(*index, left, found);
        left -= frames;
    }
    return false;
}

bool AVIIndex::SearchOldIndex(size_t stream, uint32_t frame, FrameEntry& found) const
{
    const size_t count = CountOldEntries(fStructure.old_index);
    uint32_t seen = 0;
    for (size_t i = 0; i < count; i++) {
        const OldEntry entry = OldEntryAt(*fStructure.old_index, i);
        if (StreamNumber(entry.id) != static_cast<int>(stream) || seen++ != frame) continue;
        found = {uint64_t{entry.offset} + 8, entry.size};
        return true;
    }
    return false;
}

}  // namespace kelvane
