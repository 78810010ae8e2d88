#pragma once

#include <cstdint>
#include <vector>

#include "media/avi/structure/avi_structure.h"
#include "media/riff/chunk_source.h"

namespace kelvane {

// 0 to 99 by the first two characters of a chunk's id, or -1.
int StreamNumber(uint32_t id);
// "ix00" and "00ix", of any two digits.
bool IsIndexId(uint32_t id);

// Finds frames without an index: goes through the "movi" lists from chunk to chunk, reading nothing
// but their heads, and takes the chunks whose ids fit a stream. It ends with the file, at a chunk
// that reaches over the end of its list, or after ten million chunks.
class AVIWalk {
public:
    // `named`: chunks that an index names already, by where their data is. They are passed over
    // unread.
    AVIWalk(const AVIStructure& structure, ChunkSource& source, std::vector<FrameEntry> named);

    // From the head of a chunk on, or from the first one behind `from`.
    void Run(uint64_t from);
    // In the order of their places; empty ones too.
    const std::vector<FrameEntry>& Found(size_t stream) const { return fFound[stream]; }
    // True when the system could not read some head, so that nobody knows what follows.
    bool IsCutShort() const { return fCutShort; }

private:
    uint64_t Step(uint64_t at, uint64_t end);
    uint64_t EndOfNamed(uint64_t at);
    void Take(uint32_t id, const FrameEntry& chunk);

    static constexpr uint32_t kMostChunks = 10'000'000;

    const AVIStructure& fStructure;
    ChunkSource& fSource;
    std::vector<FrameEntry> fNamed;  // by offset
    size_t fNextNamed = 0;
    std::vector<std::vector<FrameEntry>> fFound;  // by stream
    uint32_t fChunksLeft = kMostChunks;
    bool fCutShort = false;
};

}  // namespace kelvane
