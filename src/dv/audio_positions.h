#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvane {

// Most samples a channel in one frame (IEC 61834-2): every 16-bit place of its audio blocks.
inline constexpr size_t kMaxSamplesPAL = 1944;
inline constexpr size_t kMaxSamplesNTSC = 1620;

// Where the samples of a frame lie: for sample n, its byte offset from the start of the frame. The
// shuffling of IEC 61834-2 spreads neighbours over all sequences, so that a lost track of the tape
// costs every channel a little instead of one channel everything. First letter: the channel pair or
// channel, A in the first half of the sequences and B in the second; N for NTSC.
using PositionTable = std::span<const uint32_t>;
extern const PositionTable A16, B16;    // PAL, big-endian samples of channel 1 and of channel 2
extern const PositionTable A12, B12;    // PAL, 12-bit pairs of channels 1 and 2, and of 3 and 4
extern const PositionTable NA16, NB16;  // the same for NTSC
extern const PositionTable NA12, NB12;

}  // namespace kelvane
