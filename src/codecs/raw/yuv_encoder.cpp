#include "codecs/raw/yuv_encoder.h"

#include "base/four_cc.h"
#include "format/picture_size.h"
#include "picture/rgb_to_yuv.h"

namespace kelvane {

namespace {

using Conversion = void (*)(const uint8_t* source, ColourSpace from, uint8_t* destination,
                            int32_t width, int32_t height, WorkerPool* pool);

Conversion ConversionTo(uint32_t space)
{
    switch (space) {
        case kYUY2:
            return RgbToYuy2;
        case kUYVY:
            return RgbToUyvy;
        case kYUVSigned:
            return RgbToYuvSigned;
        case kVYU24:
            return RgbToVyu;
        default:
            return nullptr;
    }
}

}  // namespace

const CodecDescriptor& YUVEncoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "Raw YUV Video Encoder",
        "YUV Encoder",
        "This codec convert from RGB to various YUV color spaces.",
        kConverter,
        "yuv "_4cc,
        RawPatterns({kBGRX32, kBGRA32, kBGR24}),
        RawPatterns({kYUY2, kUYVY, kYUVSigned, kVYU24}),
        MakeCodec<YUVEncoder>,
    };
    return descriptor;
}

bool YUVEncoder::TakesInput(const MediaFormat& format) const
{
    return Matches(Descriptor().inputs, format);
}

bool YUVEncoder::TakesOutput(const MediaFormat& format) const
{
    return format.kind == kRawVideo;
}

std::optional<size_t> YUVEncoder::Convert(std::span<const uint8_t> input, std::span<uint8_t> output)
{
    const Conversion convert = ConversionTo(fOutput.Space());
    if (!convert) return std::nullopt;
    const ColourSpace from = fInput.Space() == kBGR24 ? kBGR24 : kBGRX32;
    const PictureSize read(fOutput, from == kBGR24 ? 3 : 4);
    const PictureSize made(fOutput, fOutput.Space() == kVYU24 ? 3 : 2);
    if (!read.FitsIn(input.size()) || !made.FitsIn(output.size())) return std::nullopt;
    convert(input.data(), from, output.data(), fOutput.Width(), fOutput.Height(), nullptr);
    return made.bytes;
}

}  // namespace kelvane
