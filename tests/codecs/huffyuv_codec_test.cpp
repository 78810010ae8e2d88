#include <gtest/gtest.h>

#include <algorithm>

#include "base/status.h"
#include "codecs/huffyuv_colour.h"
#include "codecs/huffyuv_decoder.h"
#include "codecs/huffyuv_encoder.h"
#include "codecs/huffyuv_tables.h"
#include "picture/packing.h"
#include "picture/yuv_to_rgb.h"
#include "support/drawn_picture.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

constexpr int32_t kWidth = 32, kHeight = 12;
constexpr size_t kPixels = kWidth * kHeight;

struct Converted {
    int status;
    Bytes bytes;  // as many as were produced
};

Converted Convert(Codec& codec, const Bytes& input, size_t room)
{
    const Bytes exact(input);
    Bytes output(room, 0xEE);
    uint32_t inputSize = static_cast<uint32_t>(exact.size());
    uint32_t outputSize = static_cast<uint32_t>(room);
    const int status = codec.Convert(exact.data(), inputSize, output.data(), outputSize, 0);
    output.resize(outputSize);
    return {status, output};
}

MediaFormat Stream(uint32_t space, const Bytes& extension)
{
    MediaFormat format = Encoded(kEncodingHuffYUV, space, kWidth, kHeight);
    format.encoded_video.private_data = extension.data();
    format.encoded_video.private_size = static_cast<uint32_t>(extension.size());
    return format;
}

// Codes a picture and decodes it again, through the format that the encoder gives out.
Converted ThroughBoth(uint32_t from, uint32_t stored, uint32_t to, const Bytes& picture)
{
    HuffYUVEncoder encoder;
    HuffYUVDecoder decoder;
    EXPECT_EQ(kOK, encoder.SetFormats(Raw(from, kWidth, kHeight),
                                      Encoded(kEncodingHuffYUV, stored, kWidth, kHeight)));
    const Converted frame = Convert(encoder, picture, 12 * kPixels);
    EXPECT_EQ(kOK, frame.status);
    EXPECT_EQ(kOK, decoder.SetFormats(encoder.OutputFormat(), Raw(to, kWidth, kHeight)));
    return Convert(decoder, frame.bytes, 4 * kPixels);
}

TEST(HuffYUVCodecs, MeetTheFormatsOfTheTwoSides)
{
    const Bytes narrow = DrawPicture(kWidth, kHeight, 3, 20);
    Bytes wide(4 * kPixels);
    Rgb24ToRgb32(narrow.data(), wide.data(), kPixels, 0);
    EXPECT_EQ(narrow, ThroughBoth(kBGR24, kBGR24, kBGR24, narrow).bytes);
    EXPECT_EQ(wide, ThroughBoth(kBGR24, kBGR24, kBGRX32, narrow).bytes);
    EXPECT_EQ(wide, ThroughBoth(kBGRX32, kBGRX32, kBGRA32, wide).bytes);
    EXPECT_EQ(narrow, ThroughBoth(kBGRA32, kBGRX32, kBGR24, wide).bytes);
    EXPECT_EQ(narrow, ThroughBoth(kBGR24, kBGRX32, kBGR24, narrow).bytes)
        << "the kind follows the picture";

    // Stored as YUV, top row first; the size reported for it counts four bytes a pixel.
    Bytes yuv(2 * kPixels);
    BottomUpRgbToYuy2(narrow.data(), 3, kWidth, kHeight, yuv.data());
    for (const Converted& c :
         {ThroughBoth(kBGR24, kYUY2, kYUY2, narrow), ThroughBoth(kBGRX32, kYUY2, kYUY2, wide),
          ThroughBoth(kBGR24, kBGR24, kYUY2, narrow)}) {
        ASSERT_EQ(4 * kPixels, c.bytes.size());
        EXPECT_TRUE(std::equal(yuv.begin(), yuv.end(), c.bytes.begin()));
    }
    // And back to RGB, bottom row first.
    Bytes rgb(4 * kPixels);
    YuvToRgb(yuv.data(), kYUY2, rgb.data(), kBGRX32, kWidth, kHeight);
    SwapVertical(rgb.data(), 4 * kWidth, kHeight);
    EXPECT_EQ(rgb, ThroughBoth(kYUY2, kYUY2, kBGRX32, yuv).bytes);
    const Bytes packed = ThroughBoth(kYUY2, kYUY2, kBGR24, yuv).bytes;
    Rgb24ToRgb32(packed.data(), wide.data(), kPixels, 0);
    EXPECT_EQ(rgb, wide);
}

