#pragma once

#include <cstdint>

#include "base/status.h"
#include "media/avi/structure/avi_structure.h"
#include "media/riff/chunk_source.h"

namespace kelvane {

// Walks the chunks of an AVI file into an AVIStructure. Lenient: a truncated file yields what was
// found up to its end, and what makes no sense is passed over. "movi" is skipped, so a walk costs
// a few reads whatever the length of the film. Used once.
class AVIParser {
public:
    // `describe`: leave "movi" alone but for the first frame, and stop there.
    AVIParser(FileHandle file, bool describe, AVIStructure& found);

    // kOK, kNotThisClass, kCorrupted (a list of size 0 that holds no media), or kError with the
    // system's reason where not even the first list can be read.
    Status Run();
    // What the system said where something could not be read; kOK otherwise.
    Status Trouble() const { return fSource.Trouble(); }
    // The same of what stands before the media, where streams are named that nobody knows of then.
    Status HeaderTrouble() const { return fHeaderTrouble; }

private:
    void ParseList(Chunk* parent, bool load);
    uint64_t EndOfLongList(uint64_t start, uint32_t length);
    void ParseListBody(Chunk* list, uint64_t end, bool load);
    void ParseChunk(Chunk* parent, bool load);
    void ParseSegments();
    void CaptureFirstFrame();
    bool SkipToMedia();

    Chunk* Note(uint64_t offset, uint32_t id, uint32_t name, uint32_t length, Chunk* parent);
    void NoteList(Chunk* list);
    void NoteChunk(Chunk* chunk);
    void UseBody(Chunk* chunk);
    int32_t DataType(uint32_t id) const;
    void Stop(Status status = kOK);
    bool HeaderSeen() const { return fDescribe && fFound.header_list; }

    AVIStructure& fFound;
    ChunkSource fSource;
    bool fDescribe;
    uint32_t fStreamType = 0;  // of the "strh" read last
    bool fStopped = false;
    Status fStatus = kOK;
    Status fHeaderTrouble = kOK;
};

// True for the ids of standard indexes, "ix00" to "ix07" and "00ix" to "07ix".
bool IsStandardIndexId(uint32_t id);

}  // namespace kelvane
