#pragma once

#include <cstdint>
#include <string>

#include "base/result.h"
#include "engine/containers/destination.h"
#include "engine/containers/source.h"
#include "engine/loop/conversion_host.h"
#include "engine/loop/conversion_result.h"
#include "engine/options/conversion_settings.h"
#include "engine/pictures/conversion_state.h"

namespace kelvane {

// Fails when a codec that every conversion needs is not chosen or not installed. ConvertFile asks
// the same once the destination exists; who asks before spares an existing file.
Result<> CodecsAreSet(const ConversionSettings& settings);

// What a conversion works with.
struct ConversionMeans {
    const ConversionSettings& settings;
    ConversionHost* host;  // may be null
    ConversionState& state;
};

// Converts an open source to a destination that was created by its plan, and finishes it. Who wants
// to ask something before a file is touched opens the source, plans and creates the destination by
// himself (OpenSource, PlanDestination, FilesOf, CreateDestination) and comes here; the rest, and
// what is answered, is as with ConvertFile.
Result<> ConvertOpened(Source& source, const DestinationPlan& plan, Destination& destination,
                       const ConversionMeans& means, ConversionResult& result);

// Converts one file: opens the source, converts, closes both files and returns. kOK when the file
// was converted, or `host` stopped it or did not let it begin; kError for a failure told in
// `result->message`, or another Status. `host` and `result` may be null. A failed run leaves a
// closed destination once that was created: with all that could be read when reading failed, else
// with what could be written. The source is never changed.
Status ConvertFile(const std::string& sourcePath, const std::string& destinationPath,
                   int32_t typeOfDestination, const ConversionSettings& settings,
                   ConversionHost* host, ConversionResult* result, ConversionState& state);

}  // namespace kelvane
