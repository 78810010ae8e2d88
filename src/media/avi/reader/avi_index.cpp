#include "media/avi/reader/avi_index.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "base/television.h"
#include "media/avi/reader/avi_parser.h"
#include "media/avi/structure/avi_codecs.h"
#include "media/riff/wave_format.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr size_t kHeadSize = kStandardIndex.Size();  // of a super index too
constexpr uint32_t kHeld = 0x80000000;               // as the whole size: no data
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
    return {SumOfOffsets(base,
                         GetEntry(index, kHeadSize, entry, kSize, kStandardIndexEntry["dwOffset"])),
            static_cast<uint32_t>(
                GetEntry(index, kHeadSize, entry, kSize, kStandardIndexEntry["dwSize"]))};
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

AVIIndex::AVIIndex(AVIStructure& structure, FileHandle file)
    : fStructure(structure),
      fSource(file, ByteOrder::kLittle),
      fEntriesLeft(fSource.FileEnd() / kStandardIndexEntry.Size())
{
}

Status AVIIndex::BuildTables()
{
    fCoverage.resize(fStructure.streams.size());
    for (AVIStream& stream : fStructure.streams) {
        StartTable(stream);
        if (stream.super_index && !(fStructure.flags & kAVIListMedia)) LoadStandardIndexes(stream);
    }
    for (size_t i = 0; const Chunk* chunk = fStructure.tree.ChunkAt(i); i++)
        if (chunk->data) fByOffset.try_emplace(chunk->offset, chunk);
    for (size_t i = 0; i < fCoverage.size(); i++)
        if (fStructure.streams[i].super_index)
            AddStandardIndexes(fStructure.streams[i], fCoverage[i]);
    AddOldIndex();
    OpenLastGaps();
    WalkGaps();
    return HoldsForever() ? kCorrupted : kOK;
}

// A few bytes of an index hold a frame, so that a damaged one can make a film of months.
bool AVIIndex::HoldsForever() const
{
    constexpr uint64_t kMostSeconds = 24 * 60 * 60;
    for (size_t i = 0; i < fCoverage.size(); i++) {
        const uint64_t rate = std::max(fStructure.streams[i].WholeRate(), 1u);
        if (fCoverage[i].held > kMostSeconds * rate) return true;
    }
    return false;
}

// Frames of video, or sample frames of sound, by the headers; the one of all RIFFs goes first.
uint64_t AVIIndex::LengthOf(const AVIStream& stream) const
{
    return fStructure.extended_header && !stream.IsAudio()
               ? Get32(fStructure.extended_header, kExtendedHeader["dwTotalFrames"])
               : Get32(stream.header, kStreamHeader["dwLength"]);
}

// The estimate only says how the table starts; a header that lies costs nothing.
void AVIIndex::StartTable(AVIStream& stream)
{
    uint64_t estimate = LengthOf(stream);
    if (stream.IsAudio()) {
        estimate *= Get(stream.format, kWaveFormat["nChannels"]) *
                    (Get(stream.format, kWaveFormat["wBitsPerSample"]) / 8);
        const uint32_t chunk = Get32(stream.header, kStreamHeader["dwSuggestedBufferSize"]);
        if (chunk > 1) estimate = estimate / chunk + 1;
    }
    stream.frames.Start(std::clamp<uint64_t>(estimate, 10, 10000));
    if ((stream.IsVideo() || stream.IsInterleaved()) && IsDVHandler(stream.Handler()))
        stream.largest_frame = SystemFor(stream.IsPAL()).dv_frame_size;
}

// By value: the entry can be one of the table that grows.
void AVIIndex::AddFrame(AVIStream& stream, FrameEntry entry)
{
    stream.frames.Add(entry);
    // A frame that is not in the file is not read, so nobody needs room for it.
    constexpr auto kMost = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
    if (entry.size <= kMost && entry.offset + entry.size <= fSource.FileEnd())
        stream.largest_frame = std::max(stream.largest_frame, static_cast<int32_t>(entry.size));
}

// A frame that is held has no data and no sound of its own; sound of no data is none.
void AVIIndex::Hold(AVIStream& stream, Coverage& coverage, const FrameEntry& entry)
{
    if (stream.IsAudio()) return;
    AddFrame(stream, {entry.offset, 0});
    coverage.held++;
}

// An empty entry repeats the frame before it: writers drop frames that way. Those in front of the
// first frame stand for that one, so that sound and picture stay in step. An empty piece of sound
// is nothing.
void AVIIndex::AddOrRepeat(AVIStream& stream, Coverage& coverage, const FrameEntry& entry)
{
    const size_t count = stream.frames.Count();
    if (entry.size == 0) {
        if (stream.IsAudio()) return;
        coverage.held++;
        if (count == 0)
            coverage.waiting++;
        else
            AddFrame(stream, stream.frames[count - 1]);
        return;
    }
    for (; coverage.waiting > 0; coverage.waiting--)
        AddFrame(stream, entry);
    AddFrame(stream, entry);
}

