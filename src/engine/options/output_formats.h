#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "engine/options/conversion_settings.h"
#include "format/media_format.h"

namespace kelvane {

// Output formats and output codecs as a person chooses them: the rows of the menus, with what the
// settings and the command line call them.

// Which menu of codecs goes with a format.
enum class CodecMenu { kNone, kAVI, kQuickTime, kMatrox };

struct OutputFormat {
    const char* name;       // on the command line
    uint32_t selection;     // code kept in the settings
    const char* text;       // menu row
    const char* extension;  // of the first file name row, with its dot
    int32_t type;           // DestinationType
    CodecMenu codecs;
};

// In the order of the menu.
std::span<const OutputFormat> OutputFormats();
// Null for a selection that is not in the menu.
const OutputFormat* FindOutputFormat(uint32_t selection);
// kDestinationNone for a selection that is not in the menu.
int32_t TypeOfDestination(uint32_t selection);

struct OutputCodec {
    const char* name;  // on the command line
    const char* text;  // menu row
    const char* code;  // four characters, as the file names the codec
};

// The rows of one menu; empty for a format without a choice.
std::span<const OutputCodec> OutputCodecs(CodecMenu menu);

// The DV rows of the AVI menu: what the file names as its codec. It does not choose a codec for
// coding. False for a row that is none of them.
bool AVIDVCodec(int32_t row, uint32_t& handler);
inline constexpr int32_t kAVIDVRows = 9;
// The built-in rows of the AVI menu, counted from the first one: handler and full format, at 720
// pixels across in the destination's standard. False for a row that is none of them.
bool AVIBuiltInCodec(int32_t row, bool pal, uint32_t& handler, MediaFormat& format);

}  // namespace kelvane
