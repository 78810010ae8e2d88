#include "picture/scaling.h"

#include <gmock/gmock.h>

#include "picture/random_picture.h"

namespace kelvane {
namespace {

// Pixels of one value each.
Bytes Row(std::initializer_list<uint8_t> values)
{
    Bytes row;
    for (const uint8_t value : values)
        row.insert(row.end(), 4, value);
    return row;
}

TEST(ScaleRow, RoundsDownAndRepeatsTheLastPixel)
{
    const Bytes up = Row({10, 13}), down = Row({13, 10});
    Bytes out(16);
    // Steps of a half: 10, 10 + (6 * 0x4000 >> 16), 13, 13 again.
    ScaleRow(up.data(), 2, 0, 0, out.data(), 4, 0x8000);
    EXPECT_EQ(Row({10, 11, 13, 13}), out);
    ScaleRow(down.data(), 2, 0, 0, out.data(), 4, 0x8000);
    EXPECT_EQ(Row({13, 11, 10, 10}), out) << "-1.5 is rounded down to -2";
    // One bit of a 16-bit fraction is lost: 255 * 0x7FFF / 0x8000 is just below 255.
    const Bytes steep = Row({0, 255});
    ScaleRow(steep.data(), 2, 0, 0, out.data(), 2, 0xFFFF);
    EXPECT_EQ(Row({0, 254}), Bytes(out.begin(), out.begin() + 8));
}

TEST(ScaleRow, MixesTheRowBelowUnlessTheFractionIsZero)
{
    const Bytes rows = Row({10, 20, 13, 23}), alone = Row({10, 20});
    Bytes out(8);
    ScaleRow(rows.data(), 2, 8, 0x8000, out.data(), 2, 0x10000);
    EXPECT_EQ(Row({11, 21}), out);
    ScaleRow(alone.data(), 2, 8, 0, out.data(), 2, 0x10000);
    EXPECT_EQ(alone, out) << "nothing is read below";
}

TEST(ScalePicture, NeverMixesWhatLiesBelowThePicture)
{
    ExactBytes source(3 * 4 * 480);
    std::fill_n(source.data(), source.size(), uint8_t{200});
    for (const int32_t height : {479, 576, 700, 1, 2000}) {
        Bytes out(5 * 4 * static_cast<size_t>(height));
        ScalePicture({source.data(), 12, 3, 480}, {out.data(), 20, 5, height}, 255);
        EXPECT_EQ(Bytes(out.size(), 200), out) << height;
    }
}

TEST(ScalePicture, LooksPastItsWidthWhereTheRowGoesOn)
{
    const Bytes source = Row({0, 0, 100});
    Bytes out(16);
    ScalePicture({source.data(), 12, 2, 1}, {out.data(), 16, 4, 1}, 255, 1);
    EXPECT_EQ(Row({0, 0, 0, 50}), out);
    ScalePicture({source.data(), 12, 2, 1}, {out.data(), 16, 4, 1}, 255);
    EXPECT_EQ(Row({0, 0, 0, 0}), out);
    ScalePicture({source.data(), 12, 3, 1}, {out.data(), 12, 3, 1}, 128);
    EXPECT_EQ(Row({0, 0, 50, 0}), out) << "equal sizes are blended";
}

TEST(ScalePicture, FastFormGivesThePlainBytesOnAnyNumberOfThreads)
{
    constexpr std::pair<Size, Size> kSizes[] = {
        {{1, 1}, {1, 2}},    {{7, 5}, {7, 6}},      {{7, 5}, {11, 6}},   {{64, 9}, {300, 4}},
        {{300, 4}, {13, 9}}, {{257, 3}, {256, 31}}, {{2, 17}, {600, 3}}, {{35, 24}, {35, 29}}};
    std::mt19937 random(50);
    for (const auto& [from, to] : kSizes)
        for (int gap = 0; gap < 9; gap += 4) {
            const ptrdiff_t pitch = 4 * from.width + gap, to_pitch = 4 * to.width + gap / 2;
            const auto bytes = static_cast<size_t>(pitch * from.height - gap);
            const ExactBytes source = RandomBytes(bytes, random, static_cast<size_t>(gap) / 4);
            const PictureView view{source.data(), pitch, from.width, from.height};
            const auto filled =
                RandomBytes(static_cast<size_t>(to_pitch * to.height - gap / 2), random, 1);
            ExactBytes slow = filled;
            plain::ScalePicture(view, {slow.data(), to_pitch, to.width, to.height}, 255);
            for (int threads = 1; threads <= 8; threads++) {
                WorkerPool pool(threads);
                ExactBytes fast = filled;
                ScalePicture(view, {fast.data(), to_pitch, to.width, to.height}, 255, 0, &pool);
                ASSERT_EQ(slow, fast) << from.width << " by " << from.height << " to " << to.width
                                      << " by " << to.height << ", " << threads << " threads";
            }
        }
}

TEST(ScaleRow, FastFormGivesThePlainBytes)
{
    std::mt19937 random(51);
    for (int round = 0; round < 300; round++) {
        const auto pixels = static_cast<int32_t>(1 + random() % 80);
        const auto count = static_cast<int32_t>(1 + random() % 600);
        const auto step = static_cast<int32_t>(random() % 0x30000);
        const auto fraction = static_cast<uint32_t>(random() % 0x10000);
        const ptrdiff_t next = 4 * pixels;
        const ExactBytes rows = RandomBytes(8 * static_cast<size_t>(pixels), random, random() % 4);
        ExactBytes slow(4 * static_cast<size_t>(count)), fast(slow.size(), random() % 4);
        plain::ScaleRow(rows.data(), pixels, next, fraction, slow.data(), count, step);
        ScaleRow(rows.data(), pixels, next, fraction, fast.data(), count, step);
        ASSERT_EQ(slow, fast) << pixels << " to " << count << ", step " << step;
    }
}

}  // namespace
}  // namespace kelvane
