#include "media/quicktime/structure/qt_picture_times.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace kelvane {
namespace {

using Times = std::vector<QTTimeToSample>;

// A letter for each frame, small where it holds the picture before: "ABbC".
std::string Frames(const Times& times, const QTFrameTime& frame, uint64_t in_front = 0)
{
    const QTPictureTimes shown(times, frame, in_front);
    std::string all;
    for (uint64_t i = 0; i < shown.Count(); i++) {
        const auto [picture, held] = shown.At(i);
        all += static_cast<char>((held ? 'a' : 'A') + picture);
    }
    return all;
}

TEST(QTPictureTimes, APictureStandsUntilItsEndRoundedToFrames)
{
    const struct {
        Times times;
        QTFrameTime frame;
        std::string shown;
        uint64_t left_out;
    } rows[] = {
        {{}, {24}, "", 0},
        {{{3, 24}}, {24}, "ABC", 0},
        {{{3, 48}}, {24}, "AaBbCc", 0},
        {{{1, 24}, {1, 96}, {2, 24}}, {24}, "ABbbbCD", 0},
        {{{1, 20}, {1, 28}, {1, 35}, {1, 13}}, {24}, "ABCD", 0},
        {{{1, 36}, {1, 36}}, {24}, "AaB", 0},
        {{{1, 24}, {1, 11}, {1, 24}}, {24}, "AC", 1},
        {{{1, 24}, {3, 0}, {1, 48}}, {24}, "AEe", 3},
        {{{4, 12}}, {24}, "AC", 2},
        {{{2, 24}, {1, 1}}, {24}, "AB", 1},
        {{{7, 1000}}, {5005, 5}, "ABCDEFG", 0},
        {{{2, 10}, {1, 30}}, {48, 5}, "ABCcc", 0},
        {{{5, 1}}, {10, 25}, "AaaBbCccDdEee", 0},
        {{{2, 24}, {1, 0}, {1, 900}}, {0}, "ABCD", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.shown);
        EXPECT_EQ(row.shown, Frames(row.times, row.frame));
        EXPECT_EQ(row.left_out, QTPictureTimes(row.times, row.frame).LeftOut());
    }
}

TEST(QTPictureTimes, TheFirstPictureMayStandInFrontOfItsTime)
{
    EXPECT_EQ("AaaBC", Frames({{3, 24}}, {24}, 2));
    EXPECT_EQ("AaaaBb", Frames({{2, 48}}, {24}, 2));
    EXPECT_EQ("BbC", Frames({{1, 1}, {2, 24}}, {24}, 1)) << "the first that is shown";
    EXPECT_EQ("", Frames({}, {24}, 5)) << "there is none";
    const QTPictureTimes shown(Times{{3, 24}}, {24}, 2);
    EXPECT_EQ(2u, shown.Held());
    EXPECT_EQ(0u, shown.LeftOut());
    EXPECT_GT(QTPictureTimes(Times{{3, 24}}, {24}, UINT64_MAX).Held(), uint64_t{1} << 60);
}

// Against the same rule picture by picture.
TEST(QTPictureTimes, AnyTableHasItsFramesInOrder)
{
    std::minstd_rand random(1);
    const QTFrameTime kFrameTimes[] = {
        {24}, {600, 25}, {600600, 30000}, {7, 16}, {30030000, 30000}};
    for (int round = 0; round < 2000; round++) {
        const QTFrameTime frame = kFrameTimes[random() % std::size(kFrameTimes)];
        const uint64_t usual = frame.ticks / frame.parts + 1;
        Times times(1 + random() % 6);
        for (QTTimeToSample& entry : times)
            entry = {uint32_t(random() % 5), uint32_t(random() % (3 * usual))};
        const QTPictureTimes shown(times, frame);
        uint64_t tick = 0, next = 0, picture = 0, left_out = 0, held = 0;
        for (const QTTimeToSample& entry : times)
            for (uint32_t i = 0; i < entry.count; i++, picture++) {
                tick += entry.duration;
                const uint64_t end = (2 * tick * frame.parts + frame.ticks) / (2 * frame.ticks);
                left_out += end == next;
                held += end > next ? end - next - 1 : 0;
                for (uint64_t first = next; next < end; next++) {
                    const auto place = shown.At(next);
                    ASSERT_EQ(picture, place.picture);
                    ASSERT_EQ(next > first, place.held);
                }
            }
        ASSERT_EQ(next, shown.Count());
        ASSERT_EQ(left_out, shown.LeftOut());
        ASSERT_EQ(held, shown.Held());
    }
}

TEST(QTPictureTimes, NumbersBeyondEveryFilmDoNotWrap)
{
    const Times endless(100000, {0xFFFFFFFF, 0xFFFFFFFF});
    for (const QTFrameTime& frame : {QTFrameTime{1}, {0xFFFFFFFF, 25}, {1, 25}, {1001, 30000}}) {
        const QTPictureTimes shown(endless, frame);
        EXPECT_GT(shown.Held(), uint64_t{1} << 60);
    }
    // A day of film by a clock of 2^32 ticks a second.
    const uint64_t clock = 0xFFFFFFFF;
    const QTPictureTimes day(Times{{24 * 60 * 60, uint32_t(clock)}}, {clock * 1001, 30000});
    EXPECT_EQ(2589411u, day.Count()) << "86400 * 30000 / 1001, rounded";
    EXPECT_EQ(86399u, day.At(day.Count() - 1).picture);
}

}  // namespace
}  // namespace kelvane
