#include "engine/timing/time_position.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <string>
#include <vector>

namespace kelvane {
namespace {

using enum Operation;

TimePosition Pace(Operation operation, int resampling, bool fromPAL, bool toPAL, int to = 0)
{
    ConversionSettings settings;
    settings.op = operation;
    settings.timeresampling = ResamplingMethod(resampling);
    settings.src_interlace = FieldOrder::kLowerFirst;
    settings.dst_interlace = FieldTarget(to);
    return TimePosition(settings, fromPAL, toPAL);
}

// Source frames read before each of `count` output frames, as digits; the first turn's prefill is
// left out.
std::string Reads(TimePosition time, int64_t count)
{
    std::string text;
    uint64_t read = 3;
    for (int64_t i = 0; i < count; i++) {
        read += uint64_t(time.FramesToRead());
        text += char('0' + time.FramesToRead());
        time.Advance(i, read);
    }
    return text;
}

double Sum(const std::string& digits)
{
    return std::accumulate(digits.begin(), digits.end(), 0.0) - '0' * double(digits.size());
}

TEST(TimePosition, ReadsNoneOrOneGoingUpAndOneOrTwoGoingDown)
{
    EXPECT_EQ("001111101111101", Reads(Pace(kToNTSC, 1, true, false), 15));
    EXPECT_EQ("01111121111211112", Reads(Pace(kToPAL, 1, false, true), 17));
    EXPECT_EQ("0111111", Reads(Pace(kConvert, 3, true, true), 7));
    EXPECT_EQ("0111111", Reads(Pace(kToNTSC, 3, false, false), 7));
    // Reverse pulldown, for equal systems too.
    for (const bool pal : {true, false})
        EXPECT_EQ("01111211112", Reads(Pace(kToPAL, 3, pal, true), 11));
}

// 29.97, and not 30000 / 1001, is the rate of NTSC here.
TEST(TimePosition, StepsAreExact)
{
    EXPECT_EQ(0.8341675008341676, Pace(kToNTSC, 1, true, false).Step());
    EXPECT_EQ(1.1987999999999999, Pace(kToPAL, 1, false, true).Step());
    EXPECT_EQ(1.2, Pace(kToPAL, 3, true, true).Step());
}

TEST(TimePosition, PulldownWithAChangeOfFieldOrderUsesTheFirstFrameTwice)
{
    EXPECT_EQ("0011111", Reads(Pace(kToNTSC, 3, true, false), 7));
    EXPECT_EQ("0001111", Reads(Pace(kToNTSC, 3, true, false, 1), 7));
}

// With nothing lost to rounding or to the folding of the position.
TEST(TimePosition, KeepsPaceOverAnHour)
{
    constexpr int64_t kFrames = 107892;  // an hour at 29.97
    EXPECT_NEAR(kFrames * 25 / 29.97, Sum(Reads(Pace(kToNTSC, 1, true, false), kFrames)), 1);
    EXPECT_NEAR(kFrames * 29.97 / 25, Sum(Reads(Pace(kToPAL, 1, false, true), kFrames)), 2);
}

// By the count of frames read: the first above each whole thousand, and once.
TEST(TimePosition, ReversePulldownPassesAFrameWhenTheThousandAndFirstWasRead)
{
    const std::pair<uint64_t, double> turns[] = {
        {3, 1.2},    {999, 1.2},  {1000, 1.2}, {1001, 2.2}, {1001, 1.2}, {1999, 1.2},
        {2000, 1.2}, {2001, 2.2}, {2002, 1.2}, {3000, 1.2}, {3002, 2.2}, {3003, 1.2}};
    TimePosition time = Pace(kToPAL, 3, false, true), other = Pace(kToPAL, 1, false, true);
    int64_t index = 0;
    for (const auto& [read, moved] : turns) {
        const auto move = [&](TimePosition& position) {
            const double before = position.Position();
            position.Advance(index, read);
            return position.Position() - before;
        };
        // The position is counted on from ten less now and then.
        EXPECT_NEAR(0, std::remainder(move(time) - moved, 10), 1e-9) << read;
        EXPECT_NEAR(0, std::remainder(move(other) - other.Step(), 10), 1e-9) << read;
        index++;
    }
}

// The source frames at the centre of four output frames around each step: frame 1.2 times the
// output's number, and one more for each thousand.
TEST(TimePosition, ReversePulldownPassesTheSameFramesOfAFilmEachTime)
{
    const std::pair<size_t, std::vector<uint64_t>> rows[] = {{831, {997, 998, 1000, 1001}},
                                                             {1664, {1997, 1999, 2001, 2002}},
                                                             {2496, {2997, 2998, 3000, 3001}}};
    TimePosition time = Pace(kToPAL, 3, false, true);
    uint64_t read = 3;
    std::vector<uint64_t> current;
    for (int64_t i = 0; i < 2500; i++) {
        read += uint64_t(time.FramesToRead());
        current.push_back(read - 3);
        time.Advance(i, read);
    }
    for (const auto& [first, frames] : rows)
        EXPECT_EQ(frames, std::vector(current.begin() + ptrdiff_t(first),
                                      current.begin() + ptrdiff_t(first) + 4));
}

}  // namespace
}  // namespace kelvane
