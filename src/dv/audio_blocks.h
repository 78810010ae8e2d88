#pragma once

#include <cstdint>
#include <span>

namespace kelvane {

// The audio blocks of DV frames as they stand. The first half of a frame's sequences has channel 1,
// or channels 1 and 2 of 12 bits; the second half the rest (IEC 61834-2).
enum class AudioHalf { kBoth, kSecond };

// Copies audio blocks, samples, packs and all, between two frames of one system.
void CopyAudioBlocks(std::span<const uint8_t> from, std::span<uint8_t> to, AudioHalf half);
// Zeros in place of samples; the packs stay.
void SilenceAudioBlocks(std::span<uint8_t> frame, AudioHalf half);

}  // namespace kelvane
