#pragma once

#include <cstdint>
#include <vector>

#include "base/byte_cursor.h"
#include "platform/files/positioned_file.h"

namespace kelvane {

// DV frames in a file of which nothing else is known.
struct FoundFrames {
    bool pal = false;              // of all
    std::vector<uint64_t> places;  // rising
};

// Finds whole frames by their header blocks: where one ends the next is looked for, and where there
// is none, byte by byte. Gives up where the first 64 MB hold none, and at what cannot be read.
class DIFFrameSearch {
public:
    explicit DIFFrameSearch(const PositionedFile& file) : fFile(file) {}

    FoundFrames FindFrom(uint64_t from);

private:
    bool IsFrameAt(uint64_t place);
    bool FindNext(uint64_t& place);
    bool HasSequenceAt(uint64_t place, uint8_t number, bool& pal) const;

    const PositionedFile& fFile;
    FoundFrames fFound;
    Bytes fWindow;
    int fFalse = 0;  // places that looked like a frame and are none
};

}  // namespace kelvane
