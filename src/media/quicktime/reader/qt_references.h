#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "media/quicktime/structure/qt_movie.h"
#include "platform/files/volume_table.h"

namespace kelvane {

// Media may lie in other files. A list of names holds the path of each of them at the place of its
// data reference, counted from 0; a place without a name is empty.

// Adds the names that edit systems leave in a "code" atom, each behind the mark "RU*A". Large atoms
// are left alone.
void FindNamesInCode(std::span<const uint8_t> code, std::vector<std::string>& names);

// Adds the path that the alias in each data reference to another file holds.
void FindNamesInReferences(const std::vector<QTDataReference>& references,
                           std::vector<std::string>& names);

// The last run of path characters in an alias that looks like a path; empty when there is none.
std::string FindPathInAlias(std::span<const uint8_t> alias);

// The path on this system: "Volume:folder:file" stands under the mount point of that volume, a
// server name loses its ending "LS", and backslashes become slashes.
std::string ResolveReference(const std::string& name, const VolumeTable& volumes);

}  // namespace kelvane
