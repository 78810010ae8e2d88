#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// What the body of a chunk holds.
enum ChunkDataType : int32_t {
    kDataNone = 0,  // none or unknown
    kDataMainHeader = 1,
    kDataStreamHeader = 2,
    kDataDVFormat = 3,  // "strf" of an "iavs" stream
    kDataBitmapFormat = 4,
    kDataWaveFormat = 5,
    kDataSuperIndex = 6,
    kDataStandardIndex = 7,
    kDataExtendedHeader = 8,
    kDataOldIndex = 9,
    kDataVideoProperties = 10,
    kDataAIFFCommon = 50,
    kDataAIFFVersion = 51,
    kDataAIFFSound = 52,
};

// One chunk of a RIFF or IFF file. A list is a chunk whose body begins with its name and then
// holds chunks.
struct Chunk {
    uint32_t id = 0;
    uint32_t name = 0;        // list or form type, 0 for a leaf
    uint32_t length = 0;      // the size field: bytes of the body, of a list with its name
    uint64_t offset = 0;      // file position behind the size field
    Chunk* parent = nullptr;  // null only for the root
    bool dirty_header = false;
    bool dirty_data = false;
    bool opaque = false;  // a list whose content is not in the tree; its length stands as it is
    int32_t depth = 0;    // number of ancestors
    int32_t datatype = kDataNone;
    std::unique_ptr<Bytes> data;  // the body; null when it stays on disk
};

// What a new chunk is to be and where it goes; see ChunkTree::NewChunk.
struct ChunkPlan {
    uint32_t id = 0;
    uint32_t name = 0;
    uint32_t length = 0;
    Chunk* parent = nullptr;
    int32_t datatype = kDataNone;
    std::unique_ptr<Bytes> data = nullptr;
    Chunk* anchor = nullptr;
    bool relayout = true;
};

// The chunks of a RIFF (little-endian; AVI, WAVE) or IFF (big-endian; AIFF) file, kept as one flat
// list in file order with a root "FILE" in front: a parent comes before its children, and its
// descendants follow it directly. The result of parsing and the plan for writing alike. Media data
// never passes through a tree. Chunks stay where they are in memory for the life of the tree.
class ChunkTree {
public:
    // kLittle: RIFF, lists are "RIFF" and "LIST". kBig: IFF, "FORM" is one too.
    explicit ChunkTree(ByteOrder order);
    ChunkTree(const ChunkTree&) = delete;
    ChunkTree& operator=(const ChunkTree&) = delete;

    // Makes and places a chunk, all dirty, and lays the tree out anew if asked. It goes
    // - with an anchor and no parent: directly after the anchor, as its sibling (no list with
    //   children in the tree);
    // - with neither: to the end, at the top;
    // - with a parent: behind the parent's last child so far, but before the anchor, if one is
    //   given.
    // Placing costs time only when the place is not the end of the list.
    Chunk* NewChunk(ChunkPlan plan);
    // As NewChunk for what is in the file already: clean, and nothing moves. `offset` as in Chunk.
    Chunk* NoteChunk(ChunkPlan plan, uint64_t offset);

    // Gives every chunk its offset and every list that is not opaque its length, and marks the
    // headers that change. No padding is added: lengths in the tree are even.
    void Layout();
    // Writes the dirty headers and bodies to their offsets, of all chunks or of those up to `last`.
    // Goes on after a failed write, so that as much of the file as possible is right; the first
    // failure. What could not be written stays dirty.
    Status Flush(FileHandle file, const Chunk* last = nullptr);

    Chunk* Root() const { return fList.front(); }
    // Null past the end.
    Chunk* ChunkAt(size_t index) const { return index < fList.size() ? fList[index] : nullptr; }
    size_t CountChunks() const { return fList.size(); }
    ByteOrder Order() const { return fOrder; }
    // True for the ids of lists of this kind of file.
    bool IsListId(uint32_t id) const;

private:
    Chunk* Place(ChunkPlan& plan);
    size_t PlaceAfter(const Chunk* anchor) const;
    size_t PlaceUnder(const Chunk* parent, const Chunk* anchor) const;
    bool EndsInside(const Chunk* parent) const;
    uint64_t LayoutChildren(Chunk& parent, uint64_t start, size_t& at);
    Status FlushTwice(FileHandle file, Chunk& chunk) const;
    Status FlushChunk(FileHandle file, Chunk& chunk) const;

    ByteOrder fOrder;
    std::deque<Chunk> fChunks;  // owns; in the order of making
    std::vector<Chunk*> fList;  // in file order
};

}  // namespace kelvane
