#pragma once

#include <cstdint>

#include "format/media_format.h"
#include "media/quicktime/structure/qt_movie.h"
#include "media/quicktime/structure/qt_picture_times.h"

namespace kelvane {

// What the data formats of sample descriptions mean, for reading, writing and describing.

// Options of a destination.
enum QTOption : uint32_t {
    kQTWideOffsets = 1,  // "co64" in place of "stco"
    kQTDVCP = 2,         // PAL frames are "dvcp" in place of "dvc "
    kQTAvidDV = 4,       // "AVdv"
    kQTDVCPRO = 8,       // "dvpp"
    kQTSoftDV = 16,      // vendor and names of the Radius SoftDV codec
};

bool IsQTDVFormat(uint32_t format);  // "dvc ", "dvcp", "AVdv" or "dvpp"

// Codes of other forms of DV, under which plain 25 Mbit/s DV is found as well: "DVC ", "dv5n".
bool MayBeQTDVFormat(uint32_t format);

// Sound of a destination whose 16-bit words are big-endian.
bool HasQTSwappedWords(uint32_t format, uint64_t bits);

bool IsQTPackedSound(uint32_t format);  // "ulaw" or "ima4"

// The stream format of a source's video track; kind 0 when it is not known.
MediaFormat QTVideoFormat(const QTTrack& track);

// How long a frame lasts in a track whose pictures are of this format: as most of them do, in DV
// always as long as the standard says. Without ticks where the file does not tell.
QTFrameTime QTFrameTimeOf(const QTTrack& track, const MediaFormat& format);

// Bytes of `samples` sample frames and back. PCM takes whole bytes a sample; u-law one byte, and
// IMA4 packets of 34 bytes for 64 samples of a channel, whatever the description says.
uint64_t QTSoundBytes(uint32_t format, uint64_t samples, uint32_t channels, uint32_t bits);
uint64_t QTSoundSamples(uint32_t format, uint64_t bytes, uint32_t channels, uint32_t bits);

// How a destination codes a picture or sound format; 0 when it does not.
struct QTVideoChoice {
    uint32_t format = 0;
    uint16_t depth = 24;
};
QTVideoChoice ChooseQTVideo(const MediaFormat& format, uint32_t options);
uint32_t ChooseQTSound(const MediaFormat& format);

// What the description of a destination's video track calls the codec.
struct QTCompressor {
    const char* name;
    uint32_t vendor;
};
QTCompressor QTCompressorOf(uint32_t format, int32_t height, uint32_t options);

// Units a second and units of one frame for a frame rate: 600 where a frame is a whole number of
// them, 100 times other whole rates, 1001 times broken ones, so that 29.97 is 30000 by 1001.
// A scale of 0 when the rate cannot be written.
struct QTTimeScale {
    uint32_t scale = 0;
    uint32_t frame = 0;
};
QTTimeScale QTTimeScaleOf(float rate);

}  // namespace kelvane
