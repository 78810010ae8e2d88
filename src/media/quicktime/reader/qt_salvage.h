#pragma once

#include <cstdint>

#include "media/quicktime/structure/qt_movie.h"
#include "platform/files/positioned_file.h"

namespace kelvane {

// What was found in a movie without a header.
struct QTSalvage {
    uint64_t frames = 0;
    uint64_t left_out = 0;  // bytes between them that are no sound
};

// Searches the media of a file, from byte `from` on, for DV frames, as a capture that broke off
// leaves them: all whole frames of the first one's television system become a video track. What
// lies between them is a track of 16-bit sound where its length is that of the frames before it.
// The movie is left alone where no frame is found.
QTSalvage SalvageQTMovie(const PositionedFile& file, uint64_t from, QTMovie& movie);

}  // namespace kelvane
