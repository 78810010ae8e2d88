#pragma once

#include "cli/arguments.h"
#include "codecs/external/dv_codec_entry.h"

namespace kelvane {

// The settings of a run by its arguments; progress is left alone. Where no codec is named it is the
// usual one, or the first that is installed. The settings refer to `arguments` and `codecs`.
ConversionSettings SettingsFor(const Arguments& arguments, const DVCodecLists& codecs);

}  // namespace kelvane
