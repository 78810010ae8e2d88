#pragma once

#include "base/byte_cursor.h"
#include "codecs/interface/codec_descriptor.h"
#include "codecs/raw/raw_codec.h"

namespace kelvane {

// Converts packed YUV pictures to RGB. Any raw input format is accepted; from one that it does
// not read nothing is made.
class YUVDecoder : public RawCodec {
public:
    static const CodecDescriptor& Descriptor();

    // The bytes of a picture of the output format, three or four a pixel. YuvToRgb fills four bytes
    // a pixel for kBGR24 too; without room for that the output is cut.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;

protected:
    bool TakesInput(const MediaFormat& format) const override;
    bool TakesOutput(const MediaFormat& format) const override;

private:
    Bytes fFilled;  // a picture that has no room in the output
};

}  // namespace kelvane
