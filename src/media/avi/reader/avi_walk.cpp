#include "media/avi/reader/avi_walk.h"

#include <algorithm>

namespace kelvane {

namespace {

constexpr uint64_t kHeadSize = 8;

// The letters behind the stream's number. "__" is what DV programs put into Type 1 files.
bool IsMediaId(const AVIStream& stream, uint32_t id)
{
    const auto is = [&](uint32_t id_of_0) { return (id & 0xFFFF) == (id_of_0 & 0xFFFF); };
    if (stream.IsAudio()) return is("00wb"_4cc);
    if (!stream.IsVideo() && !stream.IsInterleaved()) return false;
    return is("00db"_4cc) || is("00dc"_4cc) || is("00iv"_4cc) || is("00__"_4cc);
}

// Lists that bundle the chunks of a moment; and further segments, behind a "movi" that never got
// its size.
bool HoldsMedia(uint32_t name)
{
    return name == "rec "_4cc || name == "REC "_4cc || name == "AVIX"_4cc || name == "movi"_4cc;
}

}  // namespace

int StreamNumber(uint32_t id)
{
    const uint32_t tens = (id >> 24) - '0', units = (id >> 16 & 0xFF) - '0';
    return tens < 10 && units < 10 ? static_cast<int>(tens * 10 + units) : -1;
}

bool IsIndexId(uint32_t id)
{
    const uint32_t first = id >> 16, last = id & 0xFFFF, ix = "ix00"_4cc >> 16;
    return (first == ix && StreamNumber(last << 16) >= 0) || (last == ix && StreamNumber(id) >= 0);
}

AVIWalk::AVIWalk(const AVIStructure& structure, ChunkSource& source, std::vector<FrameEntry> named)
    : fStructure(structure),
      fSource(source),
      fNamed(std::move(named)),
      fFound(structure.streams.size())
{
    // Of those in one place the longest first: an index may place held frames anywhere.
    std::ranges::sort(fNamed, [](const FrameEntry& a, const FrameEntry& b) {
        return a.offset != b.offset ? a.offset < b.offset : a.size > b.size;
    });
}

void AVIWalk::Run(uint64_t from)
{
    for (const MediaList& list : fStructure.media_lists) {
        from = std::max(from, list.begin);
        const uint64_t end = std::min(list.end, fSource.FileEnd());
        while (from < end && fChunksLeft > 0 && !fCutShort)
            from = Step(from, end);
    }
}

// Entered at a head; where the next one is, or `end` when there is none.
uint64_t AVIWalk::Step(uint64_t at, uint64_t end)
{
    if (const uint64_t behind = EndOfNamed(at)) return behind;
    uint32_t id = 0, size = 0, name = 0;
    fSource.Seek(at);
    if (end - at < kHeadSize || !fSource.ReadCode(id) || !fSource.Read32(size)) {
        fCutShort = fSource.Failure() != kOK;
        return end;
    }
    fChunksLeft--;
    const uint64_t data = at + kHeadSize;
    // Entered by stepping over their heads.
    if ((id == "LIST"_4cc || id == "RIFF"_4cc) && fSource.ReadCode(name) && HoldsMedia(name))
        return data + 4;
    if (size > end - data) return end;
    Take(id, {data, size});
    return data + size + (size & 1);
}

// Behind a chunk that an index names, 0 for another.
uint64_t AVIWalk::EndOfNamed(uint64_t at)
{
    const uint64_t data = at + kHeadSize;
    while (fNextNamed < fNamed.size() && fNamed[fNextNamed].offset < data)
        fNextNamed++;
    return fNextNamed < fNamed.size() && fNamed[fNextNamed].offset == data
               ? fNamed[fNextNamed].End()
               : 0;
}

void AVIWalk::Take(uint32_t id, const FrameEntry& chunk)
{
    const int number = StreamNumber(id);
    if (number < 0 || static_cast<size_t>(number) >= fFound.size()) return;
    const auto stream = static_cast<size_t>(number);
    if (IsMediaId(fStructure.streams[stream], id)) fFound[stream].push_back(chunk);
}

}  // namespace kelvane
