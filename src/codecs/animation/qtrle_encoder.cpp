#include "codecs/animation/qtrle_encoder.h"

#include <algorithm>

#include "base/byte_cursor.h"
#include "base/four_cc.h"
#include "codecs/animation/qtrle_format.h"
#include "codecs/raw/pixel_order.h"
#include "format/picture_size.h"

namespace kelvane {

namespace {

PixelKernel KernelFor(size_t from, size_t to)
{
    if (to == 3) return from == 3 ? SwapRedBlue : SwapDropFourth;
    return from == 3 ? SwapPrependOpaque : ReverseBytes;
}

void WriteHeader(std::span<uint8_t> header, size_t frameSize, size_t lines)
{
    const auto put = [&](size_t at, size_t bytes, uint64_t value) {
        StoreBytes(header.subspan(at, bytes), value, ByteOrder::kBig);
    };
    put(0, 4, frameSize);
    put(4, 2, kRLELinesStated);
    put(6, 4, 0);  // start line, unused
    put(10, 2, lines);
    put(12, 2, 0);
}

}  // namespace

const CodecDescriptor& QTRLEEncoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "QuickTime Animation (RLE) Encoder",
        "QT RLE Encoder",
        "",
        kEncoder,
        "rlee"_4cc,
        RawPatterns({kBGRX32, kBGRA32, kBGR24}),
        EncodedPattern(kEncodingQTRLE),
        MakeCodec<QTRLEEncoder>,
    };
    return descriptor;
}

std::optional<size_t> QTRLEEncoder::Convert(std::span<const uint8_t> input,
                                            std::span<uint8_t> output)
{
    const size_t from = fInput.Space() == kBGR24 ? 3 : 4;
    const size_t to = RLEPixelBytes(fOutput);
    const PictureSize size(fInput, from);
    if (to == 0 || !size.FitsIn(input.size()) || size.height > UINT16_MAX) return std::nullopt;

    const size_t runs = (size.width + kRLELastLiteral - 1) / kRLELastLiteral;
    const size_t frameSize = kRLEHeaderSize + (2 + runs + size.width * to) * size.height;
    if (frameSize > output.size()) return std::nullopt;

    WriteHeader(output.first(kRLEHeaderSize), frameSize, size.height);
    const PixelKernel move = KernelFor(from, to);
    const uint8_t* source = input.data();
    uint8_t* at = output.data() + kRLEHeaderSize;
    for (size_t line = 0; line < size.height; line++) {
        *at++ = 1;  // skips nothing
        for (size_t left = size.width; left > 0;) {
            const size_t run = std::min(left, kRLELastLiteral);
            *at++ = static_cast<uint8_t>(run);
            move(source, at, run);
            source += from * run;
            at += to * run;
            left -= run;
        }
        *at++ = kRLEEndOfLine;
    }
    return frameSize;
}

}  // namespace kelvane
