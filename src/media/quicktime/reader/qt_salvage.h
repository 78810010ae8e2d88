#pragma once

#include <cstdint>
#include <limits>

#include "base/status.h"
#include "media/quicktime/structure/qt_movie.h"
#include "platform/files/positioned_file.h"

namespace kelvane {

// What was found in a movie without a header.
struct QTSalvage {
    uint64_t frames = 0;
    uint64_t left_out = 0;  // bytes between them that are no sound
    uint64_t silent = 0;    // frames whose sound is missing there
    Status status = kOK;    // kUnread: no frame was found before the system could not read on
};

// Where the sound of a movie without a header lies that is silence in place of what is missing.
inline constexpr uint64_t kSalvagedSilence = std::numeric_limits<uint64_t>::max();

// Searches the media of a file, from byte `from` to `end`, for DV frames, as a capture that broke
// off leaves them: all whole frames of the first one's television system become a video track. What
// lies between them is a track of 16-bit sound where its length is that of the frames before it;
// where it is not, silence of their length keeps the sound behind it in step. The movie is left
// alone where no frame is found.
QTSalvage SalvageQTMovie(const PositionedFile& file, uint64_t from, uint64_t end, QTMovie& movie);

}  // namespace kelvane
