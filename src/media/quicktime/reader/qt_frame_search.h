#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "platform/files/positioned_file.h"

namespace kelvane {

// DV frames in a file of which nothing else is known.
struct FoundFrames {
    bool pal = false;              // of all
    std::vector<uint64_t> places;  // rising
    Status status = kOK;           // kUnread: the first one was sought where nothing can be read
};

// Finds whole frames by their header blocks: where one ends the next is looked for, and where there
// is none, byte by byte. Gives up where the first 64 MB hold none. Behind the first one, what the
// system cannot read passes for a frame: whoever reads that one is told, and the film keeps its
// time.
class DIFFrameSearch {
public:
    explicit DIFFrameSearch(const PositionedFile& file) : fFile(file) {}

    FoundFrames FindFrom(uint64_t from);

private:
    enum class Sight { kNothing, kFrame, kUnread };

    bool FindNext(uint64_t& place);
    Sight SearchWindow(uint64_t& place, uint64_t end);
    bool IsPassedOver() const;
    bool IsInside(uint64_t place, bool pal) const;
    Sight FrameAt(uint64_t place);
    Sight SequenceAt(uint64_t place, uint8_t number, bool& pal);
    bool Read(uint64_t place, std::span<uint8_t> into);

    const PositionedFile& fFile;
    FoundFrames fFound;
    Bytes fWindow;
    int fFalse = 0;             // places that looked like a frame and are none
    int64_t fUnreadInARow = 0;  // places
    Status fLastRead = kOK;
};

}  // namespace kelvane
