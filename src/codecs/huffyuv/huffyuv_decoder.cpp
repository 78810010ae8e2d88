#include "codecs/huffyuv/huffyuv_decoder.h"

#include "base/four_cc.h"
#include "base/status.h"
#include "codecs/huffyuv/huffyuv_colour.h"
#include "codecs/raw/pixel_order.h"
#include "format/picture_size.h"
#include "picture/packing.h"
#include "picture/yuv_to_rgb.h"

namespace kelvane {

const CodecDescriptor& HuffYUVDecoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "HuffYUV Decoder",
        "HuffYUV Decoder",
        "This HuffYUV decoder decodes RGB24, RGB32 and YUY2 color spaces.",
        kDecoder,
        "HFYU"_4cc,
        EncodedPattern(kEncodingHuffYUV),
        RawPatterns({kBGRX32, kBGRA32, kBGR24, kYUY2}),
        MakeCodec<HuffYUVDecoder>,
    };
    return descriptor;
}

Status HuffYUVDecoder::Prepare()
{
    fUsable = false;
    fChanged = false;
    BitmapHeader header;
    const auto extension = HuffYUVHeaderOf(fInput, header);
    if (ReadHuffYUVFormat(header, extension, fStream) != kOK) return kError;

    fFrames.Prepare(fStream);
    const bool toYUV = fOutput.Space() == kYUY2;
    if (toYUV && fStream.width % 2 != 0) return kError;
    // Behind the decoded picture there is one of 32 bits a pixel, for YUV to kBGR24.
    const size_t wide = fOutput.Space() == kBGR24 ? 4 * fStream.width : 0;
    const size_t bytes = (fStream.RowBytes() + wide) * fStream.height;
    fDirect = (fStream.kind == 16) == toYUV;
    fStored = Bytes(fDirect ? 0 : bytes);
    fUsable = true;
    return kOK;
}

Status HuffYUVDecoder::DecodeTo(std::span<const uint8_t> frame, uint8_t* output)
{
    const size_t stored = fStream.PixelBytes();
    const bool yuv = fStream.kind == 16;
    if (fDirect) return fFrames.Decode(frame, output, yuv ? 2 : fOutput.Space() == kBGR24 ? 3 : 4);
    if (fFrames.Decode(frame, fStored.data(), stored) != kOK) return kError;
    if (!yuv) {
        BottomUpRgbToYuy2(fStored.data(), stored, fStream.width, fStream.height, output);
        return kOK;
    }
    ToBottomUpRGB(output);
    return kOK;
}

// The stream's top row is the last one of the picture.
void HuffYUVDecoder::ToBottomUpRGB(uint8_t* output)
{
    const auto width = static_cast<int32_t>(fStream.width);
    const auto height = static_cast<int32_t>(fStream.height);
    const size_t pitch = 4 * fStream.width;
    if (fOutput.Space() != kBGR24) {
        YuvToRgb(fStored.data(), kYUY2, output, kBGRX32, width, height);
        SwapVertical(output, pitch, height);
        return;
    }
    // Not YuvToRgb's own form of 24 bits, which leaves half of the pixels out.
    uint8_t* wide = fStored.data() + fStream.RowBytes() * fStream.height;
    YuvToRgb(fStored.data(), kYUY2, wide, kBGRX32, width, height);
    for (size_t row = fStream.height; row-- > 0; output += 3 * fStream.width)
        DropFourth(wide + row * pitch, output, fStream.width);
}

std::optional<size_t> HuffYUVDecoder::Convert(std::span<const uint8_t> input,
                                              std::span<uint8_t> output)
{
    const uint32_t space = fOutput.Space();
    const PictureSize size(fOutput, space == kBGR24 ? 3 : space == kYUY2 ? 2 : 4);
    if (!size.FitsIn(output.size()) || !SameSize(fInput, fOutput)) return std::nullopt;
    if (fChanged && Prepare() != kOK) return std::nullopt;
    if (!fUsable || DecodeTo(input, output.data()) != kOK) return std::nullopt;
    return size.bytes;
}

}  // namespace kelvane