void AVIIndex::Cover(Coverage& coverage, const FrameEntry& named) const
{
    coverage.end = std::max(coverage.end, std::min(named.End(), fSource.FileEnd()));
}

// Enters the standard indexes as chunks. One that two entries name is loaded once.
void AVIIndex::LoadStandardIndexes(const AVIStream& stream)
{
    const Chunk& super = *stream.super_index;
    const size_t count = CountEntries(super, kSuperIndexEntry.Size());
    for (size_t i = 0; i < count && fLoaded < kMostStandardIndexes; i++) {
        uint32_t id = 0, length = 0;
        fSource.Seek(SuperEntry(super, i, kSuperIndexEntry["qwOffset"]));
        if (fByOffset.contains(SumOfOffsets(fSource.Position(), 8))) continue;
        if (!fSource.ReadCode(id) || !IsIndexId(id) || !fSource.ReadLength(length)) continue;
        const uint64_t offset = fSource.Position();
        ChunkPlan plan{.id = id, .length = length, .data = fSource.ReadBody(length)};
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

// By its head. Null when there is none, or one of another kind: an index of fields has entries that
// are not ours.
const Chunk* AVIIndex::StandardIndexAt(uint64_t offset) const
{
    const auto found = fByOffset.find(SumOfOffsets(offset, 8));
    if (found == fByOffset.end()) return nullptr;
    const Chunk* index = found->second;
    const bool known = IsIndexId(index->id) && index->data->size() >= kHeadSize &&
                       Get(index, kStandardIndex["bIndexSubType"]) == 0;
    return known ? index : nullptr;
}

void AVIIndex::AddStandardIndexes(AVIStream& stream, Coverage& coverage)
{
    const Chunk& super = *stream.super_index;
    stream.chunk_tag = Get32(&super, kSuperIndex["dwChunkId"]);
    const size_t count = CountEntries(super, kSuperIndexEntry.Size());
    for (size_t i = 0; i < count; i++) {
        const Chunk* index = StandardIndexAt(SuperEntry(super, i, kSuperIndexEntry["qwOffset"]));
        const uint64_t promised = SuperEntry(super, i, kSuperIndexEntry["dwDuration"]);
        const size_t entries = index ? CountEntries(*index, kStandardIndexEntry.Size()) : 0;
        if (entries > 0) AddEntries(*index, entries, stream, coverage);
        // One that claims more than it holds is cut off; one without entries was never filled.
        const bool whole = index && entries == Get(index, kStandardIndex["nEntriesInUse"]);
        if (whole && (entries > 0 || promised == 0)) continue;
        coverage.lost = true;
        coverage.promised += promised - std::min<uint64_t>(promised, entries);
    }
}

void AVIIndex::AddEntries(const Chunk& index, size_t count, AVIStream& stream, Coverage& coverage)
{
    if (coverage.lost)
        coverage.gaps.push_back(
            {stream.frames.Count(), coverage.end, StandardEntry(index, 0).offset});
    coverage.lost = false;
    for (size_t i = 0; i < count && fEntriesLeft > 0; i++, fEntriesLeft--) {
        FrameEntry entry = StandardEntry(index, i);
        const bool held = entry.size == kHeld;
        entry.size &= ~kHeld;
        Cover(coverage, entry);
        if (held)
            Hold(stream, coverage, entry);
        else
            AddOrRepeat(stream, coverage, entry);
    }
}

// What is added to the offsets of "idx1". The first entry tells what they count from: it is taken
// to be the first chunk of the list, whatever value it holds. Only dvgrab's "7Fxx" in front, which
// stands for no chunk, is passed over.
uint64_t AVIIndex::OldIndexCorrection()
{
    OldEntry entry = OldEntryAt(*fStructure.old_index, 0);
    if (entry.id == "7Fxx"_4cc) entry = OldEntryAt(*fStructure.old_index, 1);
    const uint64_t first = entry.offset;
    const uint64_t media = fStructure.media ? fStructure.media->offset : 0;
    if (first + 8 >= media) return 0;
    fStructure.flags |= kAVICanopus;
    return media - first + 4;
}

// False when the first chunk that the index names is not where it says: without its list nobody
// knows what the offsets count from, and any bytes would pass for pictures.
bool AVIIndex::OldIndexFits(uint64_t correction)
{
    const size_t count = CountOldEntries(fStructure.old_index);
    for (size_t i = 0; i < count; i++) {
        const OldEntry entry = OldEntryAt(*fStructure.old_index, i);
        if (StreamNumber(entry.id) < 0 || entry.size == 0) continue;
        uint32_t id = 0;
        fSource.Seek(SumOfOffsets(entry.offset, correction));
        // What is beyond the file, or cannot be read, is told when it is to be read.
        return !fSource.ReadCode(id) || StreamNumber(id) == StreamNumber(entry.id);
    }
    return true;
}

// One pass for all streams that have no super index.
void AVIIndex::AddOldIndex()
{
    const size_t count = CountOldEntries(fStructure.old_index);
    if (count == 0) return;
    const uint64_t correction = OldIndexCorrection();
    if (!OldIndexFits(correction)) return;
    const size_t streams = std::min(fStructure.streams.size(), kMostNumberedStreams);
    for (size_t i = 0; i < count; i++) {
        const OldEntry entry = OldEntryAt(*fStructure.old_index, i);
        const int number = StreamNumber(entry.id);
        if (number < 0 || static_cast<size_t>(number) >= streams) continue;
        AVIStream& stream = fStructure.streams[static_cast<size_t>(number)];
        if (stream.super_index) continue;
        Coverage& coverage = fCoverage[static_cast<size_t>(number)];
        const FrameEntry frame{SumOfOffsets(uint64_t{entry.offset} + 8, correction), entry.size};
        stream.chunk_tag = entry.id;
        Cover(coverage, frame);
        AddOrRepeat(stream, coverage, frame);
    }
}

// Every stream has a gap behind what its indexes name. One of which they name nothing is looked for
// from the first chunk on, unless its header says that it is empty.
void AVIIndex::OpenLastGaps()
{
    uint64_t named = 0;
    for (const Coverage& coverage : fCoverage)
        named = std::max(named, coverage.end);
    for (size_t i = 0; i < fCoverage.size(); i++) {
        const AVIStream& stream = fStructure.streams[i];
        Coverage& coverage = fCoverage[i];
        const bool empty = coverage.end == 0 && !coverage.lost && LengthOf(stream) == 0;
        const uint64_t begin = empty ? named : coverage.end;
        coverage.gaps.push_back({stream.frames.Count(), begin, kBeyondAnyFile});
    }
}

void AVIIndex::WalkGaps()
{
    const size_t streams = std::min(fStructure.streams.size(), kMostNumberedStreams);
    uint64_t begin = kBeyondAnyFile;
    for (size_t i = 0; i < streams; i++)
        if (fStructure.streams[i].type != 0)
            begin = std::min(begin, fCoverage[i].gaps.front().begin);
    AVIWalk walk(fStructure, fSource, NamedBehind(begin));
    walk.Run(begin);
    for (size_t i = 0; i < fCoverage.size(); i++) {
        AVIStream& stream = fStructure.streams[i];
        const uint64_t found = FillGaps(stream, fCoverage[i], walk.Found(i));
        stream.walked = found;
        if (stream.IsAudio() || stream.type == 0) continue;
        stream.missing = fCoverage[i].promised - std::min(fCoverage[i].promised, found);
        // Only the header can tell what is behind a head that cannot be read.
        if (!walk.IsCutShort()) continue;
        const uint64_t length = LengthOf(stream);
        const uint64_t count = stream.frames.Count();
        const uint64_t behind = length > count ? length - count : length == 0;
        stream.missing = std::max(stream.missing, behind);
    }
}

// Indexes and frames, as AVIWalk wants them.
std::vector<FrameEntry> AVIIndex::NamedBehind(uint64_t begin) const
{
    std::vector<FrameEntry> named;
    for (const auto& [offset, chunk] : fByOffset)
        if (offset > begin && IsIndexId(chunk->id)) named.push_back({offset, chunk->length});
    for (const AVIStream& stream : fStructure.streams)
        for (const FrameEntry& frame : stream.frames)
            if (frame.offset > begin) named.push_back(frame);
    return named;
}

// How many frames came in between.
uint64_t AVIIndex::FillGaps(AVIStream& stream, Coverage& coverage,
                            const std::vector<FrameEntry>& found)
{
    if (found.empty()) return 0;
    const FrameTable indexed = std::exchange(stream.frames, {});
    size_t at = 0;
    for (const Gap& gap : coverage.gaps) {
        for (; at < gap.at; at++)
            stream.frames.Add(indexed[at]);
        auto next = std::ranges::lower_bound(found, gap.begin, {}, &FrameEntry::offset);
        for (; next != found.end() && next->offset < gap.end; ++next)
            AddOrRepeat(stream, coverage, *next);
    }
    return stream.frames.Count() - indexed.Count();
}

}  // namespace kelvane
