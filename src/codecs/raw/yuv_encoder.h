#pragma once

#include "codecs/interface/codec_descriptor.h"
#include "codecs/raw/raw_codec.h"

namespace kelvane {

// Converts RGB pictures to the packed YUV layouts. Any raw output format is accepted; in one that
// it does not write nothing is made.
class YUVEncoder : public RawCodec {
public:
    static const CodecDescriptor& Descriptor();

    // The bytes of a picture of the output format: two a pixel, three in kVYU24.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;

protected:
    bool TakesInput(const MediaFormat& format) const override;
    bool TakesOutput(const MediaFormat& format) const override;
};

}  // namespace kelvane
