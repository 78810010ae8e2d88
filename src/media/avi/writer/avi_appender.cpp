#include "media/avi/writer/avi_appender.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include "base/status.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr std::array<uint8_t, 512> kZeros{};
constexpr size_t kLargestBody = std::numeric_limits<int32_t>::max();

std::array<uint8_t, 8> ChunkHead(uint32_t id, uint32_t size)
{
    std::array<uint8_t, 8> head;
    StoreBytes(std::span(head).first(4), id, ByteOrder::kBig);
    StoreBytes(std::span(head).last(4), size, ByteOrder::kLittle);
    return head;
}

}  // namespace

Status AVIAppender::Write(std::span<const FilePart> parts)
{
    uint64_t bytes = 0;
    for (const FilePart& part : parts)
        bytes += part.bytes;
    if (FileWriteAt(fFile, fEnd, parts) != static_cast<int64_t>(bytes)) {
        fTail = true;
        return Status::System();
    }
    fEnd += bytes;
    return kOK;
}

Status AVIAppender::Reserve(uint32_t bytes)
{
    const Bytes zeros(bytes);
    const FilePart parts[] = {{zeros.data(), bytes}};
    return Write(parts);
}

Status AVIAppender::Put(uint32_t id, std::span<const uint8_t> body, Chunk* parent, Chunk*& chunk,
                        uint32_t padding)
{
    if (padding > kZeros.size() || body.size() > kLargestBody) return kError;
    const auto size = static_cast<uint32_t>(body.size());
    const auto head = ChunkHead(id, size);
    const auto junk = ChunkHead("JUNK"_4cc, padding);
    // The padding is made of the first bytes of the body: any will do, and these are at hand.
    const void* filling = padding <= size ? body.data() : kZeros.data();
    const FilePart parts[] = {{head.data(), 8},
                              {body.data(), size},
                              {kZeros.data(), size & 1},
                              {junk.data(), padding > 0 ? 8u : 0u},
                              {filling, padding}};
    const uint64_t offset = fEnd + 8;
    const Status status = Write(parts);
    if (status != kOK) return status;
    const uint32_t length = size + (size & 1);
    chunk = fStructure.tree.NoteChunk({.id = id, .length = length, .parent = parent}, offset);
    if (padding > 0)
        fStructure.tree.NoteChunk({.id = "JUNK"_4cc, .length = padding, .parent = parent},
                                  offset + length + 8);
    return kOK;
}

Status AVIAppender::PutSegment()
{
    uint8_t heads[24] = {};
    const uint32_t codes[] = {"RIFF"_4cc, 0, "AVIX"_4cc, "LIST"_4cc, 0, "movi"_4cc};
    for (size_t i = 0; i < std::size(codes); i++)
        StoreBytes(std::span(heads).subspan(4 * i, 4), codes[i], ByteOrder::kBig);
    const uint64_t offset = fEnd + 8;
    const FilePart parts[] = {{heads, sizeof heads}};
    const Status status = Write(parts);
    if (status != kOK) return status;
    fRiffStart = offset - 8;
    ChunkTree& tree = fStructure.tree;
    Chunk* riff = tree.NoteChunk({.id = codes[0], .name = codes[2], .length = 4}, offset);
    Chunk* media = tree.NoteChunk({.id = codes[3], .name = codes[5], .length = 4, .parent = riff},
                                  offset + 12);
    riff->dirty_header = media->dirty_header = true;
    fStructure.segments.push_back({riff, media, 0});
    return kOK;
}

Status AVIAppender::PutHeaders()
{
    Chunk* const growing[] = {fStructure.riff, fStructure.media};
    uint32_t planned[2];
    for (size_t i = 0; i < 2; i++)
        planned[i] = std::exchange(growing[i]->length, 0);
    const Status status = fStructure.tree.Flush(fFile, fStructure.media);
    for (size_t i = 0; i < 2; i++) {
        growing[i]->length = planned[i];
        growing[i]->dirty_header = true;
    }
    return status;
}

Status AVIAppender::CutTail()
{
    if (!fTail) return kOK;
    fTail = false;
    // What is no regular file keeps nothing that could be cut.
    return FileTruncate(fFile, fEnd) || errno == EINVAL ? kOK : Status::System();
}

}  // namespace kelvane
