#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "engine/options/conversion_settings.h"
#include "engine/options/output_codecs.h"

namespace kelvane {

// Output formats as a person chooses them: the rows of the menu, with what the settings and the
// command line call them.

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

}  // namespace kelvane
