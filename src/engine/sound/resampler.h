#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "base/status.h"
#include "engine/sound/audio_fifo.h"

namespace kelvane {

// Plays sound at another speed, or brings it to another rate, by band-limited interpolation
// (libsamplerate). 16-bit little-endian samples, interleaved. What comes out is decided by what is
// put in and by the blocks that are asked for; in how many pieces the sound comes does not matter.
// For one thread.
class Resampler {
public:
    // `speed`: samples of the input for each of the output, in the beginning.
    Resampler(uint32_t channels, double speed);
    ~Resampler();

    // The sound just before that which is resampled, so that no edge is heard where it begins.
    void Precede(std::span<const uint8_t> sound);
    // Asks for a block of `samples` of each channel, on the way through which the speed goes evenly
    // from that of the block before to `speed`.
    void Ask(size_t samples, double speed);
    // Makes blocks that were asked for, as far as `from` holds what they need; with `ended` all of
    // them, with silence behind the end. Fails when `to` is full.
    Status Run(AudioFifo& from, bool ended, AudioFifo& to);

    // The sample of the input at which the next block will begin.
    double Position() const { return fEnd - fSkipped; }
    // Samples of the input that were to be had and were not: silence.
    double Missing() const { return std::max(0.0, fEnd - static_cast<double>(fThere)); }
    // Samples of the input that it looks ahead of a block's end.
    static constexpr size_t kLookAhead = 512;

private:
    struct Block {
        size_t samples;
        double speed;
        double end;        // on the input
        bool kept = true;  // goes out
    };
    struct Deleter {
        void operator()(void* converter) const;
    };

    bool Feed(AudioFifo& from, size_t wanted, bool ended);
    void Append(std::span<const uint8_t> sound);
    std::span<const uint8_t> Make(const Block& block);

    uint32_t fChannels;
    double fSpeed;        // at the end of what was asked for
    double fEnd = 0;      // of what was asked for, on the input
    double fSkipped = 0;  // samples before the beginning
    size_t fFed = 0;      // samples of the input so far
    size_t fThere = 0;    // of these, without the silence behind the end
    std::deque<Block> fAsked;
    std::unique_ptr<void, Deleter> fConverter;
    std::vector<float> fInput, fOutput;
    std::vector<uint8_t> fBytes;
};

}  // namespace kelvane