TEST(HuffYUVCodecs, ConvertColoursByTheirOwnFormula)
{
    // Two pairs in the lower row, of which the picture's memory begins with: white and black;
    // red and blue. The upper row is grey.
    const Bytes picture = {255, 255, 255, 0,   0,   0,   0,   0,   255, 255, 0,   0,
                           128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128};
    Bytes yuv(16);
    BottomUpRgbToYuy2(picture.data(), 3, 4, 2, yuv.data());
    EXPECT_EQ((Bytes{126, 128, 126, 128, 126, 128, 126, 128,  //
                     235, 128, 16, 128, 81, 165, 41, 175}),
              yuv);
}

TEST(HuffYUVEncoder, HandsOutTheHeaderOfItsStream)
{
    struct {
        uint32_t from, stored;
        uint8_t method, kind;
        uint16_t bit_count;
        uint32_t size;
    } const rows[] = {{kYUY2, kYUY2, kMedian, 16, 24, 232},
                      {kUYVY, kUYVY, kMedian, 16, 24, 232},
                      {kBGR24, kYUY2, kMedian, 16, 24, 232},
                      {kBGR24, kBGR24, kGradientDecorrelated, 24, 24, 264},
                      {kBGRX32, kBGRA32, kGradientDecorrelated, 32, 32, 264}};
    for (const auto& row : rows) {
        HuffYUVEncoder encoder;
        ASSERT_EQ(kOK, encoder.SetFormats(Raw(row.from, kWidth, kHeight),
                                          Encoded(kEncodingHuffYUV, row.stored, kWidth, kHeight)));
        EXPECT_EQ(kOK, Convert(encoder, Bytes(4 * kPixels), 12 * kPixels).status);
        BitmapHeader header;
        ToHuffYUVHeader(encoder.OutputFormat(), header);
        EXPECT_EQ(row.size, header.size);
        EXPECT_EQ(row.bit_count, header.bit_count);
        const uint8_t* extension = encoder.OutputFormat().encoded_video.private_data;
        ASSERT_TRUE(extension);
        EXPECT_EQ((Bytes{row.method, row.kind, 0, 0}), Bytes(extension, extension + 4));
    }
}

TEST(HuffYUVEncoder, NeverOverrunsItsBuffer)
{
    HuffYUVEncoder encoder;
    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGRX32, kWidth, kHeight),
                                      Encoded(kEncodingHuffYUV, kBGRX32, kWidth, kHeight)));
    const Bytes noise = DrawPicture(kWidth, kHeight, 4, 255);
    const size_t size = Convert(encoder, noise, 12 * kPixels).bytes.size();
    EXPECT_GT(size, noise.size()) << "noise takes more than the picture";
    EXPECT_EQ(size, Convert(encoder, noise, size).bytes.size());
    for (size_t room = 0; room < size; room += room < 16 ? 1 : 101)
        EXPECT_EQ(kError, Convert(encoder, noise, room).status) << room;
    EXPECT_EQ(kError, Convert(encoder, Bytes(4 * kPixels - 1), 12 * kPixels).status);

    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kYUY2, 5, 4), Encoded(kEncodingHuffYUV, kYUY2, 5, 4)));
    EXPECT_EQ(kError, Convert(encoder, noise, 12 * kPixels).status) << "half a pair";
}

