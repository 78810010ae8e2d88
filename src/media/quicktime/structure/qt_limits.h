#pragma once

#include <cstdint>

namespace kelvane {

// Media of a file with 32-bit offsets ("stco") end at this byte at the latest.
inline constexpr uint64_t kNarrowQTLimit = uint64_t{1} << 32;

}  // namespace kelvane
