#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/options/conversion_choices.h"

namespace kelvane {

// 16-bit little-endian samples of four channels, interleaved, from which channels are taken.

// Leaves those of the choice in front of `samples`, two channels for all but kAll, and answers with
// their bytes.
size_t TakeChannels(ChannelChoice choice, std::span<uint8_t> samples);
// True when there is something to hear, more than a thousandth of full scale.
bool IsHeard(std::span<const uint8_t> samples);

}  // namespace kelvane
