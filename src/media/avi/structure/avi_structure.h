#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

#include "base/four_cc.h"
#include "media/avi/structure/avi_headers.h"
#include "media/riff/chunk_tree.h"

namespace kelvane {

// Options of a destination, and of a source what was found.
enum AVIFlag : uint32_t {
    kAVIType1 = 0x0001,  // one interleaved stream; else "vids" and "auds"
    kAVIPAL = 0x0002,
    kAVINTSC = 0x0004,
    kAVIOpenDML = 0x0008,    // "dmlh", "indx" and standard indexes
    kAVIOldIndex = 0x0100,   // write an "idx1", if the file stays in one RIFF
    kAVIReference = 0x0400,  // video goes to a ".000" file
    kAVIMatrox = 0x0800,
    kAVICanopus = 0x1000,   // of a source: "idx1" counts from "movi"
    kAVISegments = 0x2000,  // new RIFF segments at the size limits
};

// Added to the mode of a source: the chunks inside "movi" are entered in the tree as well.
inline constexpr uint32_t kAVIListMedia = 0x4000;

// Where a sum of a file's numbers lies that is no file position: no frame can be read there.
inline constexpr uint64_t kBeyondAnyFile = std::numeric_limits<int64_t>::max();

constexpr uint64_t SumOfOffsets(uint64_t a, uint64_t b)
{
    return a > kBeyondAnyFile || b > kBeyondAnyFile - a ? kBeyondAnyFile : a + b;
}

struct FrameEntry {
    uint64_t offset;  // of the data
    uint32_t size;

    // Of a stream of pictures: the one before stays.
    bool IsHeld() const { return size == 0; }
    // Behind the data and its padding; at most a little beyond kBeyondAnyFile.
    uint64_t End() const { return offset + size + (size & 1); }
};

// Where the frames of a stream are.
class FrameTable {
public:
    void Start(size_t capacity) { fEntries.reserve(capacity); }
    // Grows by a quarter: the tables of a long tape are large.
    void Add(FrameEntry entry)
    {
        if (fEntries.size() == fEntries.capacity())
            fEntries.reserve(fEntries.size() + fEntries.size() / 4 + 1);
        fEntries.push_back(entry);
    }
    size_t Count() const { return fEntries.size(); }
    const FrameEntry& operator[](size_t index) const { return fEntries[index]; }
    auto begin() const { return fEntries.begin(); }
    auto end() const { return fEntries.end(); }

private:
    std::vector<FrameEntry> fEntries;
};

// One stream, of a source or a destination. The chunks' bodies are in memory.
struct AVIStream {
    uint32_t type = 0;             // "vids"_4cc, "auds"_4cc, "iavs"_4cc, or 0
    Chunk* header = nullptr;       // "strh"
    Chunk* format = nullptr;       // "strf"
    Chunk* super_index = nullptr;  // "indx", or null
    int32_t largest_chunk = 0;     // of a destination; bytes
    int32_t chunks = 0;            // written
    int32_t chunks_in_first_riff = 0;
    uint64_t bytes = 0;  // written
    uint64_t bytes_in_first_riff = 0;
    int32_t indexed = 0;        // chunks that stand in a standard index
    int64_t position = 0;       // next frame to read
    int32_t largest_frame = 0;  // bytes: what a buffer for ReadFrame must hold
    FrameTable frames;
    uint64_t missing = 0;    // frames that the file promises behind those of the table
    uint64_t walked = 0;     // frames of the table that are in no index and were found by a walk
    uint32_t chunk_tag = 0;  // "00db"_4cc and the like

    bool IsVideo() const { return type == "vids"_4cc; }
    bool IsAudio() const { return type == "auds"_4cc; }
    bool IsInterleaved() const { return type == "iavs"_4cc; }
    // "fccHandler"; where that is 0, the code that a bitmap header has in its place.
    uint32_t Handler() const
    {
        const uint32_t handler = Get32(header, kStreamHeader["fccHandler"]);
        if (handler != 0 || !IsVideo()) return handler;
        const uint32_t compression = Get32(format, kBitmapInfo["biCompression"]);
        return compression >> 24 >= ' ' ? compression : 0;  // low numbers are kinds of bitmaps
    }
    // Frames a second without their fraction, 25 for PAL; 0 when the header does not tell.
    uint32_t WholeRate() const
    {
        const uint32_t scale = Get32(header, kStreamHeader["dwScale"]);
        return scale == 0 ? 0 : Get32(header, kStreamHeader["dwRate"]) / scale;
    }
    bool IsPAL() const { return WholeRate() == 25; }
};

// Where the chunks of a "movi" list are.
struct MediaList {
    uint64_t begin, end;  // of the first one's head; the end may lie beyond that of the file
};

// A RIFF "AVIX" behind the first RIFF.
struct AVISegment {
    Chunk* riff = nullptr;
    Chunk* media = nullptr;  // its "movi"
    uint64_t bytes = 0;      // of media, without chunk heads
};

// What a walk of a file found, or what is planned for one. The pointers are null for what is not
// there.
struct AVIStructure {
    ChunkTree tree{ByteOrder::kLittle};
    uint32_t flags = 0;  // AVIFlag
    Chunk* riff = nullptr;
    Chunk* header_list = nullptr;      // "hdrl"
    Chunk* info_list = nullptr;        // "INFO"
    Chunk* main_header = nullptr;      // "avih"
    Chunk* extended_list = nullptr;    // "odml"
    Chunk* extended_header = nullptr;  // "dmlh"
    Chunk* media = nullptr;            // "movi" of the first RIFF
    Chunk* old_index = nullptr;        // "idx1"
    Chunk* junk = nullptr;             // the first one
    std::deque<AVIStream> streams;
    std::vector<AVISegment> segments;
    std::vector<MediaList> media_lists;  // of a source: every "movi", in file order
    bool broken_off = false;  // a source whose RIFF or "movi" never got its size, or not all of it
    Bytes first_frame;        // captured when a file is only described
};

}  // namespace kelvane
