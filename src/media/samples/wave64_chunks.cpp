#include "media/samples/wave64_chunks.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/four_cc.h"
#include "base/saturating.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr size_t kGUID = 16, kHead = kGUID + 8;  // bytes
constexpr size_t kFileHead = kHead + kGUID;
constexpr uint64_t kAlignment = 8;
constexpr int kMostChunks = 1000;
// Of a file that went through a pipe.
constexpr uint64_t kOpenSize = uint64_t{1} << 62;

using GUID = std::array<uint8_t, kGUID>;
constexpr GUID kRIFF = {'r',  'i',  'f',  'f',  0x2E, 0x91, 0xCF, 0x11,
                        0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00};

// All others are a four-character code and this.
constexpr GUID Named(const char (&code)[5])
{
    GUID guid = {0,    0,    0,    0,    0xF3, 0xAC, 0xD3, 0x11,
                 0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
    std::copy_n(code, 4, guid.begin());
    return guid;
}

bool IsHead(std::span<const uint8_t> head)
{
    return std::ranges::equal(head.first(kGUID), kRIFF) &&
           std::ranges::equal(head.last(kGUID), Named("wave"));
}

// A size that its head does not fit into counts as the head alone.
uint64_t BodyBytes(std::span<const uint8_t, kHead> head)
{
    const uint64_t size = LoadBytes(head.last<8>(), ByteOrder::kLittle);
    return size > kHead ? size - kHead : 0;
}

uint32_t Capped(uint64_t bytes)
{
    return static_cast<uint32_t>(std::min<uint64_t>(bytes, std::numeric_limits<uint32_t>::max()));
}

}  // namespace

bool IsWave64(FileHandle file)
{
    uint8_t head[kFileHead];
    return FileReadWhole(file, 0, head) == kOK && IsHead(head);
}

bool IsWave64(const char* path)
{
    uint8_t head[kFileHead];
    return FileReadHead(path, head, kFileHead) == int64_t{kFileHead} && IsHead(head);
}

SampleChunks ReadWave64Chunks(FileHandle file, ChunkTree& tree)
{
    const auto note = [&tree](ChunkPlan plan, uint64_t offset) {
        plan.relayout = false;
        return tree.NoteChunk(std::move(plan), offset);
    };
    Chunk* form = note({.id = "RIFF"_4cc, .name = "WAVE"_4cc, .parent = tree.Root()}, kHead);
    SampleChunks chunks = {form, kOK};
    ChunkSource source(file, ByteOrder::kLittle);
    uint64_t at = kFileHead;
    for (int left = kMostChunks; left > 0 && !chunks.sound_bytes; left--) {
        std::array<uint8_t, kHead> head;
        const Status status = FileReadWhole(file, at, head);
        if (status == kUnread) chunks.trouble = {kError, status.SystemError()};
        if (status != kOK) break;
        const auto id = std::span(head).first<kGUID>();
        const uint64_t body = at + kHead, bytes = BodyBytes(head);
        if (std::ranges::equal(id, Named("fmt "))) {
            source.Seek(body);
            note({.id = "fmt "_4cc,
                  .length = Capped(bytes),
                  .parent = form,
                  .datatype = kDataWaveFormat,
                  .data = source.ReadBody(Capped(bytes))},
                 body);
            chunks.trouble = source.Trouble();
        } else if (std::ranges::equal(id, Named("data"))) {
            note({.id = "data"_4cc, .length = Capped(bytes), .parent = form}, body);
            chunks.sound_bytes = bytes == 0 || bytes > kOpenSize ? kToTheEnd : bytes;
        }
        at = SaturatingAdd(body, SaturatingAdd(bytes, kAlignment - 1)) / kAlignment * kAlignment;
    }
    return chunks;
}

}  // namespace kelvane
