#pragma once

#include "codecs/interface/codec_descriptor.h"
#include "codecs/raw/raw_codec.h"

namespace kelvane {

// Converts packed YUV pictures to RGB. Any raw input format is accepted; one that it does not read
// makes Convert a successful no-operation that leaves the sizes alone.
class YUVDecoder : public RawCodec {
public:
    static const CodecDescriptor& Descriptor();

    // Always 0; callers read the sizes, which are those of a picture of the output format: two
    // bytes a pixel consumed, three or four produced. YuvToRgb fills four bytes a pixel for kBGR24
    // too; without room for that the output is cut. Nothing is done, and both sizes are 0, when a
    // buffer does not hold what is reported.
    int Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output, uint32_t& outputSize,
                uint32_t flags) override;

protected:
    bool TakesInput(const MediaFormat& format) const override;
    bool TakesOutput(const MediaFormat& format) const override;
};

}  // namespace kelvane
