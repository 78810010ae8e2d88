#pragma once

#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/field_table.h"
#include "format/bitmap_header.h"
#include "media/riff/chunk_tree.h"

namespace kelvane {

// The fixed headers of AVI files (Microsoft's "AVI RIFF File Reference", the OpenDML AVI extensions
// 1.02 and the DV data in AVI files). All little-endian. "strf" is kBitmapInfo in a "vids" stream,
// kWaveFormat in an "auds" stream.

// "avih". The last four words are reserved in the public description; one dialect uses them.
inline constexpr auto kMainHeader = HeaderFields<56>({
    {"dwMicroSecPerFrame", 0, 4},
    {"dwMaxBytesPerSec", 4, 4},
    {"dwPaddingGranularity", 8, 4},
    {"dwFlags", 12, 4},
    {"dwTotalFrames", 16, 4},
    {"dwInitialFrames", 20, 4},
    {"dwStreams", 24, 4},
    {"dwSuggestedBufferSize", 28, 4},
    {"dwWidth", 32, 4},
    {"dwHeight", 36, 4},
    {"Scale", 40, 4},
    {"Rate", 44, 4},
    {"Start", 48, 4},
    {"Length", 52, 4},
});

// dwFlags of "avih".
inline constexpr uint32_t kHasIndex = 0x10;
inline constexpr uint32_t kIsInterleaved = 0x100;
inline constexpr uint32_t kTrustChunkType = 0x800;

// "strh".
inline constexpr auto kStreamHeader = HeaderFields<56>({
    {"fccType", 0, 4, true},
    {"fccHandler", 4, 4, true},
    {"dwFlags", 8, 4},
    {"wPriority", 12, 2},
    {"wLanguage", 14, 2},
    {"dwInitialFrames", 16, 4},
    {"dwScale", 20, 4},
    {"dwRate", 24, 4},
    {"dwStart", 28, 4},
    {"dwLength", 32, 4},
    {"dwSuggestedBufferSize", 36, 4},
    {"dwQuality", 40, 4},
    {"dwSampleSize", 44, 4},
    {"left", 48, 2},  // rcFrame
    {"top", 50, 2},
    {"right", 52, 2},
    {"bottom", 54, 2},
});

// "strf" of an "iavs" stream: DVINFO.
inline constexpr auto kDVInfo = HeaderFields<32>({
    {"dwDVAAuxSrc", 0, 4},
    {"dwDVAAuxCtl", 4, 4},
    {"dwDVAAuxSrc1", 8, 4},
    {"dwDVAAuxCtl1", 12, 4},
    {"dwDVVAuxSrc", 16, 4},
    {"dwDVVAuxCtl", 20, 4},
    {"dwDVReserved[0]", 24, 4},
    {"dwDVReserved[1]", 28, 4},
});

// "dmlh"; zeros follow.
inline constexpr auto kExtendedHeader = HeaderFields<4>({{"dwTotalFrames", 0, 4}});
inline constexpr uint32_t kExtendedHeaderSize = 248;

// Head of "indx", and its entries.
inline constexpr auto kSuperIndex = HeaderFields<24>({
    {"wLongsPerEntry", 0, 2},
    {"bIndexSubType", 2, 1},
    {"bIndexType", 3, 1},
    {"nEntriesInUse", 4, 4},
    {"dwChunkId", 8, 4, true},
    {"dwReserved[0]", 12, 4},
    {"dwReserved[1]", 16, 4},
    {"dwReserved[2]", 20, 4},
});
inline constexpr auto kSuperIndexEntry = HeaderFields<16>({
    {"qwOffset", 0, 8},  // of the head of a standard index
    {"dwSize", 8, 4},    // head included
    {"dwDuration", 12, 4},
});

// Head of "ix00" and its like, and its entries.
inline constexpr auto kStandardIndex = HeaderFields<24>({
    {"wLongsPerEntry", 0, 2},
    {"bIndexSubType", 2, 1},
    {"bIndexType", 3, 1},
    {"nEntriesInUse", 4, 4},
    {"dwChunkId", 8, 4, true},
    {"qwBaseOffset", 12, 8},
    {"dwReserved", 20, 4},
});
inline constexpr auto kStandardIndexEntry = HeaderFields<8>({
    {"dwOffset", 0, 4},  // of the data, from qwBaseOffset
    {"dwSize", 4, 4},    // the top bit is set when the frame is no key frame
});
inline constexpr uint8_t kIndexOfChunks = 1;

// Entry of "idx1".
inline constexpr auto kOldIndexEntry = HeaderFields<16>({
    {"dwChunkId", 0, 4, true},
    {"dwType", 4, 4},    // flags
    {"dwOffset", 8, 4},  // of the head; from the file's start or from the name "movi"
    {"dwSize", 12, 4},
});
inline constexpr uint32_t kKeyFrame = 0x10;

// "vprp"; as many field descriptions as the last word counts follow.
inline constexpr auto kVideoProperties = HeaderFields<36>({
    {"VideoFormatToken", 0, 4},
    {"VideoStandard", 4, 4},
    {"dwVerticalRefreshRate", 8, 4},
    {"dwHTotalInT", 12, 4},
    {"dwVTotalInLines", 16, 4},
    {"dwFrameAspectRatio", 20, 4},
    {"dwFrameWidthInPixels", 24, 4},
    {"dwFrameHeightInLines", 28, 4},
    {"nbFieldPerFrame", 32, 4},
});
inline constexpr auto kVideoField = HeaderFields<32>({
    {"CompressedBMHeight", 0, 4},
    {"CompressedBMWidth", 4, 4},
    {"ValidBMHeight", 8, 4},
    {"ValidBMWidth", 12, 4},
    {"ValidBMXOffset", 16, 4},
    {"ValidBMYOffset", 20, 4},
    {"VideoXOffsetInT", 24, 4},
    {"VideoYValidStartLine", 28, 4},
});

// The body of a chunk as far as it is in memory.
inline std::span<const uint8_t> BodyOf(const Chunk* chunk)
{
    return chunk && chunk->data ? std::span<const uint8_t>(*chunk->data)
                                : std::span<const uint8_t>();
}
// A field of a chunk; 0 when it is not in memory.
inline uint64_t Get(const Chunk* chunk, const HeaderField& field)
{
    return GetField(BodyOf(chunk), field, ByteOrder::kLittle);
}
inline uint32_t Get32(const Chunk* chunk, const HeaderField& field)
{
    return static_cast<uint32_t>(Get(chunk, field));
}
// The field of entry `index` of an array that begins at `start`.
inline uint64_t GetEntry(const Chunk& chunk, size_t start, size_t index, size_t entry_size,
                         const HeaderField& field)
{
    const size_t at = start + index * entry_size;
    if (!chunk.data || at > chunk.data->size()) return 0;
    return GetField(std::span(*chunk.data).subspan(at), field, ByteOrder::kLittle);
}
// Changes a field in memory, when the body has it; the value's upper bits are cut off.
inline void SetInMemory(Chunk& chunk, const HeaderField& field, uint64_t value)
{
    if (chunk.data) static_cast<void>(SetField(*chunk.data, field, value, ByteOrder::kLittle));
}
// And marks the body to be written.
inline void Set(Chunk& chunk, const HeaderField& field, uint64_t value)
{
    SetInMemory(chunk, field, value);
    chunk.dirty_data = true;
}

inline void SetEntry(Chunk& chunk, size_t start, size_t index, size_t entry_size,
                     const HeaderField& field, uint64_t value)
{
    const size_t at = start + index * entry_size;
    if (!chunk.data || at > chunk.data->size()) return;
    static_cast<void>(
        SetField(std::span(*chunk.data).subspan(at), field, value, ByteOrder::kLittle));
    chunk.dirty_data = true;
}

}  // namespace kelvane
