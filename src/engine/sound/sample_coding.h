#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "format/media_format.h"

namespace kelvane {

// More would not fit the FIFO with the longest interleave.
inline constexpr uint32_t kMostChannels = 16;

// How the samples of a source lie in its bytes.
struct SampleCoding {
    uint16_t bits = 16;  // of a sample; kept left-justified in the next whole number of bytes
    bool is_float = false;
    bool is_unsigned = false;
    bool big_endian = false;

    size_t Bytes() const { return (size_t{bits} + 7) / 8; }
    // What the engine moves: 16-bit signed little-endian.
    bool IsPlain() const { return !is_float && !is_unsigned && !big_endian && Bytes() == 2; }
    // Integers of 1 to 4 bytes, floats of 4 or 8.
    bool IsSupported() const
    {
        return is_float ? bits == 32 || bits == 64 : bits >= 1 && bits <= 32;
    }
};

// The coding of a stream of an AVI or WAVE file: RIFF keeps samples of up to 8 bits unsigned.
SampleCoding RIFFCoding(const RawAudioFormat& format);
// The coding of a QuickTime track as QTFile reads it, which exchanges the bytes of "twos" in pairs:
// 8 and 16 bits only.
SampleCoding QuickTimeCoding(const RawAudioFormat& format);
// Both answer with a coding that is not supported for what is neither PCM nor float.

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
