#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvane {

// Sound that shows where it belongs: a tone that rises a step each second, a little different in
// each channel, and a click of 3 ms on the first sample of each second.
class SampleSound {
public:
    // 32000, 44100 or 48000 hertz; two channels, or four at 32000.
    explicit SampleSound(uint32_t rate, uint32_t channels = 2);

    uint32_t Rate() const { return fRate; }
    uint32_t Channels() const { return fChannels; }
    // `count` samples of each channel from sample `first` on: 16-bit little-endian, interleaved.
    std::vector<uint8_t> Samples(uint64_t first, size_t count) const;
    // The first sample of a frame of a system, so that frame n holds the samples from
    // FirstOfFrame(n) up to FirstOfFrame(n + 1).
    uint64_t FirstOfFrame(uint64_t frame, bool pal) const;
    // Writes the sound of frame `number` into a DV frame, packs and all. Four channels are coded in
    // 12 bits.
    void EmbedInto(std::span<uint8_t> frame, uint64_t number) const;

private:
    int16_t SampleAt(uint64_t n, uint32_t channel) const;

    uint32_t fRate, fChannels;
    std::vector<int16_t> fSine;  // one turn in as many steps as the rate
};

// The samples at which clicks begin in the first channel.
std::vector<uint64_t> FindClicks(std::span<const uint8_t> samples, uint32_t channels);

}  // namespace kelvane
