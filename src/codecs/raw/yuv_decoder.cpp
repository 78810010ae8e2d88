#include "codecs/raw/yuv_decoder.h"

#include <cstring>

#include "base/four_cc.h"
#include "base/status.h"
#include "format/picture_size.h"
#include "picture/yuv_to_rgb.h"

namespace kelvane {

const CodecDescriptor& YUVDecoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "Raw YUV Video Decoder",
        "YUV Decoder",
        "This codec converts YUV to RGB.",
        kConverter,
        "yuv "_4cc,
        RawPatterns({kYUY2, kUYVY, kYUVSigned}),
        RawPatterns({kBGRX32, kBGRA32, kBGR24}),
        MakeCodec<YUVDecoder>,
    };
    return descriptor;
}

bool YUVDecoder::TakesInput(const MediaFormat& format) const
{
    return format.kind == kRawVideo;
}

bool YUVDecoder::TakesOutput(const MediaFormat& format) const
{
    return Matches(Descriptor().outputs, format);
}

int YUVDecoder::Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output,
                        uint32_t& outputSize, uint32_t)
{
    const uint32_t from = fInput.Space();
    if (from != kYUY2 && from != kUYVY && from != kYUVSigned) return kOK;
    const ColourSpace to = fOutput.Space() == kBGR24 ? kBGR24 : kBGRX32;
    const size_t room = outputSize;
    const PictureSize read(fOutput, 2);
    const PictureSize reported(fOutput, to == kBGR24 ? 3 : 4);
    const PictureSize filled(fOutput, from == kYUVSigned && to == kBGR24 ? 3 : 4);
    if (!filled.valid || !read.FitsIn(inputSize) || !reported.FitsIn(room)) {
        inputSize = outputSize = 0;
        return kOK;
    }
    uint8_t* picture = output;
    if (!filled.FitsIn(room)) {
        fBuffer = std::make_unique<uint8_t[]>(filled.bytes);
        picture = fBuffer.get();
    }
    if (from == kYUVSigned)
        YuvSignedToRgb(input, picture, to, fOutput.Width(), fOutput.Height());
    else
        YuvToRgb(input, from == kUYVY ? kUYVY : kYUY2, picture, to, fOutput.Width(),
                 fOutput.Height());
    if (picture != output) memcpy(output, picture, room);
    inputSize = static_cast<uint32_t>(read.bytes);
    outputSize = static_cast<uint32_t>(reported.bytes);
    return kOK;
}

}  // namespace kelvane
