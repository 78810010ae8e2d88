#pragma once

#include <cstddef>
#include <cstdint>

#include "format/media_format.h"

namespace kelvane {

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

// Of what is neither PCM nor float.
inline constexpr SampleCoding kNoSampleCoding = {.bits = 0};

// The coding of an AVI stream or a WAVE file: RIFF keeps samples of up to 8 bits unsigned.
constexpr SampleCoding RIFFCoding(const RawAudioFormat& format)
{
    if (format.format == kSampleFloat) return {.bits = format.bitspersample, .is_float = true};
    if (format.format != kSamplePCM && format.format != kSamplePCMUnsigned) return kNoSampleCoding;
    return {.bits = format.bitspersample, .is_unsigned = format.bitspersample <= 8};
}

}  // namespace kelvane
