#include "platform/codec_modules/libav/dv_planes.h"

#include <gtest/gtest.h>

#include <random>

#include "support/picture_noise.h"

namespace kelvane {
namespace {

struct Storage {
    Storage(const Bytes& picture, size_t pixelBytes, const PictureLayout& layout)
        : chromaPitch(layout.chroma == ChromaSampling::k420 ? layout.width / 2 : layout.width / 4),
          y(size_t(layout.width * layout.height)),
          u(y.size() / 4),  // both have a quarter of the places
          v(y.size() / 4),
          planes{{y.data(), layout.width}, {u.data(), chromaPitch}, {v.data(), chromaPitch}}
    {
        PictureToPlanes(picture.data(), pixelBytes, layout, planes);
    }
    int32_t chromaPitch;
    Bytes y, u, v;
    Planes planes;
};

// To the planes and back, with 32 bits a pixel.
Bytes ThereAndBack(const Bytes& picture, const PictureLayout& layout)
{
    const Storage storage(picture, 4, layout);
    Bytes back(picture.size());
    PlanesToPicture(storage.planes, layout, back.data(), 4);
    return back;
}

constexpr PictureLayout kLayouts[] = {{16, 8, ChromaSampling::k420}, {16, 8, ChromaSampling::k411}};

TEST(DVPlanes, GivesTheLevelsOfBT601)
{
    const struct {
        uint32_t colour;
        int y, u, v;
    } rows[] = {{0x000000, 16, 128, 128}, {0xFFFFFF, 235, 128, 128}, {0xFF0000, 81, 90, 240},
                {0x00FF00, 145, 54, 34},  {0x0000FF, 41, 240, 110},  {0x808080, 126, 128, 128}};
    for (const PictureLayout& layout : kLayouts)
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << std::hex << row.colour);
            Bytes picture(16 * 8 * 4);
            for (size_t i = 0; i < picture.size(); i++)
                picture[i] = static_cast<uint8_t>(row.colour >> (8 * (i % 4)));
            const Storage storage(picture, 4, layout);
            EXPECT_EQ(Bytes(storage.y.size(), static_cast<uint8_t>(row.y)), storage.y);
            for (size_t i = 0; i < storage.u.size(); i++) {
                ASSERT_NEAR(row.u, storage.u[i], 1);
                ASSERT_NEAR(row.v, storage.v[i], 1);
            }
        }
}

// One field red, the other blue: 4:2:0 chroma must not mix them.
TEST(DVPlanes, FieldsKeepTheirOwnColour)
{
    Bytes picture(16 * 8 * 4);
    for (size_t i = 0; i < picture.size(); i += 4) {
        const bool upper = i / 64 % 2 == 0;
        picture[i] = upper ? 0 : 255;
        picture[i + 2] = upper ? 255 : 0;
    }
    for (const PictureLayout& layout : kLayouts) {
        const Bytes back = ThereAndBack(picture, layout);
        for (size_t i = 0; i < picture.size(); i++)
            ASSERT_NEAR(picture[i], back[i], 3) << "byte " << i;
    }
}

TEST(DVPlanes, TheForm24BitsWideHasTheSameColours)
{
    std::mt19937 random(1);
    Bytes wide(16 * 8 * 4), narrow;
    for (size_t i = 0; i < wide.size(); i++) {
        wide[i] = i % 4 == 3 ? 0 : static_cast<uint8_t>(random());
        if (i % 4 != 3) narrow.push_back(wide[i]);
    }
    for (const PictureLayout& layout : kLayouts) {
        const Storage a(wide, 4, layout), b(narrow, 3, layout);
        EXPECT_TRUE(a.y == b.y && a.u == b.u && a.v == b.v);
        const Bytes wideBack = ThereAndBack(wide, layout);
        Bytes narrowBack(narrow.size());
        PlanesToPicture(a.planes, layout, narrowBack.data(), 3);
        for (size_t i = 0; i < wideBack.size(); i++)
            ASSERT_EQ(i % 4 == 3 ? 0 : narrowBack[i / 4 * 3 + i % 4], wideBack[i]) << i;
    }
}

// A ramp across the picture comes back within the rounding of 8-bit chroma: sites are where they
// are said to be, with nothing shifted to the side.
TEST(DVPlanes, SmoothColourIsNotShifted)
{
    constexpr int32_t kWidth = 720;
    Bytes picture(size_t(kWidth) * 8 * 4);
    for (size_t i = 0; i < picture.size(); i += 4) {
        const auto x = static_cast<int>(i / 4 % kWidth);
        picture[i] = static_cast<uint8_t>(60 + x / 8);
        picture[i + 1] = static_cast<uint8_t>(150 - x / 9);
        picture[i + 2] = static_cast<uint8_t>(40 + x / 6);
    }
    for (const ChromaSampling chroma : {ChromaSampling::k420, ChromaSampling::k411})
        EXPECT_GT(PictureNoise(picture, ThereAndBack(picture, {kWidth, 8, chroma})), 47);
}

}  // namespace
}  // namespace kelvane
