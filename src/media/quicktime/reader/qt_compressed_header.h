#pragma once

#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/status.h"

namespace kelvane {

// A plain movie header has at most this many bytes, which is five days of DV with sound; what a
// packed one expands to beyond its limit is left out. More is no movie.
inline constexpr uint64_t kMaxMovieHeader = 256u << 20;
inline constexpr uint64_t kMaxExpandedHeader = 64u << 20;

// Unpacks the body of a "cmov": "dcom" with the compressor's name, which is not checked, then
// "cmvd" with the expanded size and zlib data (RFC 1950). Data that end early give what they hold.
// The size is a claim: no more is allocated than the data can unpack to, and no more than
// kMaxExpandedHeader. kCorrupted when there is nothing to be had.
Status ExpandCompressedHeader(std::span<const uint8_t> cmov, Bytes& expanded);

}  // namespace kelvane
