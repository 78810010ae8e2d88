#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvane {

// Repair of samples that were lost on tape, from the neighbours of the same channel. `values` are
// samples of `channels` (at least 1) channels in turn, in the order of the machine.

// Of samples expanded from 12 bits: four values stand for lost ones.
void ConcealBadSamples(std::span<uint16_t> values, size_t channels);

// Of 16-bit samples: 0x8000 stands for a lost one (IEC 61834-2). One or two in a row are bridged as
// those of 12 bits are, a longer run by a straight line; a channel that has no others is silent.
void BridgeLostSamples(std::span<uint16_t> values, size_t channels);

}  // namespace kelvane
