#pragma once

#include <cstdint>

#include "format/media_format.h"
#include "format/sample_coding.h"
#include "media/quicktime/structure/qt_movie.h"

namespace kelvane {

// What the sample description of a sound track says, whichever of its three versions it has.
struct QTSound {
    MediaFormat format;
    // As samples lie in the file; not supported for what is neither PCM nor float.
    SampleCoding coding = kNoSampleCoding;

    // Of a sample of every channel, in PCM and float.
    uint32_t FrameBytes() const;
    // Reading exchanges the bytes of these.
    bool HasBigWords() const
    {
        return coding.big_endian && !coding.is_float && coding.Bytes() == 2;
    }
};

QTSound QTSoundOf(const QTTrack& track);

}  // namespace kelvane
