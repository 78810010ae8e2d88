#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "media/riff/chunk_source.h"
#include "media/riff/chunk_tree.h"

namespace kelvane {

// What the walker does with a chunk of a WAVE or AIFF file; others are noted and skipped.
struct SampleChunkRule {
    uint32_t id;
    int32_t datatype;
    bool load;  // its body goes into the tree
};

// One kind of file of chunks that holds samples.
struct SampleFileGrammar {
    ByteOrder order;
    std::span<const uint32_t> forms;  // ids of the list that is the file; the first is written
    std::span<const uint32_t> names;  // that the form may have
    uint32_t info;                    // name of the list of texts, all of which are loaded
    std::span<const SampleChunkRule> rules;
};

// What a walk over a file found.
struct SampleChunks {
    Chunk* form;     // null when the file does not begin with one
    Status trouble;  // what the system said first, where it could not read
    // Of samples, where the file tells it elsewhere than in the 32 bits of their chunk's head.
    std::optional<uint64_t> sound_bytes = std::nullopt;
};

// Notes all chunks of the file's form in the tree. Whatever the sizes claim, the walk stays inside
// the file and the tree within some memory.
SampleChunks ReadSampleChunks(FileHandle file, const SampleFileGrammar& grammar, ChunkTree& tree);

// True when the file begins with the form.
bool HasForm(const char* path, const SampleFileGrammar& grammar);

// Bytes of samples in `body` behind its own header of `header` bytes; kToTheEnd where that is left
// open: in a recording that was cut off before its sizes were written, and in one that went
// through a pipe, whose sizes are the largest that there are.
inline constexpr uint64_t kToTheEnd = std::numeric_limits<uint64_t>::max();
uint64_t SampleBytes(const Chunk& body, uint32_t header);

// What the body of a chunk of this id holds: a ChunkDataType.
int32_t DataTypeOf(const SampleFileGrammar& grammar, uint32_t id);

// The last chunk of this id, null when there is none.
Chunk* LastChunk(const ChunkTree& tree, uint32_t id);

}  // namespace kelvane
