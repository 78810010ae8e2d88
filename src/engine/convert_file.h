#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "engine/conversion_settings.h"
#include "engine/conversion_state.h"

namespace kelvane {

// False, with the words for the user, when a codec that every conversion needs is not chosen or not
// installed. ConvertFile asks the same once the destination exists; who asks before spares an
// existing file.
bool CodecsAreSet(const ConversionSettings& settings, std::string& message);

// Converts one file: opens the source, converts, closes both files and returns. 0 when the file was
// converted or `progress` stopped it; -1 for a failure told in `result->message`, or another
// negative Status. `result` may be null. May set the interleave of a Canopus destination in the
// settings. A failed run leaves a closed, partial destination once that was created; the source is
// never changed.
Status ConvertFile(const std::string& sourcePath, const std::string& destinationPath,
                   int32_t typeOfDestination, ConversionSettings& settings,
                   ConversionResult* result, ConversionState& state);

}  // namespace kelvane
