#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/status.h"
#include "codecs/huffyuv/huffyuv_decoder.h"
#include "codecs/raw/raw_rgb_codec.h"
#include "codecs/raw/yuv_decoder.h"
#include "codecs/raw/yuv_encoder.h"

namespace kelvane {

// A conversion as callers outside the engine know it, who read sizes and not the outcome: what is
// told here of some classes is not what was done. Deliberate; the engine takes Convert's answer.
struct ConvertReport {
    Status status;
    size_t consumed, produced;  // bytes
};

// Always kError, after success too.
ConvertReport ConvertAndReport(RawRGBCodec& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output);
// Always kOK; both sizes stay those of the buffers for an output format that is not written. For
// kVYU24 two bytes a pixel are reported where three are made, and four as consumed of 24 bits too.
ConvertReport ConvertAndReport(YUVEncoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output);
// Always kOK; both sizes stay those of the buffers for an input format that is not read.
ConvertReport ConvertAndReport(YUVDecoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output);
// YUY2 counts four bytes a pixel, of which two are made.
ConvertReport ConvertAndReport(HuffYUVDecoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output);

}  // namespace kelvane
