#pragma once

#include <cstdint>
#include <span>

#include "media/quicktime/structure/qt_movie.h"

namespace kelvane {

// Fills a movie but for its streams from the body of its "moov" ("cmov" included). Whatever the
// bytes are, what can be read is read and the rest left out.
void ParseQTMovie(std::span<const uint8_t> moov, QTMovie& movie);

}  // namespace kelvane
