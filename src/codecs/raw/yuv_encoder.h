#pragma once

#include "codecs/interface/codec_descriptor.h"
#include "codecs/raw/raw_codec.h"

namespace kelvane {

// Converts RGB pictures to the packed YUV layouts. Any raw output format is accepted; one that it
// does not write makes Convert a successful no-operation that leaves the sizes alone.
class YUVEncoder : public RawCodec {
public:
    static const CodecDescriptor& Descriptor();

    // Always 0; callers read the sizes, which are those of a picture of the output format:
    // width * height * 2 produced. For kVYU24 that is what is reported although three bytes a pixel
    // are written, and four bytes a pixel are reported as consumed also of 24-bit pictures; both
    // deliberate. Nothing is done, and both sizes are 0, when a buffer does not hold the picture.
    int Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output, uint32_t& outputSize,
                uint32_t flags) override;

protected:
    bool TakesInput(const MediaFormat& format) const override;
    bool TakesOutput(const MediaFormat& format) const override;
};

}  // namespace kelvane
