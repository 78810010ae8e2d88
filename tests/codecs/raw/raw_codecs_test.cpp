#include <gtest/gtest.h>

#include "base/status.h"
#include "codecs/convert.h"
#include "codecs/raw/raw_rgb_codec.h"
#include "codecs/raw/yuv_decoder.h"
#include "codecs/raw/yuv_encoder.h"

namespace kelvane {
namespace {

TEST(RawRGBCodec, RepacksAPixelByTheTable)
{
    constexpr uint32_t kSpaces[] = {kBGR24, kRGB24, kRGBX32, kBGRX32, kBGRA32};
    const auto wide = [](uint32_t space) { return space != kBGR24 && space != kRGB24; };
    // Pixel 1 2 3 (4) of the row in the layout of the column.
    const Bytes expected[5][5] = {
        {{1, 2, 3}, {3, 2, 1}, {3, 2, 1, 255}, {1, 2, 3, 255}, {1, 2, 3, 255}},
        {{3, 2, 1}, {1, 2, 3}, {1, 2, 3, 255}, {3, 2, 1, 255}, {3, 2, 1, 255}},
        {{3, 2, 1}, {1, 2, 3}, {1, 2, 3, 4}, {4, 3, 2, 1}, {4, 3, 2, 1}},
        {{1, 2, 3}, {3, 2, 1}, {4, 3, 2, 1}, {1, 2, 3, 4}, {1, 2, 3, 4}},
        {{1, 2, 3}, {3, 2, 1}, {4, 3, 2, 1}, {1, 2, 3, 4}, {1, 2, 3, 4}},
    };
    // Enough pixels for whole vectors and a rest, and a multiple of four, below which narrowing
    // BGRX leaves bytes out.
    constexpr size_t kPixels = 68;
    for (size_t from = 0; from < 5; from++)
        for (size_t to = 0; to < 5; to++) {
            SCOPED_TRACE(testing::Message() << kSpaces[from] << " to " << kSpaces[to]);
            RawRGBCodec codec;
            ASSERT_EQ(kOK, codec.SetFormats(Raw(kSpaces[from], 1, 1), Raw(kSpaces[to], 1, 1)));
            // Each pixel is the one before it plus 1 in all its bytes.
            Bytes input, wanted;
            for (size_t i = 0; i < kPixels; i++) {
                for (size_t k = 0; k < (wide(kSpaces[from]) ? 4 : 3); k++)
                    input.push_back(static_cast<uint8_t>(k + 1 + i));
                for (const uint8_t byte : expected[from][to])
                    wanted.push_back(byte == 255 ? byte : static_cast<uint8_t>(byte + i));
            }
            const Converted c = Convert(codec, input, Bytes(5 * kPixels));
            EXPECT_EQ(kError, c.status);
            EXPECT_EQ(input.size(), c.consumed);
            ASSERT_EQ(wanted, c.Made());
            EXPECT_EQ(0, c.output[c.produced]) << "written behind the end";
        }
}

TEST(RawRGBCodec, CountsPixelsByTheSmallerBuffer)
{
    RawRGBCodec codec;
    ASSERT_EQ(kOK, codec.SetFormats(Raw(kBGR24, 720, 576), Raw(kBGRX32, 720, 576)));
    const Converted c = Convert(codec, Bytes(9), Bytes(400));
    EXPECT_EQ(kError, c.status);
    EXPECT_EQ(9u, c.consumed);
    EXPECT_EQ(12u, c.produced);
    EXPECT_EQ(kError, codec.SetOutputFormat(Raw(kYUY2, 720, 576)));
}

TEST(YUVCodecs, ReportTheSizesThatCallersKnow)
{
    const struct {
        uint32_t rgb, yuv;
        uint32_t rgb_size;  // reported, 8 by 2 pixels
    } rows[] = {{kBGRX32, kYUY2, 64},     {kBGR24, kYUY2, 48},   {kBGRA32, kUYVY, 64},
                {kBGR24, kYUVSigned, 48}, {kBGRX32, kVYU24, 64}, {kBGR24, kVYU24, 64}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.rgb << ' ' << row.yuv);
        YUVEncoder encoder;
        const MediaFormat rgb = Raw(row.rgb, 8, 2), yuv = Raw(row.yuv, 8, 2);
        ASSERT_EQ(kOK, encoder.SetFormats(rgb, yuv));
        const Converted coded = Convert(encoder, Bytes(64, 255), Bytes(64));
        EXPECT_EQ(kOK, coded.status);
        EXPECT_EQ(row.rgb_size, coded.consumed);
        EXPECT_EQ(32u, coded.produced);
        EXPECT_EQ(row.yuv == kVYU24, coded.output[32] != 0) << "three bytes a pixel are written";
        const Converted cut = Convert(encoder, Bytes(64), Bytes(31));
        EXPECT_EQ(kOK, cut.status);
        EXPECT_EQ(0u, cut.produced);
        if (row.yuv == kVYU24) continue;

        YUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(yuv, rgb));
        // Room for what is reported is enough, although more would be filled.
        const Converted back = Convert(decoder, coded.output, Bytes(row.rgb_size));
        EXPECT_EQ(kOK, back.status);
        EXPECT_EQ(row.rgb_size, back.produced);
        EXPECT_EQ(32u, back.consumed);
        EXPECT_NEAR(255, back.output[0], 2);
    }
}

TEST(YUVCodecs, AcceptOtherCodesAndDoNothing)
{
    YUVEncoder encoder;
    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGRX32, 8, 2), Raw(0x4000, 8, 2)));
    const auto does_nothing = [](Codec& codec) {
        const Converted c = Convert(codec, Bytes(7), Bytes(9, 1));
        return c.status == kOK && c.consumed == 7 && c.produced == 9 && c.output == Bytes(9, 1);
    };
    EXPECT_TRUE(does_nothing(encoder));
    EXPECT_EQ(kError, encoder.SetInputFormat(Raw(kRGB24, 8, 2)));
    YUVDecoder decoder;
    ASSERT_EQ(kOK, decoder.SetFormats(Raw(kVYU24, 8, 2), Raw(kBGR24, 8, 2)));
    EXPECT_TRUE(does_nothing(decoder));
}

}  // namespace
}  // namespace kelvane
