#pragma once

#include <cstdint>

#include "media/quicktime/structure/qt_movie.h"
#include "media/quicktime/structure/qt_picture_times.h"

namespace kelvane {

// How the picture and the sound of a movie begin together, by their edit lists. What stands in
// front of both is left out; what stands in front of one of them puts it behind the other.
struct QTStart {
    uint64_t held = 0;     // frames for which the first picture stands before its own
    uint64_t silence = 0;  // sample frames in front of the sound
    // A list says something else than when its track begins: that is not followed.
    bool has_other_edits = false;
};

// `frame` is what a frame of the film lasts; `sound` may be null.
QTStart QTStartOf(const QTMovie& movie, const QTTrack& video, const QTFrameTime& frame,
                  const QTTrack* sound);

}  // namespace kelvane
