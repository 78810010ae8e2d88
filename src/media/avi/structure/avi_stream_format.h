#pragma once

#include "format/media_format.h"
#include "media/avi/structure/avi_structure.h"

namespace kelvane {

// What the headers of a stream say about it: raw audio from the wave format, video from the bitmap
// header with the rate of the stream header, the fixed DV format for an "iavs" stream with a DV
// handler; otherwise kind 0. Private data of an encoded format points into the stream's "strf".
MediaFormat FormatOfStream(const AVIStream& stream);
// Size and rate of a "vids" stream, without a colour space, whatever its pictures are.
MediaFormat SizeOfStream(const AVIStream& stream);

}  // namespace kelvane
