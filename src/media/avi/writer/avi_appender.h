#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"
#include "media/avi/structure/avi_structure.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Puts chunks at the end of an AVI file that is being written, each in one system call, and enters
// them in the tree, clean. After a write that failed the end stays where it was.
class AVIAppender {
public:
    AVIAppender(AVIStructure& structure, FileHandle file) : fStructure(structure), fFile(file) {}

    // Reserves the headers: so many zeros from the start of the file on.
    Status Reserve(uint32_t bytes);
    // Appends a chunk to `parent`, padded to even length, and gives it. With `padding`, a "JUNK"
    // chunk whose body has that many bytes follows.
    Status Put(uint32_t id, std::span<const uint8_t> body, Chunk* parent, Chunk*& chunk,
               uint32_t padding = 0);
    // Appends a RIFF "AVIX" with an empty "movi" to the structure.
    Status PutSegment();
    // Writes what is in front of the media as it is known now. The sizes that grow are 0, "to the
    // end of the file": so the file can be read while it is written, and when it never gets its
    // end.
    Status PutHeaders();
    // Cuts off what a failed write left behind.
    Status CutTail();

    // File position of the next chunk's head.
    uint64_t End() const { return fEnd; }
    // Where the head of the last RIFF is.
    uint64_t RiffStart() const { return fRiffStart; }
    // The "movi" that chunks go to now.
    Chunk* Media() const
    {
        return fStructure.segments.empty() ? fStructure.media : fStructure.segments.back().media;
    }

private:
    Status Write(std::span<const struct FilePart> parts);

    AVIStructure& fStructure;
    FileHandle fFile;
    uint64_t fEnd = 0;
    uint64_t fRiffStart = 0;
    bool fTail = false;  // there may be bytes behind the end
};

}  // namespace kelvane
