#include "codecs/huffyuv/huffyuv_encoder.h"

#include <algorithm>

#include "base/four_cc.h"
#include "base/status.h"
#include "codecs/huffyuv/huffyuv_colour.h"
#include "codecs/huffyuv/huffyuv_tables.h"
#include "format/picture_size.h"

namespace kelvane {

namespace {

// Bytes of a pixel of an input picture.
size_t PixelBytes(uint32_t space)
{
    return space == kBGR24 ? 3 : space == kYUY2 || space == kUYVY ? 2 : 4;
}

void SwapPairs(const uint8_t* __restrict source, uint8_t* __restrict destination, size_t bytes)
{
    for (size_t i = 0; i + 1 < bytes; i += 2) {
        destination[i] = source[i + 1];
        destination[i + 1] = source[i];
    }
}

}  // namespace

const CodecDescriptor& HuffYUVEncoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "HuffYUV Encoder",
        "HuffYUV Encoder",
        "",
        kEncoder,
        "HFYU"_4cc,
        RawPatterns({kBGRX32, kBGRA32, kBGR24, kYUY2, kUYVY}),
        EncodedPattern(kEncodingHuffYUV),
        MakeCodec<HuffYUVEncoder>,
    };
    return descriptor;
}

Status HuffYUVEncoder::Prepare()
{
    fUsable = false;
    fChanged = false;
    BitmapHeader header;
    ToBitmapHeaderEncoded(fOutput, header);
    const size_t pixelBytes = PixelBytes(fInput.Space());
    const bool yuv = pixelBytes == 2 || header.bit_count == 16;
    const int kind = yuv ? 16 : static_cast<int>(8 * pixelBytes);
    fExtension = MakeHuffYUVExtension(kind, yuv ? kMedian : kGradientDecorrelated);
    if (ReadHuffYUVFormat(header, fExtension, fStream) != kOK) return kError;

    fFrames.Prepare(fStream);
    fDirect = 8 * pixelBytes == static_cast<size_t>(kind) && fInput.Space() != kUYVY;
    fStored = Bytes(fDirect ? 0 : fStream.RowBytes() * fStream.height);
    fOutput.encoded_video.private_data = fExtension.data();
    fOutput.encoded_video.private_size = static_cast<uint32_t>(fExtension.size());
    fUsable = true;
    return kOK;
}

// The picture itself, or a copy in the layout that the stream stores.
const uint8_t* HuffYUVEncoder::InStreamLayout(const uint8_t* input)
{
    if (fDirect) return input;
    if (fInput.Space() == kUYVY)
        SwapPairs(input, fStored.data(), fStream.RowBytes() * fStream.height);
    else
        BottomUpRgbToYuy2(input, PixelBytes(fInput.Space()), fStream.width, fStream.height,
                          fStored.data());
    return fStored.data();
}

std::optional<size_t> HuffYUVEncoder::Convert(std::span<const uint8_t> input,
                                              std::span<uint8_t> output)
{
    const PictureSize size(fInput, PixelBytes(fInput.Space()));
    if (!size.FitsIn(input.size()) || !SameSize(fInput, fOutput)) return std::nullopt;
    if (fChanged && Prepare() != kOK) return std::nullopt;
    if (!fUsable) return std::nullopt;
    return fFrames.Encode(InStreamLayout(input.data()), output);
}

void ToHuffYUVHeader(const MediaFormat& format, BitmapHeader& header)
{
    ToBitmapHeaderEncoded(format, header);
    header.bit_count = std::max<uint16_t>(header.bit_count, 24);
    header.size += format.encoded_video.private_size;
}

}  // namespace kelvane
