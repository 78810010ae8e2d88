#pragma once

#include <cstdint>
#include <span>

#include "format/media_format.h"

namespace kelvane {

// Which menu of codecs goes with an output format.
enum class CodecMenu { kNone, kAVI, kQuickTime, kMatrox };

// How the pictures of an output codec are made.
enum class CodecKind { kDV, kRaw, kHuffYUV, kAnimation };

// One row of a menu of output codecs.
struct OutputCodec {
    const char* name;  // on the command line
    const char* text;  // menu row
    uint32_t code;     // as the file names the codec; kept in the settings
    CodecKind kind = CodecKind::kDV;
    ColourSpace space{};         // of pictures that are not DV
    uint32_t options_set = 0;    // bits of ConversionOption that go with the row
    uint32_t options_clear = 0;  // and those that do not
};

// The rows of one menu; empty for a format without a choice.
std::span<const OutputCodec> OutputCodecs(CodecMenu menu);
// The codec of a row as the settings keep it; null where a menu has no codec for that number.
const OutputCodec* FindOutputCodec(CodecMenu menu, int32_t row);

// Format of the pictures that a codec makes, at 720 pixels across; kind 0 for DV, whose format is
// that of the destination's standard. `to_pal` and `to_ntsc` tell the operation.
MediaFormat PictureFormat(const OutputCodec& codec, bool to_pal, bool to_ntsc);

}  // namespace kelvane
