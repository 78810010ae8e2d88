// What is known of a destination before anything is touched.

#include <gtest/gtest.h>

#include <cerrno>

#include "engine/containers/container.h"
#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"

namespace kelvane {
namespace {

class DestinationPlans : public ConversionCase {
protected:
    DestinationPlan PlanFor(const std::string& format, const Source& source)
    {
        Choose(format);
        ConversionSettings settings;
        FillConversionSettings(fOptions, fCodecs, settings);
        return PlanDestination(fFolder.Path("film.avi"), settings, source,
                               TypeOfDestination(fOptions.selection));
    }
};

TEST_F(DestinationPlans, NameAllFilesThatWillBeWritten)
{
    const OpenedSource source = OpenSource(MakeClip(3));
    ASSERT_TRUE(source);
    EXPECT_EQ(std::vector{fFolder.Path("film.avi")}, FilesOf(PlanFor("avi2-odml", **source)));
    DestinationPlan plan = PlanFor("avi1-ref", **source);
    EXPECT_EQ(3u, plan.frames);
    const std::vector all = {fFolder.Path("film.avi"), fFolder.Path("film.000"),
                             fFolder.Path("film.001")};
    // A file is left behind the second frame of 144008 bytes, and the next one begun.
    plan.avi_limits.reference_file = 144007;
    for (const uint64_t frames : {0, 1, 2, 3}) {
        plan.frames = frames;
        for (const std::string& path : all)
            std::filesystem::remove(path);
        const CreatedDestination created = CreateDestination(plan);
        ASSERT_TRUE(created);
        const Bytes frame(144000);
        for (uint64_t i = 0; i < frames; i++)
            EXPECT_EQ(0, (*created)->WriteFrame(frame));
        EXPECT_EQ(0, (*created)->Finish());
        const std::vector<std::string> named = FilesOf(plan);
        EXPECT_EQ(std::vector(all.begin(), all.begin() + (frames < 2 ? 2 : 3)), named);
        for (const std::string& path : all)
            EXPECT_EQ(frames > 0 ? std::ranges::count(named, path) > 0 : path == all[0],
                      std::filesystem::exists(path))
                << path << " " << frames;
    }
}

TEST_F(DestinationPlans, WhatWasNotPlannedReplacesNothing)
{
    const OpenedSource source = OpenSource(MakeClip(3));
    ASSERT_TRUE(source);
    DestinationPlan plan = PlanFor("avi1-ref", **source);
    plan.frames = 1;
    plan.avi_limits.reference_file = 0;
    const Bytes somebodys = {1, 2, 3};
    fFolder.Write("film.000", somebodys);
    fFolder.Write("film.001", somebodys);
    const CreatedDestination created = CreateDestination(plan);
    ASSERT_TRUE(created);
    const Bytes frame(144000);
    EXPECT_EQ(0, (*created)->WriteFrame(frame));
    const Status more = (*created)->WriteFrame(frame);
    EXPECT_EQ(EEXIST, more.SystemError());
    EXPECT_EQ(0, (*created)->Finish());
    EXPECT_EQ(2 * 144008u, ReadWhole(fFolder.Path("film.000")).size()) << "was planned";
    EXPECT_EQ(somebodys, ReadWhole(fFolder.Path("film.001")));
}

}  // namespace
}  // namespace kelvane
