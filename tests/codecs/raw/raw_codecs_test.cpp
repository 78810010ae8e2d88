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
    for (size_t from = 0; from < 5; from++)
        for (size_t place = 0; place < 20; place++) {
            const size_t to = place % 5;
            const size_t pixels = 65 + place / 5;  // whole vectors and each rest
            SCOPED_TRACE(testing::Message() << kSpaces[from] << " to " << kSpaces[to]);
            RawRGBCodec codec;
            ASSERT_EQ(kOK, codec.SetFormats(Raw(kSpaces[from], 1, 1), Raw(kSpaces[to], 1, 1)));
            // Each pixel is the one before it plus 1 in all its bytes.
            Bytes input, wanted;
            for (size_t i = 0; i < pixels; i++) {
                for (size_t k = 0; k < (wide(kSpaces[from]) ? 4 : 3); k++)
                    input.push_back(static_cast<uint8_t>(k + 1 + i));
                for (const uint8_t byte : expected[from][to])
                    wanted.push_back(byte == 255 ? byte : static_cast<uint8_t>(byte + i));
            }
            const Converted c = Convert(codec, input, Bytes(5 * pixels));
            ASSERT_EQ(wanted, c.Made());
            EXPECT_EQ(0, c.output[wanted.size()]) << "written behind the end";
        }
}

TEST(RawRGBCodec, CountsPixelsByTheSmallerBuffer)
{
    RawRGBCodec codec;
    ASSERT_EQ(kOK, codec.SetFormats(Raw(kBGR24, 720, 576), Raw(kBGRX32, 720, 576)));
    EXPECT_EQ(12u, Convert(codec, Bytes(9), Bytes(400)).size);
    EXPECT_EQ(8u, Convert(codec, Bytes(9), Bytes(11)).size);
    EXPECT_EQ(kError, codec.SetOutputFormat(Raw(kYUY2, 720, 576)));
}

TEST(YUVCodecs, FillAPictureOfTheOutputFormat)
{
    for (const auto& [rgb, yuv] : {std::pair(kBGRX32, kYUY2),
                                   {kBGR24, kYUY2},
                                   {kBGRA32, kUYVY},
                                   {kBGR24, kYUVSigned},
                                   {kBGRX32, kVYU24},
                                   {kBGR24, kVYU24}}) {
        SCOPED_TRACE(testing::Message() << rgb << ' ' << yuv);
        const size_t rgb_size = rgb == kBGR24 ? 48 : 64, yuv_size = yuv == kVYU24 ? 48 : 32;
        YUVEncoder encoder;
        ASSERT_EQ(kOK, encoder.SetFormats(Raw(rgb, 8, 2), Raw(yuv, 8, 2)));
        const Converted coded = Convert(encoder, Bytes(rgb_size, 255), Bytes(64, 7));
        ASSERT_EQ(yuv_size, coded.size);
        EXPECT_NE(7, coded.output[yuv_size - 1]);
        EXPECT_EQ(7, coded.output[yuv_size]);
        EXPECT_FALSE(Convert(encoder, Bytes(rgb_size), Bytes(yuv_size - 1)).size);
        EXPECT_FALSE(Convert(encoder, Bytes(rgb_size - 1), Bytes(yuv_size)).size);
        if (yuv == kVYU24) continue;

        YUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(Raw(yuv, 8, 2), Raw(rgb, 8, 2)));
        // Room for the picture is enough, although more would be filled.
        const Converted back = Convert(decoder, coded.Made(), Bytes(rgb_size));
        EXPECT_EQ(rgb_size, back.size);
        EXPECT_NEAR(255, back.output[0], 2);
        EXPECT_FALSE(Convert(decoder, coded.Made(), Bytes(rgb_size - 1)).size);
        EXPECT_FALSE(Convert(decoder, Bytes(31), Bytes(64)).size);
    }
}

TEST(YUVCodecs, AcceptOtherCodesAndMakeNothing)
{
    YUVEncoder encoder;
    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGRX32, 8, 2), Raw(0x4000, 8, 2)));
    const auto makes_nothing = [](Codec& codec) {
        const Converted c = Convert(codec, Bytes(100), Bytes(100, 1));
        return !c.size && c.output == Bytes(100, 1);
    };
    EXPECT_TRUE(makes_nothing(encoder));
    EXPECT_EQ(kError, encoder.SetInputFormat(Raw(kRGB24, 8, 2)));
    YUVDecoder decoder;
    ASSERT_EQ(kOK, decoder.SetFormats(Raw(kVYU24, 8, 2), Raw(kBGR24, 8, 2)));
    EXPECT_TRUE(makes_nothing(decoder));
}

}  // namespace
}  // namespace kelvane
