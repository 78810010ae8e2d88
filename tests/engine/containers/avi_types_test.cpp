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
        // Pictures that are not DV have one RIFF and an old index in each type.
        {"avi1-odml", "rgb24", {1}, {}, OldIndex::kAlways},
        {"avi2-odml", "huffyuv-yuv", {1}, {}, OldIndex::kAlways},
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

}  // namespace
}  // namespace kelvane
