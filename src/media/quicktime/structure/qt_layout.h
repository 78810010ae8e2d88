#pragma once

#include "media/quicktime/structure/qt_movie.h"

namespace kelvane {

// A movie as a destination begins it: times are now, all else the defaults of the format.
QTMovie NewQTMovie();
// Adds a track and its stream, with the next track id, its self-contained data reference and the
// handlers of video or sound.
QTTrack& AddQTTrack(QTMovie& movie, bool video);
// Sets counts and durations from the sample tables: of the tracks, and of the movie the longest.
void FinishQTMovie(QTMovie& movie);

}  // namespace kelvane
