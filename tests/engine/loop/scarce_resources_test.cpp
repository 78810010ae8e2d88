// Whole conversions with too few threads and too little memory: the same bytes, or a failure; never
// the end of the program, nor anything left behind in what is kept from file to file.

#include "support/scarce_resources.h"

#include <new>

#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"

namespace kelvane {
namespace {

constexpr int kFailed = -1;
constexpr int32_t kBlend = 1, kMotion = 2;  // ways of resampling

// Frames and sound of a file. Not the whole of it, for some headers hold the time of day.
Bytes ContentOf(const std::string& path)
{
    Film film(path);
    Bytes all = film.track;
    for (const Bytes& frame : film.frames)
        all.insert(all.end(), frame.begin(), frame.end());
    return all;
}

class ScarceResources : public ConversionCase {
protected:
    ScarceResources() : fClip(MakeClip(3)) {}

    // What the clip's conversion makes.
    Bytes Convert(ConversionState& state)
    {
        EXPECT_EQ(0, StatusOf(state)) << fResult.message;
        return ContentOf(fFolder.Path("out"));
    }

    // Of the clip's conversion. What is thrown counts as failed, and as told.
    int StatusOf(ConversionState& state)
    {
        try {
            ConversionSettings settings;
            FillConversionSettings(fOptions, fCodecs, settings);
            return ConvertFile(fClip, fFolder.Path("out"), TypeOfDestination(fOptions.selection),
                               settings, nullptr, &fResult, state)
                .Code();
        } catch (const std::bad_alloc&) {
            fResult.message = "thrown";
            return kFailed;
        }
    }

    // Fails one allocation after the other, with all that follow when `lasting`, until the
    // conversion needs no more of them.
    void FailEachAllocation(size_t bytes, bool lasting)
    {
        ConversionState state(fRegistry, 2);
        const Bytes good = Convert(state);
        int number = 1;
        for (bool failed = true; failed; number++) {
            SCOPED_TRACE(testing::Message() << "allocation " << number);
            FailAllocation(number, bytes, lasting);
            const int status = StatusOf(state);
            failed = AllocationFailed();
            FailAllocation(0);
            EXPECT_TRUE(failed || status == 0);
            if (status != 0)
                EXPECT_FALSE(fResult.message.empty());
            else
                EXPECT_TRUE(good == ContentOf(fFolder.Path("out")));
            EXPECT_TRUE(good == Convert(state)) << "the next file is converted as ever";
        }
        EXPECT_GT(number, 10) << "hardly anything failed";
    }

    // With the threads for resampling and for the newest picture at work.
    void ToNTSC(int32_t resampling, const std::string& format, const std::string& codec)
    {
        fOptions.opselection = kOperationToNTSC;
        fOptions.blendmode = resampling;
        Choose(format, codec);
    }

    const std::string fClip;
};

TEST_F(ScarceResources, TheNumberOfThreadsToBeHadDoesNotChangeTheBytes)
{
    ToNTSC(kMotion, "dv", "");
    ConversionState one(fRegistry, 1);
    const Bytes good = Convert(one);
    for (int allowed = 0; allowed <= 4; allowed++) {
        AllowThreads(allowed);
        ConversionState four(fRegistry, 4);
        EXPECT_TRUE(good == Convert(four)) << allowed << " threads";
        EXPECT_GT(ThreadsRefused(), 0);
        AllowThreads(-1);
    }
}

TEST_F(ScarceResources, MemoryThatRunsOutFailsOneFileAndNoMore)
{
    constexpr size_t kPictures = 500000;  // and their planes; what is smaller is left alone
    ToNTSC(kMotion, "dv", "");
    FailEachAllocation(kPictures, true);
    ToNTSC(kBlend, "avi1", "huffyuv-yuv");
    fOptions.dstint = 3;
    FailEachAllocation(kPictures, false);
}

// Takes minutes; run by hand with --gtest_also_run_disabled_tests after changes of ownership.
TEST_F(ScarceResources, DISABLED_NorDoesAnyAllocationHoweverSmall)
{
    const struct {
        int32_t resampling;
        const char *format, *codec;
    } ways[] = {
        {kBlend, "dv", ""},        {kMotion, "dv", ""},           {kBlend, "mov", ""},
        {kBlend, "avi2-odml", ""}, {kBlend, "avi1", "animation"}, {kMotion, "avi1", "huffyuv-yuv"},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(testing::Message() << way.format << ' ' << way.codec);
        ToNTSC(way.resampling, way.format, way.codec);
        for (const bool lasting : {false, true})
            FailEachAllocation(1, lasting);
    }
}

}  // namespace
}  // namespace kelvane
