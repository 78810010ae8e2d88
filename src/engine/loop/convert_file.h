#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "engine/loop/conversion_host.h"
#include "engine/loop/conversion_result.h"
#include "engine/options/conversion_settings.h"
#include "engine/pictures/conversion_state.h"

namespace kelvane {

// False, with the words for the user, when a codec that every conversion needs is not chosen or not
// installed. ConvertFile asks the same once the destination exists; who asks before spares an
// existing file.
bool CodecsAreSet(const ConversionSettings& settings, std::string& message);

// Converts one file: opens the source, converts, closes both files and returns. kOK when the file
// was converted or `host` stopped it; kError for a failure told in `result->message`, or another
// Status. `host` and `result` may be null. A failed run leaves a closed destination once that was
// created: with all that could be read when reading failed, else with what could be written. The
// source is never changed.
Status ConvertFile(const std::string& sourcePath, const std::string& destinationPath,
                   int32_t typeOfDestination, const ConversionSettings& settings,
                   ConversionHost* host, ConversionResult* result, ConversionState& state);

}  // namespace kelvane
