#include "codecs/raw/yuv_decoder.h"

#include <algorithm>

#include "base/four_cc.h"
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

std::optional<size_t> YUVDecoder::Convert(std::span<const uint8_t> input, std::span<uint8_t> output)
{
    const uint32_t from = fInput.Space();
    if (from != kYUY2 && from != kUYVY && from != kYUVSigned) return std::nullopt;
    const ColourSpace to = fOutput.Space() == kBGR24 ? kBGR24 : kBGRX32;
    const PictureSize read(fOutput, 2);
    const PictureSize made(fOutput, to == kBGR24 ? 3 : 4);
    const PictureSize filled(fOutput, from == kYUVSigned && to == kBGR24 ? 3 : 4);
    if (!filled.valid || !read.FitsIn(input.size()) || !made.FitsIn(output.size()))
        return std::nullopt;
    const bool cut = !filled.FitsIn(output.size());
    if (cut) fFilled.assign(filled.bytes, 0);
    uint8_t* picture = cut ? fFilled.data() : output.data();
    if (from == kYUVSigned)
        YuvSignedToRgb(input.data(), picture, to, fOutput.Width(), fOutput.Height());
    else
        YuvToRgb(input.data(), from == kUYVY ? kUYVY : kYUY2, picture, to, fOutput.Width(),
                 fOutput.Height());
    if (cut) std::ranges::copy(std::span(fFilled).first(output.size()), output.begin());
    return made.bytes;
}

}  // namespace kelvane
