#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "media/avi/reader/avi_walk.h"
#include "media/avi/structure/avi_structure.h"
#include "media/riff/chunk_source.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Makes the frame tables of a source's streams: from the standard indexes that a super index points
// to ("indx", OpenDML) or else from "idx1", and where these tell nothing of a stretch of "movi" by
// a walk of it. Time and memory are in proportion to the indexes and chunks that are really in the
// file. Used once.
class AVIIndex {
public:
    AVIIndex(AVIStructure& structure, FileHandle file);

    // Loads the standard indexes, as chunks under "movi" unless the parser entered them already,
    // and fills the tables. Sets kAVICanopus in the structure's flags when "idx1" counts from
    // "movi". kCorrupted when frames are held for more than 24 hours.
    Status BuildTables();
    // What the system said where something could not be read; kOK otherwise.
    Status Trouble() const { return fSource.Trouble(); }

private:
    // A stretch of the file of which no index tells.
    struct Gap {
        size_t at;            // in the frame table, where its frames belong
        uint64_t begin, end;  // file positions
    };
    // What the indexes tell of a stream.
    struct Coverage {
        uint64_t end = 0;       // behind the chunk named that lies last in the file; 0 for none
        bool lost = false;      // a standard index could not be had, and none came since
        uint64_t promised = 0;  // frames that lost ones were said to name
        uint32_t waiting = 0;   // empty entries before the first frame
        uint64_t held = 0;      // frames that have no data of their own
        std::vector<Gap> gaps;
    };

    uint64_t LengthOf(const AVIStream& stream) const;
    void StartTable(AVIStream& stream);
    void LoadStandardIndexes(const AVIStream& stream);
    const Chunk* StandardIndexAt(uint64_t offset) const;
    void AddStandardIndexes(AVIStream& stream, Coverage& coverage);
    void AddEntries(const Chunk& index, size_t count, AVIStream& stream, Coverage& coverage);
    uint64_t OldIndexCorrection();
    bool OldIndexFits(uint64_t correction);
    void AddOldIndex();
    void AddFrame(AVIStream& stream, FrameEntry entry);
    void Hold(AVIStream& stream, Coverage& coverage, const FrameEntry& entry);
    void AddOrRepeat(AVIStream& stream, Coverage& coverage, const FrameEntry& entry);
    bool HoldsForever() const;
    void Cover(Coverage& coverage, const FrameEntry& named) const;
    void OpenLastGaps();
    void WalkGaps();
    std::vector<FrameEntry> NamedBehind(uint64_t begin) const;
    uint64_t FillGaps(AVIStream& stream, Coverage& coverage, const std::vector<FrameEntry>& found);

    AVIStructure& fStructure;
    ChunkSource fSource;
    std::unordered_map<uint64_t, const Chunk*> fByOffset;  // chunks with a body; the first of each
    std::vector<Coverage> fCoverage;                       // by stream
    size_t fLoaded = 0;                                    // standard indexes
    Chunk* fLastLoaded = nullptr;                          // standard index entered last
    uint64_t fEntriesLeft = 0;  // of standard indexes, as many as the file has room for: two super
                                // index entries can name the same one
};

}  // namespace kelvane
