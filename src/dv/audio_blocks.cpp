#include "dv/audio_blocks.h"

#include <algorithm>

#include "dv/dif_layout.h"

namespace kelvane {

namespace {

// Calls `work` with the place of each audio block of the half that lies within `size` bytes.
template <class Work>
void ForBlocks(size_t size, AudioHalf half, const Work& work)
{
    const size_t sequences = size / kDIFSequenceSize;
    for (size_t sequence = half == AudioHalf::kSecond ? sequences / 2 : 0; sequence < sequences;
         sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            work(AudioBlockAt(sequence, block));
}

}  // namespace

void CopyAudioBlocks(std::span<const uint8_t> from, std::span<uint8_t> to, AudioHalf half)
{
    ForBlocks(std::min(from.size(), to.size()), half, [&](size_t at) {
        std::ranges::copy(from.subspan(at, kDIFBlockSize), to.subspan(at).begin());
    });
}

void SilenceAudioBlocks(std::span<uint8_t> frame, AudioHalf half)
{
    ForBlocks(frame.size(), half, [&](size_t at) {
        std::ranges::fill(frame.subspan(at + kAudioSamplesAt, kDIFBlockSize - kAudioSamplesAt),
                          uint8_t{0});
    });
}

}  // namespace kelvane
