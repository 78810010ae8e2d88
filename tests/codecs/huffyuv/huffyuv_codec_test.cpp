#include <gtest/gtest.h>

#include <algorithm>

#include "base/status.h"
#include "codecs/convert.h"
#include "codecs/huffyuv/huffyuv_colour.h"
#include "codecs/huffyuv/huffyuv_decoder.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
#include "codecs/huffyuv/huffyuv_tables.h"
#include "picture/packing.h"
#include "picture/yuv_to_rgb.h"
#include "support/drawn_picture.h"

namespace kelvane {
namespace {

constexpr int32_t kWidth = 32, kHeight = 12;
constexpr size_t kPixels = kWidth * kHeight;

Bytes First(const Bytes& bytes, size_t size)
{
    return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)};
}

Converted Convert(Codec& codec, const Bytes& input, size_t room)
{
    return Convert(codec, input, Bytes(room, 0xEE));
}

// An encoder set to this size.
struct Encoder : HuffYUVEncoder {
    Encoder(uint32_t from, uint32_t stored)
    {
        EXPECT_EQ(kOK, SetFormats(Raw(from, kWidth, kHeight),
                                  Encoded(kEncodingHuffYUV, stored, kWidth, kHeight)));
    }
};

// Codes a picture and decodes it again, through the format that the encoder gives out.
Bytes ThroughBoth(uint32_t from, uint32_t stored, uint32_t to, const Bytes& picture)
{
    Encoder encoder(from, stored);
    const Converted frame = Convert(encoder, picture, 12 * kPixels);
    EXPECT_TRUE(frame.size);
    HuffYUVDecoder decoder;
    EXPECT_EQ(kOK, decoder.SetFormats(encoder.OutputFormat(), Raw(to, kWidth, kHeight)));
    return Convert(decoder, frame.Made(), 4 * kPixels).Made();
}

TEST(HuffYUVCodecs, MeetTheFormatsOfTheTwoSides)
{
    const Bytes narrow = DrawPicture(kWidth, kHeight, 3, 20);
    Bytes wide(4 * kPixels);
    Rgb24ToRgb32(narrow.data(), wide.data(), kPixels, 0);
    EXPECT_EQ(narrow, ThroughBoth(kBGR24, kBGR24, kBGR24, narrow));
    EXPECT_EQ(wide, ThroughBoth(kBGR24, kBGR24, kBGRX32, narrow));
    EXPECT_EQ(wide, ThroughBoth(kBGRX32, kBGRX32, kBGRA32, wide));
    EXPECT_EQ(narrow, ThroughBoth(kBGRA32, kBGRX32, kBGR24, wide));
    EXPECT_EQ(narrow, ThroughBoth(kBGR24, kBGRX32, kBGR24, narrow))
        << "the kind follows the picture";

    // Stored as YUV, top row first.
    Bytes yuv(2 * kPixels);
    BottomUpRgbToYuy2(narrow.data(), 3, kWidth, kHeight, yuv.data());
    for (const Bytes& bytes :
         {ThroughBoth(kBGR24, kYUY2, kYUY2, narrow), ThroughBoth(kBGRX32, kYUY2, kYUY2, wide),
          ThroughBoth(kBGR24, kBGR24, kYUY2, narrow)})
        EXPECT_EQ(yuv, bytes);
    // And back to RGB, bottom row first.
    Bytes rgb(4 * kPixels);
    YuvToRgb(yuv.data(), kYUY2, rgb.data(), kBGRX32, kWidth, kHeight);
    SwapVertical(rgb.data(), 4 * kWidth, kHeight);
    EXPECT_EQ(rgb, ThroughBoth(kYUY2, kYUY2, kBGRX32, yuv));
    Rgb24ToRgb32(ThroughBoth(kYUY2, kYUY2, kBGR24, yuv).data(), wide.data(), kPixels, 0);
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
    } const rows[] = {{kUYVY, kUYVY, kMedian, 16, 24, 232},
                      {kBGR24, kYUY2, kMedian, 16, 24, 232},
                      {kBGR24, kBGR24, kGradientDecorrelated, 24, 24, 264},
                      {kBGRX32, kBGRA32, kGradientDecorrelated, 32, 32, 264}};
    for (const auto& row : rows) {
        Encoder encoder(row.from, row.stored);
        EXPECT_TRUE(Convert(encoder, Bytes(4 * kPixels), 12 * kPixels).size);
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
    Encoder encoder(kBGRX32, kBGRX32);
    const Bytes noise = DrawPicture(kWidth, kHeight, 4, 255);
    const size_t size = Convert(encoder, noise, 12 * kPixels).size.value_or(0);
    EXPECT_GT(size, noise.size()) << "noise takes more than the picture";
    EXPECT_EQ(size, Convert(encoder, noise, size).size);
    for (size_t room = 0; room < size; room += room < 16 ? 1 : 101)
        EXPECT_FALSE(Convert(encoder, noise, room).size) << room;
    EXPECT_FALSE(Convert(encoder, Bytes(4 * kPixels - 1), 12 * kPixels).size);

    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kYUY2, 5, 4), Encoded(kEncodingHuffYUV, kYUY2, 5, 4)));
    EXPECT_FALSE(Convert(encoder, noise, 12 * kPixels).size) << "half a pair";
}