TEST(HuffYUVDecoder, RefusesFramesThatEndBeforeThePicture)
{
    struct {
        uint32_t from, to;
        size_t pixel_bytes;
    } const rows[] = {{kYUY2, kYUY2, 2}, {kBGR24, kBGR24, 3}, {kBGRX32, kBGRX32, 4}};
    for (const auto& row : rows) {
        HuffYUVEncoder encoder;
        HuffYUVDecoder decoder;
        const MediaFormat raw = Raw(row.from, kWidth, kHeight);
        ASSERT_EQ(kOK,
                  encoder.SetFormats(raw, Encoded(kEncodingHuffYUV, row.from, kWidth, kHeight)));
        const Bytes picture = DrawPicture(kWidth, kHeight, row.pixel_bytes, 20);
        Bytes frame = Convert(encoder, picture, 12 * kPixels).bytes;
        ASSERT_EQ(kOK, decoder.SetFormats(encoder.OutputFormat(), raw));
        for (size_t size = 0; size < frame.size(); size += size < 12 ? 1 : 37) {
            const Bytes cut(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(size));
            const Converted c = Convert(decoder, cut, row.pixel_bytes * kPixels);
            EXPECT_EQ(kError, c.status) << size;
            EXPECT_TRUE(c.bytes.empty());
        }
        EXPECT_EQ(kError, Convert(decoder, frame, row.pixel_bytes * kPixels - 1).status);
        // What follows the picture does not count.
        frame.insert(frame.end(), 100'003, uint8_t{0xA5});
        const Converted longer = Convert(decoder, frame, 4 * kPixels);
        EXPECT_EQ(kOK, longer.status);
        EXPECT_TRUE(std::equal(picture.begin(), picture.end(), longer.bytes.begin()));
    }
}

TEST(HuffYUVDecoder, RefusesHeadersThatDescribeNoStream)
{
    const Bytes good = MakeHuffYUVExtension(16, kMedian);
    const auto with = [&](size_t at, uint8_t value) {
        Bytes changed = good;
        changed[at] = value;
        return changed;
    };
    const auto ofLengths = [](std::initializer_list<uint8_t> text) {
        Bytes extension = {kMedian, 16, 0, 0};
        for (int plane = 0; plane < 3; plane++)
            extension.insert(extension.end(), text);
        return extension;
    };
    const auto status = [](const Bytes& extension, uint32_t space = kYUY2) {
        HuffYUVDecoder decoder;
        EXPECT_EQ(kOK, decoder.SetFormats(Stream(space, extension), Raw(kYUY2, kWidth, kHeight)));
        // Long enough even for the longest codes, which zeros mean.
        return Convert(decoder, Bytes(16 * kPixels), 4 * kPixels).status;
    };
    EXPECT_EQ(kOK, status(ofLengths({8, 255, 8, 1})));
    EXPECT_EQ(kOK, status(Bytes(good.begin(), good.begin() + 4 + 187))) << "without the final 00";

    EXPECT_EQ(kError, status(with(0, 1 + 64))) << "a method of other kinds";
    EXPECT_EQ(kError, status(with(0, 3)));
    EXPECT_EQ(kError, status(with(1, 48))) << "no kind";
    EXPECT_EQ(kError, status(with(1, 12)));
    EXPECT_EQ(kError, status(with(2, 0x40))) << "tables in each frame";
    EXPECT_EQ(kError, status(with(3, 1))) << "another format";
    EXPECT_EQ(kError, status(with(4, 0x43))) << "an incomplete code";
    EXPECT_EQ(kError, status(with(4, 0x41))) << "more codes than there is room for";
    EXPECT_EQ(kError, status(ofLengths({}))) << "no text";
    EXPECT_EQ(kError, status(ofLengths({0, 255, 0, 1}))) << "no symbols";
    EXPECT_EQ(kError, status(ofLengths({1, 0}))) << "a run of nothing";
    EXPECT_EQ(kError, status(ofLengths({8, 255, 8, 2}))) << "257 lengths";
    for (const size_t size : {1, 3, 4, 5, 60, 190 - 4})
        EXPECT_EQ(kError, status(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(size))))
            << size;

    HuffYUVDecoder unset;
    EXPECT_EQ(kError, Convert(unset, Bytes(100), 100).status);
}

TEST(HuffYUVFormat, TakesTheRowStepFromTheHeaderOrTheHeight)
{
    struct {
        int32_t height;
        uint8_t flags;
        size_t step;
    } const rows[] = {{288, 0, 1},    {289, 0, 2},    {576, 0x20, 1}, {100, 0x10, 2},
                      {576, 0x2F, 1}, {288, 0x30, 1}, {480, 0x30, 2}};
    for (const auto& row : rows) {
        BitmapHeader header;
        header.width = 8;
        header.height = row.height;
        header.bit_count = 24;
        Bytes extension = MakeHuffYUVExtension(24, kGradientDecorrelated);
        extension[2] = row.flags;
        HuffYUVFormat format;
        ASSERT_EQ(kOK, ReadHuffYUVFormat(header, extension, format));
        EXPECT_EQ(row.step, format.row_step) << row.height << ' ' << int{row.flags};
    }
}

}  // namespace
}  // namespace kelvane
