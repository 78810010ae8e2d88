#include "engine/pictures/time_resampler.h"

#include <gtest/gtest.h>

#include "engine/pictures/scene_test.h"
#include "engine/timing/pulldown_plan.h"
#include "picture/motion_blur_deinterlace.h"
#include "support/drawn_picture.h"

namespace kelvane {
namespace {

using Plan = ResamplingPlan;
using enum Neighbour;

// Four pictures, by default small ones whose lines carry their picture's number and their own.
struct Turn {
    explicit Turn(int32_t across = 3, int32_t down = 8) : width(across), height(down)
    {
        for (int i = 0; i < 4; i++)
            for (int32_t y = 0; y < height; y++)
                pictures[size_t(i)].insert(pictures[size_t(i)].end(), Row(), Value(i, y));
    }
    const Bytes& Make(const Plan& plan)
    {
        NeighbourPictures seen{};
        for (const Neighbour name : {kPrevious, kCurrent, kNext, kNewest})
            if (plan.LooksAt(name)) seen[size_t(name)] = shown[size_t(name)]->data();
        resampler.Make(plan, seen, output.data());
        return output;
    }
    static uint8_t Value(int picture, int32_t y) { return uint8_t(60 * picture + 7 * y); }
    size_t Row() const { return size_t(width) * 4; }
    // Expects that lines of a parity hold picture `a`, mixed with `b`.
    void ExpectLines(int parity, Neighbour a, Neighbour b, int weight) const
    {
        for (int32_t y = parity; y < height; y += 2) {
            const int d = Value(int(a), y), s = Value(int(b), y);
            for (size_t i = 0; i < Row(); i++)
                EXPECT_EQ(d + ((s - d) * weight >> 8), output[Row() * size_t(y) + i]) << y;
        }
    }

    int32_t width, height;
    CodecRegistry registry;
    ConversionState state{registry, 1};
    TimeResampler resampler{width, height, MotionDetail::kCoarse, state};
    std::array<Bytes, 4> pictures;
    std::array<Bytes*, 4> shown = {&pictures[0], &pictures[1], &pictures[2], &pictures[3]};
    Bytes output = Bytes(Row() * size_t(height), 255);
};

TEST(TimeResampler, CopiesWeavesAndBlendsTheLinesOfThePlan)
{
    constexpr Neighbour kWoven[][2] = {
        {kPrevious, kPrevious}, {kNext, kCurrent}, {kCurrent, kNewest}, {kPrevious, kCurrent}};
    for (const auto& [even, odd] : kWoven)
        for (const int weight : {0, 100, 254})
            for (const int oddWeight : {0, 23, 200}) {
                Turn turn;
                Plan plan = Weave(even, odd);
                plan.blend_even = {kCurrent, weight};
                plan.blend_odd = {kPrevious, oddWeight};
                turn.Make(plan);
                turn.ExpectLines(0, even, kCurrent, weight);
                turn.ExpectLines(1, odd, kPrevious, oddWeight);
            }
}

TEST(TimeResampler, MixesWholePicturesAndLeavesTheOutputWhenThereIsNothingToDo)
{
    Turn turn;
    Plan plan = Copy(kCurrent);
    plan.base = Plan::kMix;
    plan.blend_all = {kNext, 77};
    for (const Plan& next : {plan, Plan{}}) {
        turn.Make(next);
        for (const int parity : {0, 1})
            turn.ExpectLines(parity, kCurrent, kNext, 77);
    }
}

TEST(TimeResampler, ShiftsAFieldOfTheInterpolatedPicturesWithoutTouchingThem)
{
    // By number of the picture shown as previous, current and next: also where the film begins and
    // ends.
    constexpr size_t kShown[][3] = {{0, 1, 2}, {1, 1, 2}, {0, 1, 1}, {1, 1, 1}};
    const Bytes wide = DrawPicture(72, 64, 4, 3);
    for (const auto& shown : kShown)
        for (const int parity : {-1, 0, 1}) {
            Turn turn(64, 64);
            const auto copy = [&](const Bytes& from, size_t at, Bytes& to, size_t y) {
                std::copy_n(&from[at], turn.Row(), &to[y * turn.Row()]);
            };
            for (size_t i = 0; i < 3; i++) {
                for (size_t y = 0; y < 64; y++)
                    copy(wide, (y * 72 + 3 * i) * 4, turn.pictures[i], y);
                turn.shown[i] = &turn.pictures[shown[i]];
            }
            const auto before = turn.pictures;
            Bytes from = before[shown[1]], to = before[shown[2]], expected(turn.output.size(), 255);
            for (size_t y = size_t(parity); parity >= 0 && y < 64; y += 2) {
                copy(before[shown[0]], y * turn.Row(), from, y);
                copy(before[shown[1]], y * turn.Row(), to, y);
            }
            MotionState motion;
            plain::MotionInterpolate(motion, from.data(), to.data(), 64, 64, true, expected.data(),
                                     0.4f, MotionDetail::kCoarse);
            Plan plan;
            plan.base = Plan::kInterpolate;
            plan.fields = true;
            plan.shift_field = parity >= 0;
            plan.shifted_parity = std::max(parity, 0);
            plan.time = 0.4f;
            EXPECT_EQ(expected, turn.Make(plan)) << parity << testing::PrintToString(shown);
            EXPECT_EQ(before, turn.pictures);
        }
}

TEST(SceneTest, CountsColoursOverAllPixels)
{
    constexpr size_t kWhole = 60000000 / (3 * 255), kRest = 60000000 % (3 * 255);
    WorkerPool pool(1);
    SceneTest scenes(320 * 256, pool);
    Bytes a(320 * 256 * 4, 0), b = a;
    std::fill_n(b.end() - ptrdiff_t(kWhole * 4), kWhole * 4, uint8_t{255});
    for (size_t i = 3; i < b.size(); i += 4)
        b[i] = uint8_t(i);  // the fourth byte does not count
    b[0] = 255;
    b[1] = kRest - 255;
    EXPECT_TRUE(scenes.Alike(a.data(), b.data()));
    b[2] = 1;
    EXPECT_TRUE(scenes.Alike(b.data(), a.data())) << "asked before in this turn";
    scenes.BeginTurn();
    EXPECT_FALSE(scenes.Alike(a.data(), b.data()));
    EXPECT_FALSE(scenes.Alike(b.data(), a.data()));
    EXPECT_TRUE(scenes.Alike(b.data(), b.data()));
}

TEST(TimeResampler, DeinterlacesTheFieldThatThePlanNames)
{
    for (const FinalStep step :
         {FinalStep::kNone, FinalStep::kAdaptive, FinalStep::kBlur, FinalStep::kFixedBlur})
        for (const int sel : {0, 1}) {
            Turn turn(16, 8), other(16, 8);
            // Lines 7 apart are blurred.
            Plan plan = Weave(kPrevious, step == FinalStep::kAdaptive ? kNext : kPrevious);
            plan.sel = sel;
            other.Make(plan);
            plan.final_step = step;
            turn.Make(plan);
            DeinterlaceState state;
            if (step == FinalStep::kAdaptive)
                plain::AdaptiveDeinterlace(state, other.output.data(), 64, 16, 8, sel == 1);
            else if (step != FinalStep::kNone)
                plain::MotionBlurDeinterlace(other.output.data(), 64, 16, 8, 16,
                                             step == FinalStep::kFixedBlur || sel == 0);
            EXPECT_EQ(other.output, turn.output) << "step " << int(step) << " sel " << sel;
        }
}

}  // namespace
}  // namespace kelvane
