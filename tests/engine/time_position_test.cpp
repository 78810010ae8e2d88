#include "engine/time_position.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvane {
namespace {

struct Pace {
    Pace(uint32_t operation, int32_t resampling, bool fromPAL, bool toPAL, int32_t from = 2,
         int32_t to = 0)
        : settings(Options(operation, resampling, from, to)), time(settings, fromPAL, toPAL)
    {
    }
    static ConversionSettings Options(uint32_t operation, int32_t resampling, int32_t from,
                                      int32_t to)
    {
        ConversionSettings settings;
        settings.op = operation;
        settings.timeresampling = resampling;
        settings.src_interlace = from;
        settings.dst_interlace = to;
        return settings;
    }
    // Source frames read before each of `count` output frames; the first turn's prefill is left
    // out.
    std::string Reads(int count)
    {
        std::string text;
        uint64_t read = 3;
        for (int64_t i = 0; i < count; i++) {
            read += static_cast<uint64_t>(time.FramesToRead());
            text += std::to_string(time.FramesToRead()) + " ";
            time.Advance(i, read);
        }
        return text;
    }
    ConversionSettings settings;
    TimePosition time;
};

TEST(TimePosition, StepsBySystemsAndResampling)
{
    EXPECT_EQ(0.8341675008341676, Pace(kOperationToNTSC, 1, true, false).time.Step());
    EXPECT_EQ(1.1987999999999999, Pace(kOperationToPAL, 1, false, true).time.Step());
    EXPECT_EQ(1.0, Pace(kOperationConvert, 3, true, true).time.Step());
    EXPECT_EQ(1.0, Pace(kOperationToNTSC, 3, false, false).time.Step());
    EXPECT_EQ(1.2, Pace(kOperationToPAL, 3, false, true).time.Step());
    EXPECT_EQ(1.2, Pace(kOperationToPAL, 3, true, true).time.Step()) << "overrides equal systems";
}

TEST(TimePosition, ReadsNoneOrOneGoingUpAndOneOrTwoGoingDown)
{
    EXPECT_EQ("0 0 1 1 1 1 1 0 1 1 1 1 1 0 1 ", Pace(kOperationToNTSC, 1, true, false).Reads(15));
    EXPECT_EQ("0 1 1 1 1 1 2 1 1 1 1 2 1 1 1 1 2 ",
              Pace(kOperationToPAL, 1, false, true).Reads(17));
    EXPECT_EQ("0 1 1 1 1 2 1 1 1 1 2 ", Pace(kOperationToPAL, 3, false, true).Reads(11));
    EXPECT_EQ("0 1 1 1 ", Pace(kOperationConvert, 1, true, true).Reads(4));
}

TEST(TimePosition, PulldownWithAChangeOfFieldOrderUsesTheFirstFrameTwice)
{
    Pace plain(kOperationToNTSC, 3, true, false), swapped(kOperationToNTSC, 3, true, false, 2, 1);
    EXPECT_EQ("0 0 1 1 1 1 1 ", plain.Reads(7));
    EXPECT_EQ("0 0 0 1 1 1 1 ", swapped.Reads(7));
}

// 29.97 / 25 in the long run, with nothing lost to rounding or to the folding of the position.
TEST(TimePosition, KeepsPaceOverAnHour)
{
    Pace toNTSC(kOperationToNTSC, 1, true, false), toPAL(kOperationToPAL, 1, false, true);
    int64_t readToNTSC = 0, readToPAL = 0;
    constexpr int64_t kFrames = 107892;  // an hour at 29.97
    for (int64_t i = 0; i < kFrames; i++) {
        readToNTSC += toNTSC.time.FramesToRead();
        readToPAL += toPAL.time.FramesToRead();
        toNTSC.time.Advance(i, 0);
        toPAL.time.Advance(i, 0);
    }
    EXPECT_NEAR(kFrames * 25 / 29.97, double(readToNTSC), 1);
    EXPECT_NEAR(kFrames * 29.97 / 25, double(readToPAL), 2);
}

TEST(TimePosition, ReversePulldownPassesOneFrameInAThousand)
{
    Pace run(kOperationToPAL, 3, false, true);
    uint64_t read = 3;
    for (int64_t i = 0; i < 2500; i++) {
        read += static_cast<uint64_t>(run.time.FramesToRead());
        run.time.Advance(i, read);
    }
    // 3 of the prefill, 2499 steps of 1.2, and one more in the first and the second thousand.
    EXPECT_NEAR(3 + 2499 * 1.2 + 2, double(read), 1);
}

}  // namespace
}  // namespace kelvane
