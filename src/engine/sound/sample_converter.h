#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "format/sample_coding.h"

namespace kelvane {

// More would not fit the FIFO with the longest interleave.
inline constexpr uint32_t kMostChannels = 16;

// Brings samples to 16 bits signed little-endian: rounded to the nearest, limited, full scale to
// full scale (a float of 1.0 is 32768). `from` holds whole samples, `to` 2 bytes for each.
void ConvertSamples(const SampleCoding& coding, std::span<const uint8_t> from, uint8_t* to);

// Converts a stream that comes in pieces of any length: a sample cut in two by the end of a piece
// waits for the next.
class SampleConverter {
public:
    explicit SampleConverter(const SampleCoding& coding) : fCoding(coding) {}

    const SampleCoding& Coding() const { return fCoding; }
    // Appends the converted samples to `samples`.
    void Convert(std::span<const uint8_t> piece, std::vector<uint8_t>& samples);

private:
    SampleCoding fCoding;
    std::vector<uint8_t> fWaiting;  // less than one sample
};

}  // namespace kelvane
