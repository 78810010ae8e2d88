// The number of threads changes nothing in a file, where pictures depend on those before them too.

#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"

namespace kelvane {
namespace {

using Threads = ConversionCase;

TEST_F(Threads, GiveTheSameBytesWhereAHistoryIsKept)
{
    const struct {
        bool from_pal;
        int32_t method, from, to, deinterlace_source;
    } rows[] = {
        // Reverse pulldown of pictures deinterlaced on the way in, and out, and both ways, which
        // share one history; and of fields that change places.
        {false, 3, 2, 0, 1},
        {false, 3, 2, 3, 0},
        {false, 3, 2, 3, 1},
        {false, 3, 1, 2, 1},
        // The other way, and by the other methods.
        {true, 3, 2, 3, 1},
        {true, 1, 2, 3, 0},
        {false, 0, 1, 4, 0},
        {false, 2, 2, 3, 0},
    };
    const std::string clips[] = {MakeClip("ntsc.dv", 8, {.pal = false}), MakeClip("pal.dv", 8, {})};
    for (const auto& row : rows) {
        const std::string& clip = clips[row.from_pal];
        fOptions.opselection = row.from_pal ? kOperationToNTSC : kOperationToPAL;
        fOptions.blendmode = row.method;
        fOptions.srcint = row.from, fOptions.dstint = row.to;
        fOptions.deintPD = row.deinterlace_source;
        const auto with = [&](int threads) {
            ConversionState state(fRegistry, threads);
            ConversionSettings settings;
            FillConversionSettings(fOptions, fCodecs, settings);
            const std::string out = fFolder.Path("out");
            EXPECT_EQ(0, ConvertFile(clip, out, TypeOfDestination(fOptions.selection), settings,
                                     nullptr, nullptr, state));
            return ReadWhole(out);
        };
        const Bytes one = with(1);
        EXPECT_LE(5u * 120000, one.size());
        EXPECT_TRUE(one == with(2)) << testing::PrintToString(
            std::tuple(row.from_pal, row.method, row.from, row.to, row.deinterlace_source));
    }
}

}  // namespace
}  // namespace kelvane
