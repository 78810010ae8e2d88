// What becomes of each AVI type of the menu at its limits of size.

#include <numeric>

#include "engine/containers/destination.h"
#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"
#include "support/riff.h"

namespace kelvane {
namespace {

using AVITypes = ConversionCase;

enum class OldIndex { kNever, kByOption, kAlways };
using Counts = std::vector<size_t>;

// Frames in each RIFF of a film.
Counts FramesOfRiffs(const RiffFilm& film)
{
    Counts counts;
    for (const RiffNode& node : film.nodes) {
        if (node.id == "RIFF") counts.push_back(0);
        if (node.id == "00db" || node.id == "00dc") counts.back()++;
    }
    return counts;
}

TEST_F(AVITypes, GoOnInANewRiffOrFileOrEndAtTheirLimits)
{
    constexpr AVILimits kLimits = {
        .first_riff = 300000, .later_riff = 300000, .only_riff = 300000, .reference_file = 300000};
    const struct {
        const char *format, *codec;
        Counts riffs;       // frames in each
        Counts files = {};  // frames in each file that is referred to
        OldIndex index = OldIndex::kByOption;
    } rows[] = {
        {"avi1", "", {2}},
        {"avi1-odml", "", {2, 3, 3}, {}, OldIndex::kNever},
        {"avi2", "", {2}},
        {"avi2-odml", "", {2, 3, 3}, {}, OldIndex::kNever},
        {"avi1-ref", "", {8}, {4, 4}},
        {"avi2-ref", "", {8}, {4, 4}},
        {"canopus1", "", {2}, {}, OldIndex::kAlways},
        {"canopus2", "", {2}, {}, OldIndex::kAlways},
        {"matrox", "", {2, 3, 3}, {}, OldIndex::kAlways},
        // Pictures that are not DV have an old index in each type, as long as there is one RIFF.
        {"avi1", "rgb24", {1}, {}, OldIndex::kAlways},
        {"avi2", "huffyuv-yuv", {1}, {}, OldIndex::kAlways},
        {"avi1-odml", "rgb24", {1, 1, 1, 1, 1, 1, 1, 1}, {}, OldIndex::kNever},
        {"avi2-odml", "huffyuv-yuv", {1, 1, 1, 1, 1, 1, 1, 1}, {}, OldIndex::kNever},
    };
    const auto source = OpenSource(MakeClip(3));
    ASSERT_TRUE(source);
    for (const auto& row : rows)
        for (const int32_t option : {0, 1}) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(row.format, row.codec, option)));
            fOptions.add_idx1 = option;
            Choose(row.format, row.codec);
            ConversionSettings settings;
            FillConversionSettings(fOptions, fCodecs, settings);
            const std::string path = fFolder.Path("film.avi");
            DestinationPlan plan =
                PlanDestination(path, settings, **source, TypeOfDestination(fOptions.selection));
            plan.avi_limits = kLimits;
            plan.frames = 8;
            const auto created = CreateDestination(plan);
            ASSERT_TRUE(created);
            Destination* const film = (*created).get();
            size_t taken = 0;
            const Bytes frame(plan.format.IsDV() ? 144000 : 500000);
            while (taken < 8 && film->WriteFrame(frame) == 0)
                taken++;
            EXPECT_EQ(0, film->Finish());
            const RiffFilm found(path);
            EXPECT_TRUE(found.IsWhole());
            EXPECT_EQ(row.riffs, FramesOfRiffs(found));
            EXPECT_EQ(std::accumulate(row.riffs.begin(), row.riffs.end(), size_t{0}), taken);
            const bool index =
                row.index == OldIndex::kAlways || (row.index == OldIndex::kByOption && option == 1);
            EXPECT_EQ(index ? "idx1" : "!", found.Find("idx1").id);
            for (size_t i = 0; i < row.files.size(); i++)
                EXPECT_EQ(row.files[i] * 144008,
                          ReadWhole(fFolder.Path("film.00" + std::to_string(i))).size());
        }
}

// Pictures that are not DV, in a type that can go on in further RIFFs.
TEST_F(AVITypes, HaveTheIndexesThatTheirRiffsAllow)
{
    const auto source = OpenSource(MakeClip(3));
    ASSERT_TRUE(source);
    for (const uint64_t limit : {500000, 5000000}) {
        Choose("avi2-odml", "rgb24");
        ConversionSettings settings;
        FillConversionSettings(fOptions, fCodecs, settings);
        const std::string path = fFolder.Path("film.avi");
        DestinationPlan plan =
            PlanDestination(path, settings, **source, TypeOfDestination(fOptions.selection));
        plan.avi_limits = {.first_riff = limit, .later_riff = limit};
        const auto created = CreateDestination(plan);
        ASSERT_TRUE(created);
        for (uint8_t i = 0; i < 3; i++)
            ASSERT_EQ(0, (*created)->WriteFrame(Bytes(720 * 576 * 3, i)));
        EXPECT_EQ(0, (*created)->Finish());
        const RiffFilm film(path);
        const bool one = limit == 5000000;
        EXPECT_EQ(one ? Counts{3} : (Counts{1, 1, 1}), FramesOfRiffs(film));
        EXPECT_EQ(one ? "idx1" : "!", film.Find("idx1").id);
        EXPECT_EQ(one ? 0x10u : 0, film.At("avih", 12, 4) & 0x10);
        const Film read(path);
        ASSERT_EQ(3u, read.frames.size());
        EXPECT_EQ(2, read.frames[2][0]);
    }
}

}  // namespace
}  // namespace kelvane
