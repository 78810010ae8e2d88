#pragma once

#include "codecs/interface/codec_descriptor.h"
#include "codecs/raw/raw_codec.h"

namespace kelvane {

// Repacks pictures between the five RGB layouts. Works on a run of pixels: the formats say how a
// pixel looks, the sizes of the buffers how many there are.
class RawRGBCodec : public RawCodec {
public:
    static const CodecDescriptor& Descriptor();

    // Converts as many pixels as both buffers hold.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;

protected:
    bool TakesInput(const MediaFormat& format) const override;
    bool TakesOutput(const MediaFormat& format) const override;
};

}  // namespace kelvane
