#include "media/riff/chunk_tree.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/four_cc.h"
#include "base/status.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint64_t kHeadSize = 8;       // id and size
constexpr uint64_t kListHeadSize = 12;  // and name

int32_t DepthUnder(const Chunk* parent)
{
    int32_t depth = 0;
    for (; parent; parent = parent->parent)
        depth++;
    return depth;
}

}  // namespace

ChunkTree::ChunkTree(ByteOrder order) : fOrder(order)
{
    Chunk& root = fChunks.emplace_back();
    root.id = root.name = "FILE"_4cc;
    fList.push_back(&root);
}

bool ChunkTree::IsListId(uint32_t id) const
{
    return id == "LIST"_4cc || id == "RIFF"_4cc || (fOrder == ByteOrder::kBig && id == "FORM"_4cc);
}

Chunk* ChunkTree::NewChunk(ChunkPlan plan)
{
    const bool relayout = plan.relayout;
    Chunk* chunk = Place(plan);
    chunk->dirty_header = true;
    chunk->dirty_data = chunk->data != nullptr;
    if (relayout) Layout();
    return chunk;
}

Chunk* ChunkTree::NoteChunk(ChunkPlan plan, uint64_t offset)
{
    Chunk* chunk = Place(plan);
    chunk->offset = offset;
    return chunk;
}

Chunk* ChunkTree::Place(ChunkPlan& plan)
{
    size_t place = fList.size();
    if (plan.parent) {
        place = PlaceUnder(plan.parent, plan.anchor);
    } else if (plan.anchor) {
        place = PlaceAfter(plan.anchor);
    }
    Chunk& chunk = fChunks.emplace_back();
    chunk.id = plan.id;
    chunk.name = plan.name;
    chunk.length = plan.length;
    chunk.parent = plan.parent ? plan.parent : plan.anchor ? plan.anchor->parent : Root();
    chunk.depth = DepthUnder(chunk.parent);
    chunk.datatype = plan.datatype;
    chunk.data = std::move(plan.data);
    fList.insert(fList.begin() + static_cast<std::ptrdiff_t>(place), &chunk);
    return &chunk;
}

// Searched from the end: anchors are the chunks made last.
size_t ChunkTree::PlaceAfter(const Chunk* anchor) const
{
    const auto found = std::find(fList.rbegin(), fList.rend(), anchor);
    return static_cast<size_t>(fList.rend() - found);
}

size_t ChunkTree::PlaceUnder(const Chunk* parent, const Chunk* anchor) const
{
    const size_t end = fList.size();
    if (!anchor && EndsInside(parent)) return end;
    size_t after_parent = end;
    const Chunk* child = nullptr;
    for (size_t i = 0; i < end; i++) {
        const Chunk* chunk = fList[i];
        if (chunk == anchor || (child && chunk->depth < child->depth)) return i;
        if (chunk->parent == parent) child = chunk;
        if (chunk == parent) after_parent = i + 1;
    }
    return child ? end : after_parent;
}

// True when the last chunk is the parent or below it: its next child then goes to the end.
bool ChunkTree::EndsInside(const Chunk* parent) const
{
    const Chunk* chunk = fList.back();
    while (chunk && chunk != parent)
        chunk = chunk->parent;
    return chunk != nullptr;
}

void ChunkTree::Layout()
{
    size_t at = 1;
    Root()->length = static_cast<uint32_t>(LayoutChildren(*Root(), kHeadSize, at) + 4);
}

// Lays out the children of `parent`, whose list entries begin at `at`, from file offset `start` on
// (of the first child's body) and leaves `at` behind them. Returns their bytes, heads included.
uint64_t ChunkTree::LayoutChildren(Chunk& parent, uint64_t start, size_t& at)
{
    uint64_t position = start;
    while (at < fList.size() && fList[at]->parent == &parent) {
        Chunk& chunk = *fList[at++];
        if (chunk.offset != position) {
            chunk.offset = position;
            chunk.dirty_header = true;
        }
        if (IsListId(chunk.id) && !chunk.opaque) {
            const uint64_t total = LayoutChildren(chunk, position + kListHeadSize, at);
            const auto length = static_cast<uint32_t>(total + 4);
            if (chunk.length != length) {
                chunk.length = length;
                chunk.dirty_header = true;
            }
            position += kListHeadSize + total;
        } else {
            position += kHeadSize + chunk.length;
            while (at < fList.size() && fList[at]->depth > chunk.depth)
                at++;
        }
    }
    return position - start;
}

Status ChunkTree::Flush(FileHandle file, const Chunk* last)
{
    Status status = kOK;
    for (Chunk* chunk : fList) {
        if (chunk != Root() && (chunk->dirty_header || chunk->dirty_data))
            status = FirstFailure(status, FlushTwice(file, *chunk));
        if (chunk == last) break;
    }
    return status;
}

// A header that is not right can cost all that the file holds: worth a second try.
Status ChunkTree::FlushTwice(FileHandle file, Chunk& chunk) const
{
    return FlushChunk(file, chunk) == kOK ? kOK : FlushChunk(file, chunk);
}

Status ChunkTree::FlushChunk(FileHandle file, Chunk& chunk) const
{
    Bytes head;
    ByteWriter writer(head, fOrder);
    writer.PutCode(chunk.id);
    writer.Put32(chunk.length);
    if (chunk.name != 0) writer.PutCode(chunk.name);
    FilePart parts[] = {{head.data(), static_cast<uint32_t>(head.size())}, {nullptr, 0}};
    if (chunk.dirty_data && chunk.data)
        parts[1] = {chunk.data->data(),
                    static_cast<uint32_t>(std::min<size_t>(chunk.length, chunk.data->size()))};
    const int64_t bytes = int64_t{parts[0].bytes} + parts[1].bytes;
    if (FileWriteAt(file, chunk.offset - kHeadSize, parts) != bytes) return Status::System();
    chunk.dirty_header = chunk.dirty_data = false;
    return kOK;
}

}  // namespace kelvane
