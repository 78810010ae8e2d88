// Numbers that decide in the making of a picture, from both sides.

#include <gtest/gtest.h>

#include "base/byte_cursor.h"
#include "engine/pictures/time_resampler.h"

namespace kelvane {
namespace {

// The picture that a plan makes of two, whose lines are each of one colour: B, G, R, X.
Bytes Made(const ResamplingPlan& plan, const Bytes& current, const Bytes& next, int32_t width)
{
    const auto height = static_cast<int32_t>(current.size()) / 4;
    const auto wide = [&](const Bytes& lines) {
        Bytes picture;
        for (size_t line = 0; line < lines.size(); line += 4)
            for (int32_t x = 0; x < width; x++)
                picture.insert(picture.end(), &lines[line], &lines[line] + 4);
        return picture;
    };
    const Bytes pictures[] = {wide(current), wide(next)};
    const CodecRegistry registry;
    ConversionState state(registry, 1);
    TimeResampler resampler(width, height, MotionDetail::kFine, state);
    NeighbourPictures seen{};
    seen[size_t(Neighbour::kCurrent)] = pictures[0].data();
    seen[size_t(Neighbour::kNext)] = pictures[1].data();
    Bytes output(pictures[0].size());
    resampler.Make(plan, seen, output.data());
    Bytes lines;
    for (size_t line = 0; line < size_t(height); line++)
        lines.insert(lines.end(), &output[line * size_t(width) * 4],
                     &output[line * size_t(width) * 4] + 4);
    return lines;
}

TEST(Thresholds, LinesAreBlurredThatDifferByMoreThanSixteenInAllColours)
{
    const struct {
        Bytes line;  // above a black one
        bool blurred;
    } rows[] = {
        {{16, 0, 0, 0}, false}, {{0, 0, 17, 0}, true},    {{5, 5, 6, 0}, false},
        {{6, 5, 6, 0}, true},   {{0, 16, 0, 255}, false}, {{255, 0, 0, 0}, true},
        {{6, 6, 5, 200}, true},
    };
    for (const FinalStep step : {FinalStep::kBlur, FinalStep::kFixedBlur})
        for (const auto& [line, blurred] : rows) {
            Bytes lines = line;
            lines.insert(lines.end(), 4, uint8_t{0});
            ResamplingPlan plan;
            plan.base = ResamplingPlan::kWeave;
            plan.final_step = step;
            EXPECT_EQ(blurred, Made(plan, lines, lines, 20) != lines)
                << testing::PrintToString(line);
        }
}

TEST(Thresholds, LinesAreRebuiltThatMovedByMoreThanFifteenInAColour)
{
    // Against the black before the first picture, and between black lines.
    for (const int colour : {0, 1, 2})
        for (const uint8_t moved : {15, 16}) {
            Bytes lines(7 * 4);
            lines[size_t(3 * 4 + colour)] = moved;
            ResamplingPlan plan;
            plan.base = ResamplingPlan::kWeave;
            plan.final_step = FinalStep::kAdaptive;
            const Bytes made = Made(plan, lines, lines, 20);
            EXPECT_EQ(moved == 15 ? 15 : 0, made[size_t(3 * 4 + colour)]);
        }
}

}  // namespace
}  // namespace kelvane