TEST(HuffYUVDecoder, RefusesFramesThatEndBeforeThePicture)
{
    for (const auto& [space, pixel_bytes] : {std::pair(kYUY2, 2u), {kBGR24, 3}, {kBGRX32, 4}}) {
        Encoder encoder(space, space);
        const Bytes picture = DrawPicture(kWidth, kHeight, pixel_bytes, 20);
        Bytes frame = Convert(encoder, picture, 12 * kPixels).Made();
        HuffYUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(encoder.OutputFormat(), encoder.InputFormat()));
        for (size_t size = 0; size < frame.size(); size += size < 12 ? 1 : 37)
            EXPECT_FALSE(Convert(decoder, First(frame, size), pixel_bytes * kPixels).size) << size;
        EXPECT_FALSE(Convert(decoder, frame, pixel_bytes * kPixels - 1).size);
        // What follows the picture does not count.
        frame.insert(frame.end(), 100'003, uint8_t{0xA5});
        const Converted longer = Convert(decoder, frame, 4 * kPixels);
        EXPECT_EQ(picture, longer.Made());
    }
}

TEST(HuffYUVDecoder, RefusesHeadersThatDescribeNoStream)
{
    const Bytes good = MakeHuffYUVExtension(16, kMedian);
    const auto ofLengths = [](std::initializer_list<uint8_t> text) {
        Bytes extension = {kMedian, 16, 0, 0};
        for (int plane = 0; plane < 3; plane++)
            extension.insert(extension.end(), text);
        return extension;
    };
    const auto decodes = [](const Bytes& extension) {
        MediaFormat format = Encoded(kEncodingHuffYUV, kYUY2, kWidth, kHeight);
        format.encoded_video.private_data = extension.data();
        format.encoded_video.private_size = static_cast<uint32_t>(extension.size());
        HuffYUVDecoder decoder;
        EXPECT_EQ(kOK, decoder.SetFormats(format, Raw(kYUY2, kWidth, kHeight)));
        // Long enough even for the longest codes, which zeros mean.
        return Convert(decoder, Bytes(16 * kPixels), 4 * kPixels).size.has_value();
    };
    EXPECT_TRUE(decodes(ofLengths({8, 255, 8, 1})));
    EXPECT_TRUE(decodes(First(good, 4 + 187))) << "without the final 00";

    const struct {
        const char* what;
        size_t at;
        uint8_t value;
    } changes[] = {{"a method of other kinds", 0, 1 + 64},
                   {"no method", 0, 3},
                   {"no kind", 1, 48},
                   {"no kind", 1, 12},
                   {"tables in each frame", 2, 0x40},
                   {"another format", 3, 1},
                   {"an incomplete code", 4, 0x43},
                   {"more codes than there is room for", 4, 0x41}};
    for (const auto& change : changes) {
        Bytes changed = good;
        changed[change.at] = change.value;
        EXPECT_FALSE(decodes(changed)) << change.what;
    }
    EXPECT_FALSE(decodes(ofLengths({}))) << "no text";
    EXPECT_FALSE(decodes(ofLengths({0, 255, 0, 1}))) << "no symbols";
    EXPECT_FALSE(decodes(ofLengths({1, 0}))) << "a run of nothing";
    EXPECT_FALSE(decodes(ofLengths({8, 255, 8, 2}))) << "257 lengths";
    for (const size_t size : {1, 3, 4, 5, 60, 190 - 4})
        EXPECT_FALSE(decodes(First(good, size))) << size;

    HuffYUVDecoder unset;
    EXPECT_FALSE(Convert(unset, Bytes(100), 100).size);
}

// Tables in the text of the header fit any kind; there are but three of them.
TEST(HuffYUVDecoder, TakesNoPixelsOfOtherSizes)
{
    const auto decodes = [](const Bytes& data) {
        MediaFormat format = Encoded(kEncodingHuffYUV, kBGR24, kWidth, kHeight);
        format.encoded_video.private_data = data.data();
        format.encoded_video.private_size = static_cast<uint32_t>(data.size());
        HuffYUVDecoder decoder;
        EXPECT_EQ(kOK, decoder.SetFormats(format, Raw(kBGRX32, kWidth, kHeight)));
        return Convert(decoder, Bytes(16 * kPixels), 4 * kPixels).size.has_value();
    };
    Bytes left = MakeHuffYUVExtension(24, kLeft);
    for (uint8_t bits = 1; bits < 64; bits++) {
        const bool exists = bits / 8 == 2 || bits / 8 == 3 || bits / 8 == 4;
        left[1] = bits;
        EXPECT_EQ(exists, decodes(left)) << int{bits};
        EXPECT_EQ(exists, decodes({uint8_t(bits & ~7), 0})) << int{bits} << ", without tables";
    }
}

}  // namespace
}  // namespace kelvane
