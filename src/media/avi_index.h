#pragma once

#include <cstdint>
#include <unordered_map>

#include "base/file_handle.h"
#include "media/avi_structure.h"
#include "media/chunk_source.h"

namespace kelvane {

// The indexes of a source: makes the frame tables of its streams, from the standard indexes that
// a super index points to ("indx", OpenDML) or else from "idx1", and finds frames that a table does
// not reach. Time and memory are in proportion to the indexes that are really in the file.
class AVIIndex {
public:
    explicit AVIIndex(AVIStructure& structure) : fStructure(structure) {}

    // Loads the standard indexes, as chunks under "movi" unless the walk entered them already, and
    // fills the tables. Sets kAVICanopus in the structure's flags when "idx1" counts from "movi".
    void BuildTables(FileHandle file);
    // Looks a frame up in the index chunks themselves. False when it is in none.
    bool Search(size_t stream, uint32_t frame, FrameEntry& found) const;

private:
    void StartTable(AVIStream& stream);
    void LoadStandardIndexes(ChunkSource& source, const AVIStream& stream);
    void AddStandardIndexes(AVIStream& stream);
    uint64_t OldIndexCorrection();
    void AddOldIndex();
    void AddFrame(AVIStream& stream, const FrameEntry& entry);
    const Chunk* IndexAt(uint64_t offset) const;
    bool SearchSuperIndex(const AVIStream& stream, uint32_t frame, FrameEntry& found) const;
    bool SearchOldIndex(size_t stream, uint32_t frame, FrameEntry& found) const;

    AVIStructure& fStructure;
    std::unordered_map<uint64_t, const Chunk*> fByOffset;  // chunks with a body; the first of each
    size_t fLoaded = 0;                                    // standard indexes
    Chunk* fLastLoaded = nullptr;                          // standard index entered last
    uint64_t fFileEnd = 0;
    uint64_t fEntriesLeft = 0;  // of standard indexes, as many as the file has room for: two super
                                // index entries can name the same one
};

}  // namespace kelvane
