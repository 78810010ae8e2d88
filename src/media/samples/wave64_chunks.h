#pragma once

#include "media/riff/chunk_tree.h"
#include "media/samples/sample_chunks.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Sony Wave64: a WAVE file whose chunks have GUIDs for ids, sizes of 64 bits that count their
// heads, and lie at multiples of eight bytes.

// By the first bytes of the file.
bool IsWave64(FileHandle file);
bool IsWave64(const char* path);

// Notes format and samples under the names that a WAVE file has for them.
SampleChunks ReadWave64Chunks(FileHandle file, ChunkTree& tree);

}  // namespace kelvane
