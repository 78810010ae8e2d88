#pragma once

#include <cstdint>

#include "base/status.h"
#include "media/avi/structure/avi_limits.h"
#include "media/avi/structure/avi_structure.h"
#include "media/avi/writer/avi_appender.h"

namespace kelvane {

// The indexes of a destination. OpenDML: every so many chunks of a stream a standard index follows
// them, and the super index in the header points to it; the Matrox dialect reserves a large one
// ahead of its frames. "idx1" is made at the end.
class AVIIndexWriter {
public:
    AVIIndexWriter(AVIStructure& structure, AVIAppender& appender, const AVILimits& limits)
        : fStructure(structure), fAppender(appender), fLimits(limits)
    {
    }

    // Around the writing of every chunk of `size` bytes. kError without a reason: the super index
    // is full (after days of tape).
    Status BeforeChunk(AVIStream& stream, size_t size);
    Status AfterChunk(AVIStream& stream);
    // Standard indexes that the super indexes name.
    uint32_t Count() const { return fCount; }
    // The indexes of the chunks since; the first failure.
    Status FinishStreams();
    // "idx1" of all streams' chunks, in the order of their places; nothing without chunks. What
    // lies beyond its 32 bits is left out.
    Status WriteOldIndex();

private:
    bool Has(uint32_t flag) const { return fStructure.flags & flag; }
    uint32_t RoomInSuperIndex(const AVIStream& stream) const;
    uint32_t ChunksPerIndex(const AVIStream& stream) const;
    Status WriteStandardIndex(AVIStream& stream);
    Status StartMatroxIndex(AVIStream& stream);
    void AddToMatroxIndex(AVIStream& stream);
    void AddToSuperIndex(AVIStream& stream, const Chunk& index, uint64_t duration);
    uint64_t DurationOf(const AVIStream& stream) const;
    Bytes MergedOldIndex() const;

    AVIStructure& fStructure;
    AVIAppender& fAppender;
    const AVILimits& fLimits;
    uint32_t fCount = 0;
    Chunk* fMatroxIndex = nullptr;  // the one that is being filled
};

}  // namespace kelvane
