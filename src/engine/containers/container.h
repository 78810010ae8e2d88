#pragma once

#include <span>
#include <string>
#include <vector>

#include "engine/containers/destination.h"
#include "engine/containers/file_type.h"
#include "engine/containers/source.h"

namespace kelvane {

// One kind of file, with all that the engine does with it.
struct Container {
    SourceKind kind;
    bool (*is)(const std::string& path);  // told by its contents
    bool (*describe)(const std::string& path, std::string& text);
    OpenedSource (*open)(const std::string& path);         // null: it has no picture
    std::span<const DestinationType> types;                // that it is written as
    CreatedDestination (*create)(const DestinationPlan&);  // null: it is not written
    // Files beside the destination that hold the media of its planned frames; null: there are none.
    std::vector<std::string> (*media_files)(const DestinationPlan&);
};

// Asks each kind in a fixed order; the first that knows the file ends the search. Null for a file
// of no known kind.
const Container* ContainerOf(const std::string& path);
// Null for a type that is not written.
const Container* ContainerFor(int32_t type);

}  // namespace kelvane
