#pragma once

#include <string>

#include "base/byte_cursor.h"

namespace kelvane {

// A plain reader of atoms, independent of the code under test and strict: every size must be right.

// The types of the atoms in a block, in order: "mvhd udta trak". "?" where a size is wrong.
std::string AtomNames(const Bytes& block);
// The body of the atom at a path like "moov/trak:1/mdia/mdhd", where ":1" means the second of its
// name. Empty when there is none.
Bytes AtomBody(const Bytes& block, const std::string& path);
// A big-endian value in a body; beyond its end all bits are set.
uint64_t ValueAt(const Bytes& body, size_t at, size_t bytes = 4);

}  // namespace kelvane
