#include "codecs/animation/qtrle_decoder.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "base/byte_cursor.h"
#include "base/four_cc.h"
#include "codecs/animation/qtrle_format.h"
#include "codecs/raw/pixel_order.h"
#include "format/picture_size.h"

namespace kelvane {

namespace {

constexpr size_t kSizeField = 4;      // bytes
constexpr size_t kSmallestFrame = 8;  // one that changes a line; a shorter one changes nothing

// How pixels go from the stream to the picture.
struct RLEPixels {
    size_t from;  // bytes of a pixel in the stream
    size_t to;    // bytes of a pixel in the picture
    PixelKernel move;
};

RLEPixels PixelsFor(const MediaFormat& encoded, const MediaFormat& raw)
{
    const size_t from = RLEPixelBytes(encoded);
    if (raw.Space() == kBGR24) return {from, 3, from == 3 ? SwapRedBlue : ReverseDropFirst};
    return {from, 4, from == 3 ? SwapAppendOpaque : ReverseOpaque};
}

void FillRun(const RLEPixels& pixels, const uint8_t* source, uint8_t* to, size_t count)
{
    uint8_t pixel[4];
    pixels.move(source, pixel, 1);
    for (size_t i = 0; i < count; i++)
        memcpy(to + pixels.to * i, pixel, pixels.to);
}

// Takes the codes of one line behind its first skip byte. False when they end before the line does
// or leave it backwards.
bool DecodeLine(ByteReader& in, const RLEPixels& pixels, size_t x, std::span<uint8_t> row)
{
    const size_t width = row.size() / pixels.to;
    for (;;) {
        const size_t code = in.Get8();
        if (in.Failed()) return false;
        if (code == kRLEEndOfLine) return true;
        if (code == 0) {
            x += in.Get8();
            if (x == 0) return false;
            x--;
            continue;
        }
        const bool literal = code <= kRLELastLiteral;
        const size_t count = literal ? code : 256 - code;
        const auto source = in.Take(pixels.from * (literal ? count : 1));
        if (in.Failed()) return false;
        const size_t visible = std::min(count, width - std::min(x, width));
        uint8_t* to = row.data() + pixels.to * std::min(x, width);
        if (literal)
            pixels.move(source.data(), to, visible);
        else
            FillRun(pixels, source.data(), to, visible);
        x += count;
    }
}

// The data may end behind any line. False when they end elsewhere.
bool DecodeFrame(ByteReader in, const RLEPixels& pixels, std::span<uint8_t> picture,
                 size_t rowBytes)
{
    const size_t height = picture.size() / rowBytes;
    size_t line = 0;
    size_t end = height;
    in.Skip(4);  // the size; that of the buffer counts
    if (in.Get16() & kRLELinesStated) {
        line = in.Get16();
        in.Skip(2);
        end = std::min<size_t>(height, line + in.Get16());
        in.Skip(2);
    }
    for (; line < end && in.Left() > 0; line++) {
        const size_t skip = in.Get8();
        if (skip == 0) break;
        if (!DecodeLine(in, pixels, skip - 1, picture.subspan(line * rowBytes, rowBytes)))
            return false;
    }
    return !in.Failed();
}

}  // namespace

const CodecDescriptor& QTRLEDecoder::Descriptor()
{
    static const CodecDescriptor descriptor = {
        "QuickTime Animation (RLE) Decoder",
        "QT RLE Decoder",
        "",
        kDecoder,
        "rle "_4cc,
        EncodedPattern(kEncodingQTRLE),
        RawPatterns({kBGRX32, kBGRA32, kBGR24}),
        MakeCodec<QTRLEDecoder>,
    };
    return descriptor;
}

std::optional<size_t> QTRLEDecoder::Convert(std::span<const uint8_t> input,
                                            std::span<uint8_t> output)
{
    const RLEPixels pixels = PixelsFor(fInput, fOutput);
    const PictureSize size(fOutput, pixels.to);
    if (pixels.from == 0 || input.size() < kSizeField || !size.FitsIn(output.size()))
        return std::nullopt;
    if (size.bytes > 0 && input.size() >= kSmallestFrame &&
        !DecodeFrame(ByteReader(input, ByteOrder::kBig), pixels, output.first(size.bytes),
                     size.row_bytes))
        return std::nullopt;
    return size.bytes;
}

}  // namespace kelvane
