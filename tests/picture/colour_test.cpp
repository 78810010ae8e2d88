#include <gmock/gmock.h>

#include <algorithm>

#include "picture/packing.h"
#include "picture/random_picture.h"
#include "picture/rgb_to_yuv.h"
#include "picture/yuv_to_rgb.h"

namespace kelvane {
namespace {

using testing::ElementsAre;

// Rows shorter, as long and longer than the fast forms' blocks, odd numbers of pixels included.
constexpr Size kSizes[] = {{1, 1},  {2, 1},  {3, 3},   {5, 2},   {63, 3}, {64, 2},
                           {65, 5}, {66, 4}, {35, 41}, {129, 3}, {2, 65}};

using FromRgb = void (*)(const uint8_t*, ColourSpace, uint8_t*, int32_t, int32_t, WorkerPool*);
constexpr std::pair<FromRgb, ColourSpace> kFromRgb[] = {
    {RgbToYuy2, kYUY2}, {RgbToUyvy, kUYVY}, {RgbToYuvSigned, kYUVSigned}, {RgbToVyu, kVYU24}};

Bytes FromPixels(FromRgb kernel, const Bytes& bgr, size_t bytes)
{
    Bytes out(bytes);
    kernel(bgr.data(), kBGR24, out.data(), static_cast<int32_t>(bgr.size() / 3), 1, nullptr);
    return out;
}

TEST(RgbToYuv, FollowsTheFormulaWithoutRounding)
{
    const Bytes white_black = {255, 255, 255, 0, 0, 0};
    EXPECT_THAT(FromPixels(RgbToYuy2, white_black, 4), ElementsAre(234, 128, 16, 128));
    // Red: Y = 2150160 >> 15 = 65, U = -1228590 >> 15 = -38, V = 3657975 >> 15 = 111. Blue: Y =
    // 809880 >> 15 = 24, U = 111, V = -586500 >> 15 = -18. Means: U (90 + 239) >> 1, V (239 + 110)
    // >> 1.
    const Bytes red_blue = {0, 0, 255, 255, 0, 0};
    EXPECT_THAT(FromPixels(RgbToYuy2, red_blue, 4), ElementsAre(81, 164, 40, 174));
    EXPECT_THAT(FromPixels(RgbToUyvy, red_blue, 4), ElementsAre(164, 81, 174, 40));
    EXPECT_THAT(FromPixels(RgbToYuvSigned, red_blue, 4), ElementsAre(81, 36, 40, 46));
    EXPECT_THAT(FromPixels(RgbToVyu, red_blue, 6), ElementsAre(239, 81, 90, 174, 40, 164));
    const Bytes blue = {255, 0, 0};  // an odd last pixel is taken with a black one
    EXPECT_THAT(FromPixels(RgbToYuy2, blue, 2), ElementsAre(40, (239 + 128) >> 1));
}

TEST(RgbToYuv, FastFormGivesThePlainBytes)
{
    std::mt19937 random(31);
    WorkerPool pool(3);
    for (const auto& [run, to] : kFromRgb)
        for (const ColourSpace from : {kBGRX32, kBGR24})
            for (const auto& [width, height] : kSizes)
                for (size_t offset = 0; offset < 4; offset++) {
                    const auto pixels = static_cast<size_t>(width * height);
                    const ExactBytes source =
                        RandomBytes(pixels * (from == kBGR24 ? 3 : 4), random, offset);
                    ExactBytes fast(pixels * (to == kVYU24 ? 3 : 2), offset), slow(fast.size());
                    run(source.data(), from, fast.data(), width, height, &pool);
                    plain::RgbToYuv(source.data(), from, slow.data(), to, width, height);
                    ASSERT_EQ(slow, fast)
                        << to << " from " << from << ", " << width << " by " << height;
                }
}

Bytes ToPixels(const Bytes& yuv, ColourSpace from, int32_t width)
{
    const auto height = static_cast<int32_t>(yuv.size()) / 2 / width;
    Bytes out(yuv.size() * 2);
    YuvToRgb(yuv.data(), from, out.data(), kBGRX32, width, height);
    return out;
}

TEST(YuvToRgb, LimitsAndInterpolatesChroma)
{
    // Neutral chroma, and a third pair so that no looked-at neighbour lies behind the picture.
    const Bytes limits = ToPixels({16, 128, 15, 128, 235, 128, 255, 128, 0, 128, 0, 128}, kYUY2, 6);
    for (size_t i = 0; i < 20; i++)
        EXPECT_EQ(i / 4 / 2 == 1 && i % 4 < 3 ? 255 : 0, limits[i]) << i;
    // A grey pair (Y 126) followed by one with V = 148: the odd pixel has v = 20, the next pair's
    // even pixel v = 40. y = 110: R = (2098470 + 13075 v + 8192) >> 14.
    const Bytes out = ToPixels({128, 126, 128, 126, 128, 126, 148, 126}, kUYVY, 4);
    EXPECT_EQ(128, out[2]);
    EXPECT_EQ(144, out[6]);
    EXPECT_EQ(120, out[5]);
    EXPECT_EQ(160, out[10]);
}

TEST(YuvToRgb, LooksIntoTheNextRowButNotAfterEverySecondRow)
{
    // Two pixels wide: one pair a row, all neutral grey but for the chroma of the third row.
    Bytes yuv;
    for (const uint8_t chroma : {128, 128, 138, 128})
        yuv.insert(yuv.end(), {126, chroma, 126, chroma});
    const Bytes out = ToPixels(yuv, kYUY2, 2);
    const auto odd_pixel = [&](size_t row) { return Bytes(&out[8 * row + 4], &out[8 * row + 8]); };
    // Row 0 meets its equal in row 1. Rows 1 and 3 see zero bytes as the next pair, u = v = -128:
    // B (2106662 - 2115200) >> 14, G (2106662 + 1263232) >> 14. Row 2 has u = v = 10, row 3 none.
    EXPECT_THAT(odd_pixel(0), ElementsAre(128, 128, 128, 0));
    EXPECT_THAT(odd_pixel(1), ElementsAre(0, 205, 26, 0));
    EXPECT_THAT(odd_pixel(2), ElementsAre(138, 122, 136, 0));
    EXPECT_THAT(odd_pixel(3), ElementsAre(0, 205, 26, 0));
}

TEST(YuvToRgb, WritesOnePixelAPairIn24Bits)
{
    const Bytes yuv = {126, 128, 16, 128, 235, 128, 16, 128};
    Bytes out(16, 0xAA);
    YuvToRgb(yuv.data(), kYUY2, out.data(), kBGR24, 4, 1);
    EXPECT_THAT(out, ElementsAre(128, 128, 128, 0, 0, 0, 0xAA, 0xAA,  //
                                 255, 255, 255, 0, 0, 0, 0xAA, 0xAA));
}

TEST(YuvSignedToRgb, WalksRowByRow)
{
    // Stored chroma 0 is neutral, 0xFF is -1. Grey 126 is (298 * 126 - 56992 + 408 * 128) >> 8 =
    // 128.
    const Bytes yuv = {126, 0, 126, 0,    126, 10, 126, 20,  // row 0
                       126, 0, 126, 0xFF, 126, 0,  126, 0};  // row 1
    Bytes out(32);
    YuvSignedToRgb(yuv.data(), out.data(), kBGRX32, 4, 2);
    EXPECT_THAT(Bytes(&out[0], &out[4]), ElementsAre(128, 128, 128, 255));
    // Means U 5, V 10: B +2580, R +4080, G -2080 - 500, each before the shift by 8.
    EXPECT_THAT(Bytes(&out[4], &out[8]), ElementsAre(138, 117, 143, 255));
    EXPECT_EQ(Bytes(&out[8], &out[12]), Bytes(&out[12], &out[16])) << "last pair: its own chroma";
    // V 127 at the even pixel, (127 + 128) >> 1 = 127 at the odd one too.
    EXPECT_THAT(Bytes(&out[16], &out[20]), ElementsAre(128, 128, 126, 255));
    EXPECT_EQ(Bytes(&out[16], &out[20]), Bytes(&out[20], &out[24]));
    Bytes packed(24);
    YuvSignedToRgb(yuv.data(), packed.data(), kBGR24, 4, 2);
    for (size_t i = 0; i < 24; i++)
        EXPECT_EQ(out[i / 3 * 4 + i % 3], packed[i]) << i;
}

TEST(YuvToRgb, FastFormGivesThePlainBytes)
{
    std::mt19937 random(32);
    WorkerPool pool(8);
    for (const ColourSpace from : {kYUY2, kUYVY, kYUVSigned})
        for (const ColourSpace to : {kBGRX32, kBGR24})
            for (const auto& [width, height] : kSizes)
                for (size_t offset = 0; offset < 4; offset++) {
                    const auto pixels = static_cast<size_t>(width * height);
                    const ExactBytes source = RandomBytes(2 * pixels, random, offset);
                    const bool is_signed = from == kYUVSigned;
                    ExactBytes fast(pixels * (is_signed && to == kBGR24 ? 3 : 4), offset);
                    ExactBytes slow(fast.size());
                    if (is_signed) {
                        YuvSignedToRgb(source.data(), fast.data(), to, width, height, &pool);
                        plain::YuvSignedToRgb(source.data(), slow.data(), to, width, height);
                    } else {
                        YuvToRgb(source.data(), from, fast.data(), to, width, height, &pool);
                        plain::YuvToRgb(source.data(), from, slow.data(), to, width, height);
                    }
                    ASSERT_EQ(slow, fast)
                        << from << " to " << to << ", " << width << " by " << height;
                }
}

TEST(Packing, WidensAndNarrowsInPlace)
{
    std::mt19937 random(33);
    for (size_t pixels = 0; pixels < 40; pixels++) {
        SCOPED_TRACE(pixels);
        const ExactBytes narrow = RandomBytes(3 * pixels, random, pixels % 4);
        ExactBytes wide(4 * pixels, pixels % 4), slow(4 * pixels);
        std::copy_n(narrow.data(), narrow.size(), wide.data());
        Rgb24ToRgb32(wide.data(), wide.data(), pixels, 0xFF);
        plain::Rgb24ToRgb32(narrow.data(), slow.data(), pixels, 0xFF);
        ASSERT_EQ(slow, wide);
        for (size_t i = 0; i < 4 * pixels; i++)
            ASSERT_EQ(i % 4 == 3 ? 0xFF : narrow.data()[i / 4 * 3 + i % 4], wide.data()[i]);

        const Bytes before = wide.Copy();
        Rgb32ToRgb24(wide.data(), wide.data(), pixels);
        plain::Rgb32ToRgb24(slow.data(), slow.data(), pixels);
        ASSERT_EQ(slow, wide);
        for (size_t i = 0; i < 4 * pixels; i++)  // bytes that fill no word are left alone
            ASSERT_EQ(i < 3 * pixels / 4 * 4 ? narrow.data()[i] : before[i], wide.data()[i]);
    }
}

TEST(SwapVertical, TurnsRowsOfAnyLengthAndKeepsTheMiddleOne)
{
    std::mt19937 random(34);
    for (const size_t pitch : {1, 7, 5120, 9001})
        for (size_t height = 0; height < 6; height++) {
            ExactBytes picture = RandomBytes(pitch * height, random, 1);
            const Bytes before = picture.Copy();
            SwapVertical(picture.data(), pitch, static_cast<int32_t>(height));
            for (size_t i = 0; i < before.size(); i++)
                ASSERT_EQ(before[(height - 1 - i / pitch) * pitch + i % pitch], picture.data()[i])
                    << pitch << " " << i;
        }
}

}  // namespace
}  // namespace kelvane
