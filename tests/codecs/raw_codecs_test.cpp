#include <gtest/gtest.h>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/raw_rgb_codec.h"
#include "codecs/yuv_decoder.h"
#include "codecs/yuv_encoder.h"
#include "support/test_formats.h"

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
    for (size_t from = 0; from < 5; from++) {
        for (size_t to = 0; to < 5; to++) {
            SCOPED_TRACE(testing::Message() << kSpaces[from] << " to " << kSpaces[to]);
            RawRGBCodec codec;
            ASSERT_EQ(kOK, codec.SetFormats(Raw(kSpaces[from], 1, 1), Raw(kSpaces[to], 1, 1)));
            // Each pixel is the one before it plus 1 in all its bytes.
            Bytes input, output(5 * kPixels), wanted;
            for (size_t i = 0; i < kPixels; i++) {
                for (size_t k = 0; k < (wide(kSpaces[from]) ? 4 : 3); k++)
                    input.push_back(static_cast<uint8_t>(k + 1 + i));
                for (const uint8_t byte : expected[from][to])
                    wanted.push_back(byte == 255 ? byte : static_cast<uint8_t>(byte + i));
            }
            uint32_t consumed = static_cast<uint32_t>(input.size());
            uint32_t produced = static_cast<uint32_t>(output.size());
            EXPECT_EQ(kError, codec.Convert(input.data(), consumed, output.data(), produced, 0));
            EXPECT_EQ(input.size(), consumed);
            ASSERT_EQ(wanted.size(), produced);
            EXPECT_EQ(0, output[produced]) << "written behind the end";
            output.resize(produced);
            EXPECT_EQ(wanted, output);
        }
    }
}

TEST(RawRGBCodec, CountsPixelsByTheSmallerBuffer)
{
    RawRGBCodec codec;
    ASSERT_EQ(kOK, codec.SetFormats(Raw(kBGR24, 720, 576), Raw(kBGRX32, 720, 576)));
    const Bytes input(9);
    Bytes output(400);
    uint32_t consumed = 9, produced = 400;
    EXPECT_EQ(kError, codec.Convert(input.data(), consumed, output.data(), produced, 0));
    EXPECT_EQ(9u, consumed);
    EXPECT_EQ(12u, produced);
    EXPECT_EQ(kError, codec.SetOutputFormat(Raw(kYUY2, 720, 576)));
}

struct YUVRow {
    uint32_t rgb, yuv;
    uint32_t rgb_size, yuv_size;  // reported, 8 by 2 pixels
};

TEST(YUVCodecs, ReportTheSizesThatCallersKnow)
{
    const YUVRow rows[] = {
        {kBGRX32, kYUY2, 64, 32},     {kBGR24, kYUY2, 48, 32},   {kBGRA32, kUYVY, 64, 32},
        {kBGR24, kYUVSigned, 48, 32}, {kBGRX32, kVYU24, 64, 32}, {kBGR24, kVYU24, 64, 32},
    };
    for (const YUVRow& row : rows) {
        SCOPED_TRACE(testing::Message() << row.rgb << ' ' << row.yuv);
        YUVEncoder encoder;
        ASSERT_EQ(kOK, encoder.SetFormats(Raw(row.rgb, 8, 2), Raw(row.yuv, 8, 2)));
        Bytes rgb(64, 255), yuv(64);
        uint32_t rgbSize = 64, yuvSize = 64;
        EXPECT_EQ(kOK, encoder.Convert(rgb.data(), rgbSize, yuv.data(), yuvSize, 0));
        EXPECT_EQ(row.rgb_size, rgbSize);
        EXPECT_EQ(row.yuv_size, yuvSize);
        EXPECT_EQ(row.yuv == kVYU24, yuv[32] != 0) << "three bytes a pixel are written";
        yuvSize = 31;
        EXPECT_EQ(kOK, encoder.Convert(rgb.data(), rgbSize, yuv.data(), yuvSize, 0));
        EXPECT_EQ(0u, yuvSize);
        if (row.yuv == kVYU24) continue;

        YUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(Raw(row.yuv, 8, 2), Raw(row.rgb, 8, 2)));
        rgbSize = row.rgb_size;
        yuvSize = 64;
        // Room for what is reported is enough, although more would be filled.
        Bytes decoded(row.rgb_size);
        EXPECT_EQ(kOK, decoder.Convert(yuv.data(), yuvSize, decoded.data(), rgbSize, 0));
        EXPECT_EQ(row.rgb_size, rgbSize);
        EXPECT_EQ(32u, yuvSize);
        EXPECT_NEAR(255, decoded[0], 2);
    }
}

TEST(YUVCodecs, AcceptOtherCodesAndDoNothing)
{
    YUVEncoder encoder;
    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGRX32, 8, 2), Raw(0x4000, 8, 2)));
    uint32_t consumed = 7, produced = 9;
    EXPECT_EQ(kOK, encoder.Convert(nullptr, consumed, nullptr, produced, 0));
    EXPECT_EQ(7u, consumed);
    EXPECT_EQ(9u, produced);
    EXPECT_EQ(kError, encoder.SetInputFormat(Raw(kRGB24, 8, 2)));
    YUVDecoder decoder;
    ASSERT_EQ(kOK, decoder.SetFormats(Raw(kVYU24, 8, 2), Raw(kBGR24, 8, 2)));
    EXPECT_EQ(kOK, decoder.Convert(nullptr, consumed, nullptr, produced, 0));
    EXPECT_EQ(7u, consumed);
}

}  // namespace
}  // namespace kelvane
