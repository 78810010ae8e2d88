#pragma once

#include "base/byte_cursor.h"
#include "media/quicktime/structure/qt_movie.h"

namespace kelvane {

// The whole "moov" atom. Offsets go to "co64" when `wide_offsets`, else their low 32 bits to
// "stco".
Bytes BuildQTMovie(const QTMovie& movie, bool wide_offsets);

}  // namespace kelvane
