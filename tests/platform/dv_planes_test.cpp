#include "platform/libav/dv_planes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace kelvane {
namespace {

struct Storage {
    explicit Storage(const PictureLayout& layout)
        : chromaPitch(layout.chroma == ChromaSampling::k420 ? layout.width / 2 : layout.width / 4),
          chromaLines(layout.chroma == ChromaSampling::k420 ? layout.height / 2 : layout.height),
          y(size_t(layout.width * layout.height)),
          u(size_t(chromaPitch * chromaLines)),
          v(u.size()),
          planes{{y.data(), layout.width}, {u.data(), chromaPitch}, {v.data(), chromaPitch}}
    {
    }
    int32_t chromaPitch, chromaLines;
    std::vector<uint8_t> y, u, v;
    Planes planes;
};

constexpr PictureLayout k420 = {16, 8, ChromaSampling::k420};
constexpr PictureLayout k411 = {16, 8, ChromaSampling::k411};

std::vector<uint8_t> Uniform(uint32_t colour, size_t pixels)
{
    std::vector<uint8_t> picture;
    for (size_t i = 0; i < pixels; i++)
        for (int byte = 0; byte < 4; byte++)
            picture.push_back(static_cast<uint8_t>(colour >> (8 * byte)));
    return picture;
}

TEST(DVPlanes, GivesTheLevelsOfBT601)
{
    const struct {
        uint32_t colour;
        int y, u, v;
    } rows[] = {{0x000000, 16, 128, 128}, {0xFFFFFF, 235, 128, 128}, {0xFF0000, 81, 90, 240},
                {0x00FF00, 145, 54, 34},  {0x0000FF, 41, 240, 110},  {0x808080, 126, 128, 128}};
    for (const PictureLayout& layout : {k420, k411})
        for (const auto& row : rows) {
            Storage storage(layout);
            PictureToPlanes(Uniform(row.colour, 128).data(), 4, layout, storage.planes);
            for (const uint8_t y : storage.y)
                ASSERT_EQ(row.y, y) << std::hex << row.colour;
            for (const uint8_t u : storage.u)
                ASSERT_NEAR(row.u, u, 1) << std::hex << row.colour;
            for (const uint8_t v : storage.v)
                ASSERT_NEAR(row.v, v, 1) << std::hex << row.colour;
        }
}

// One field red, the other blue: 4:2:0 chroma must not mix them.
TEST(DVPlanes, FieldsKeepTheirOwnColour)
{
    std::vector<uint8_t> picture(16 * 8 * 4);
    for (size_t i = 0; i < picture.size(); i += 4) {
        const bool upper = i / 64 % 2 == 0;
        picture[i] = upper ? 0 : 255;
        picture[i + 2] = upper ? 255 : 0;
    }
    for (const PictureLayout& layout : {k420, k411}) {
        Storage storage(layout);
        PictureToPlanes(picture.data(), 4, layout, storage.planes);
        std::vector<uint8_t> back(picture.size());
        PlanesToPicture(storage.planes, layout, back.data(), 4);
        for (size_t i = 0; i < picture.size(); i++)
            ASSERT_NEAR(picture[i], back[i], 3) << "byte " << i;
    }
}

TEST(DVPlanes, TheForm24BitsWideHasTheSameColours)
{
    std::mt19937 random(1);
    std::vector<uint8_t> wide(16 * 8 * 4), narrow;
    for (size_t i = 0; i < wide.size(); i++) {
        wide[i] = i % 4 == 3 ? 0 : static_cast<uint8_t>(random());
        if (i % 4 != 3) narrow.push_back(wide[i]);
    }
    for (const PictureLayout& layout : {k420, k411}) {
        Storage a(layout), b(layout);
        PictureToPlanes(wide.data(), 4, layout, a.planes);
        PictureToPlanes(narrow.data(), 3, layout, b.planes);
        EXPECT_TRUE(a.y == b.y && a.u == b.u && a.v == b.v);
        std::vector<uint8_t> wideBack(wide.size()), narrowBack(narrow.size());
        PlanesToPicture(a.planes, layout, wideBack.data(), 4);
        PlanesToPicture(a.planes, layout, narrowBack.data(), 3);
        for (size_t pixel = 0; pixel < 128; pixel++) {
            for (size_t c = 0; c < 3; c++)
                ASSERT_EQ(wideBack[4 * pixel + c], narrowBack[3 * pixel + c]);
            ASSERT_EQ(0, wideBack[4 * pixel + 3]);
        }
    }
}

// A ramp across the picture comes back within the rounding of 8-bit chroma: sites are where they
// are said to be, with nothing shifted to the side.
TEST(DVPlanes, SmoothColourIsNotShifted)
{
    constexpr int32_t kWidth = 720;
    for (const ChromaSampling chroma : {ChromaSampling::k420, ChromaSampling::k411}) {
        const PictureLayout layout = {kWidth, 8, chroma};
        std::vector<uint8_t> picture(size_t(kWidth) * 8 * 4);
        for (size_t i = 0; i < picture.size() / 4; i++) {
            const auto x = static_cast<int>(i % kWidth);
            picture[4 * i] = static_cast<uint8_t>(60 + x / 8);
            picture[4 * i + 1] = static_cast<uint8_t>(150 - x / 9);
            picture[4 * i + 2] = static_cast<uint8_t>(40 + x / 6);
        }
        Storage storage(layout);
        PictureToPlanes(picture.data(), 4, layout, storage.planes);
        std::vector<uint8_t> back(picture.size());
        PlanesToPicture(storage.planes, layout, back.data(), 4);
        double squares = 0;
        for (size_t i = 0; i < picture.size(); i++)
            squares += std::pow(picture[i] - back[i], 2);
        const double psnr = 10 * std::log10(255.0 * 255 / (squares / double(picture.size())));
        EXPECT_GT(psnr, 47);
    }
}

}  // namespace
}  // namespace kelvane
