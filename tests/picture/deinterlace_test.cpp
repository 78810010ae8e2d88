#include <gmock/gmock.h>

#include "picture/adaptive_deinterlace.h"
#include "picture/motion_blur_deinterlace.h"
#include "picture/random_picture.h"
#include "support/scarce_resources.h"

namespace kelvane {
namespace {

using testing::ElementsAre;
using Words = std::vector<uint32_t>;

// Pictures one pixel wide: a word is a line.
void Adaptive(DeinterlaceState& state, Words& lines, bool keep_even, int32_t width = 1)
{
    AdaptiveDeinterlace(state, reinterpret_cast<uint8_t*>(lines.data()),
                        4 * static_cast<size_t>(width), width,
                        static_cast<int32_t>(lines.size()) / width, keep_even);
}

TEST(AdaptiveDeinterlace, RebuildsWhatMovedAndKeepsTheRest)
{
    DeinterlaceState state;
    const Words first = {0xFF030303, 0xFF101010, 0xFF060606, 0xFF0F0F0F,
                         0xFF0A0A0A, 0xFF0E0E0E, 0xFF010101};
    Words lines = first;
    Adaptive(state, lines, true);
    // Against a zeroed history only line 1 (16 in each colour) counts as moving. It rebuilds itself
    // and line 3 does not have it as a neighbour.
    Words expected = first;
    expected[1] = 0x00010101 + 0x00030303;
    EXPECT_EQ(expected, lines);

    lines = first;
    Adaptive(state, lines, true);
    EXPECT_EQ(first, lines) << "the same picture again passes through, fourth bytes too";

    lines[4] += 0x00100000;  // one colour, 16 more: lines 3 and 5 are rebuilt
    expected = lines;
    expected[3] = 0x00030303 + 0x000D0505;
    expected[5] = 0x000D0505;
    Adaptive(state, lines, true);
    EXPECT_EQ(expected, lines);
}

TEST(AdaptiveDeinterlace, KeepsTheOtherFieldWithTheFlagClear)
{
    DeinterlaceState state;
    Words lines(8, 0x00404040);
    lines[0] = lines[2] = lines[4] = lines[6] = 0x00808080;
    Adaptive(state, lines, false);
    // Lines 2 and 4 are rebuilt from the odd ones; line 6 is the core's last and is copied.
    EXPECT_THAT(lines, ElementsAre(0x00808080, 0x00404040, 0x00404040, 0x00404040, 0x00404040,
                                   0x00404040, 0x00808080, 0x00404040));
}

TEST(AdaptiveDeinterlace, StartsAnewForAnotherSizeAndAtTheEnd)
{
    DeinterlaceState state;
    const auto is_rebuilt = [&](const Words& picture, int32_t width) {
        Words lines = picture;
        Adaptive(state, lines, true, width);
        return lines != picture;
    };
    const Words bright(6, 0x01808080);
    EXPECT_TRUE(is_rebuilt(bright, 1));
    EXPECT_FALSE(is_rebuilt(bright, 1));
    EXPECT_TRUE(is_rebuilt(bright, 2));
    EXPECT_TRUE(is_rebuilt(bright, 1));
    AdaptiveDeinterlaceEnd(state);
    EXPECT_TRUE(is_rebuilt(bright, 1));
    EXPECT_FALSE(is_rebuilt({0xFFFFFFFF}, 1));
    // Without memory for the second of its buffers it has none of them.
    FailAllocation(2);
    EXPECT_THROW(AdaptiveDeinterlaceInit(state, 1, 6), std::bad_alloc);
    FailAllocation(0);
    EXPECT_TRUE(is_rebuilt(bright, 1));
}

TEST(AdaptiveDeinterlace, SceneThresholdAndOtherModesRebuildMore)
{
    constexpr auto kMode = &DeinterlaceState::motion_mode;
    constexpr auto kScene = &DeinterlaceState::scene_threshold;
    constexpr auto kColours = &DeinterlaceState::compare_colours;
    const Words black(6);
    const struct {
        int32_t DeinterlaceState::*setting;
        int32_t value;
        Words previous, lines;
        uint32_t expected;  // of line 3
    } rows[] = {
        {kMode, kRebuildAll, black, {0, 0, 0, 0x11111111, 0, 0}, 0},
        // Two of eight lines move.
        {kScene, 25, Words(8), {0, 255, 0, 1 << 24, 0, 0, 255, 0}, 0},
        {kScene, 26, Words(8), {0, 255, 0, 1 << 24, 0, 0, 255, 0}, 1 << 24},
        // Luma (30 * 255) >> 8 = 29 of a blue line, 15 and 16 more than before.
        {kColours, 0, {0, 0, 0, 14, 0, 0}, {0, 0, 0, 255, 0, 0}, 255},
        {kColours, 0, {0, 0, 0, 13, 0, 0}, {0, 0, 0, 255, 0, 0}, 0},
        // Line 2 moved and differs from the stored line 3.
        {kMode, kMovedAndCombed, black, {0, 0, 0x40, 0x40, 0x20, 0}, 0x20 + 0x10},
        // Line 3 moved, but is equal to the line above: no comb.
        {kMode, kMovedAndCombed, {0, 0, 0x80, 0, 0x20, 0}, {0, 0, 0x80, 0x80, 0x20, 0}, 0x80},
    };
    for (const auto& row : rows) {
        DeinterlaceState state;
        AdaptiveDeinterlaceInit(state, 1, static_cast<int32_t>(row.lines.size()));
        state.*row.setting = row.value;
        state.previous = row.previous;
        Words lines = row.lines;
        Adaptive(state, lines, true);
        EXPECT_EQ(row.expected, lines[3]) << testing::PrintToString(row.lines);
    }
}

TEST(AdaptiveDeinterlace, FastFormGivesThePlainBytesOnAnyNumberOfThreads)
{
    std::mt19937 random(60);
    for (const auto& [width, height] :
         {Size{1, 2}, {3, 3}, {5, 4}, {64, 5}, {70, 6}, {131, 9}, {33, 50}})
        for (int threads = 1; threads <= 8; threads++) {
            WorkerPool pool(threads);
            const size_t pitch = 4 * static_cast<size_t>(width) + 3;
            const size_t bytes = pitch * static_cast<size_t>(height) - 3;
            DeinterlaceState slow_state;
            AdaptiveDeinterlaceInit(slow_state, width, height);
            slow_state.scene_threshold = 12 * threads;
            DeinterlaceState fast_state = slow_state;
            ExactBytes picture = RandomBytes(bytes, random, static_cast<size_t>(threads) % 4);
            for (int frame = 0; frame < 4; frame++) {
                for (int change = 0; change < 20; change++)
                    picture.data()[random() % bytes] ^= static_cast<uint8_t>(1u << random() % 8);
                ExactBytes fast = picture, slow = picture;
                const bool even = frame % 3 != 0;
                AdaptiveDeinterlace(fast_state, fast.data(), pitch, width, height, even, &pool);
                plain::AdaptiveDeinterlace(slow_state, slow.data(), pitch, width, height, even);
                ASSERT_EQ(slow, fast) << width << " by " << height << ", frame " << frame;
                ASSERT_EQ(slow_state.previous, fast_state.previous);
                ASSERT_EQ(slow_state.moving, fast_state.moving);
            }
        }
}

Bytes Blurred(Bytes lines, int32_t threshold, bool upwards)
{
    MotionBlurDeinterlace(lines.data(), 4, 1, static_cast<int32_t>(lines.size()) / 4, threshold,
                          upwards);
    return lines;
}

TEST(MotionBlurDeinterlace, ChangesPairsAboveTheThreshold)
{
    const Bytes at_limit = {16, 0, 0, 0, 0, 0, 0, 255};
    EXPECT_EQ(at_limit, Blurred(at_limit, 16, false)) << "the fourth byte does not count";
    // (3 * 17) >> 2 for both lines of the last pair; the fourth byte changes along.
    EXPECT_THAT(Blurred({17, 0, 0, 0, 0, 0, 0, 255}, 16, false),
                ElementsAre(12, 0, 0, 63, 12, 0, 0, 63));
    // Upwards line 1 is a: (0 + 17) >> 2 and (255 * 3) >> 2.
    EXPECT_THAT(Blurred({17, 0, 0, 0, 0, 0, 0, 255}, 16, true),
                ElementsAre(4, 0, 0, 191, 4, 0, 0, 191));
    const Bytes lines = {100, 0, 0, 0, 0, 0, 0, 0, 80, 0, 0, 0, 0, 0, 0, 0, 9, 9, 9, 9};
    // a = 300 >> 2, b = (300 + 0 + 240) >> 3 with the old 80; then 240 >> 2 twice; line 4 is left
    // over.
    EXPECT_THAT(Blurred(lines, 16, false),
                ElementsAre(75, 0, 0, 0, 67, 0, 0, 0, 60, 0, 0, 0, 60, 0, 0, 0, 9, 9, 9, 9));
}

TEST(MotionBlurDeinterlace, FastFormGivesThePlainBytesOnAnyNumberOfThreads)
{
    std::mt19937 random(61);
    for (const int32_t width : {1, 3, 64, 65, 200, 700})
        for (const int32_t height : {1, 2, 3, 8, 15}) {
            WorkerPool pool(1 + height % 8);
            for (const int32_t threshold : {-1, 0, 16, 300, 764, 765, 100000})
                for (const bool upwards : {false, true}) {
                    const size_t pitch = 4 * static_cast<size_t>(width) + 1;
                    ExactBytes slow = RandomBytes(pitch * static_cast<size_t>(height) - 1, random);
                    ExactBytes fast = slow;
                    plain::MotionBlurDeinterlace(slow.data(), pitch, width, height, threshold,
                                                 upwards);
                    MotionBlurDeinterlace(fast.data(), pitch, width, height, threshold, upwards,
                                          &pool);
                    ASSERT_EQ(slow, fast) << width << " by " << height << ", " << threshold;
                }
        }
}

}  // namespace
}  // namespace kelvane
