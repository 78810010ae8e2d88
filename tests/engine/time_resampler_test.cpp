#include "engine/time_resampler.h"

#include <gtest/gtest.h>

#include "picture/motion_blur_deinterlace.h"
#include "support/drawn_picture.h"

namespace kelvane {
namespace {

using Plan = ResamplingPlan;
constexpr Neighbour kP = Neighbour::kPrevious, kK = Neighbour::kCurrent, kN = Neighbour::kNext,
                    kM = Neighbour::kNewest;

// Four pictures, by default small ones whose lines carry their picture's number and their own.
struct Turn {
    explicit Turn(int32_t pictureWidth = 3, int32_t pictureHeight = 8)
        : width(pictureWidth),
          height(pictureHeight),
          state(registry, 1),
          resampler(width, height, kCoarseMotion, state),
          output(Row() * size_t(height), 255)
    {
        for (int i = 0; i < 4; i++)
            for (int32_t y = 0; y < height; y++)
                pictures[size_t(i)].insert(pictures[size_t(i)].end(), Row(), Value(i, y));
        Begin();
    }
    void Begin()
    {
        resampler.BeginTurn([this](Neighbour name) { return shown[size_t(name)]->data(); });
    }
    static uint8_t Value(int picture, int32_t y) { return uint8_t(60 * picture + 7 * y); }
    size_t Row() const { return size_t(width) * 4; }
    // Expects that lines of a parity hold picture `a`, mixed with `b`.
    void ExpectLines(int parity, Neighbour a, Neighbour b, int weight) const
    {
        for (int32_t y = parity; y < height; y += 2) {
            const int d = Value(int(a), y), s = Value(int(b), y);
            const Bytes expected(Row(), uint8_t(d + ((s - d) * weight >> 8)));
            const auto line = output.begin() + ptrdiff_t(Row()) * y;
            EXPECT_EQ(expected, Bytes(line, line + ptrdiff_t(Row()))) << "line " << y;
        }
    }

    int32_t width, height;
    CodecRegistry registry;
    ConversionState state;
    TimeResampler resampler;
    std::array<Bytes, 4> pictures;
    std::array<Bytes*, 4> shown = {&pictures[0], &pictures[1], &pictures[2], &pictures[3]};
    Bytes output;
};

TEST(TimeResampler, CopiesWeavesAndBlendsTheLinesOfThePlan)
{
    for (const auto& [even, odd] : {std::pair{kP, kP}, {kN, kK}, {kK, kM}, {kP, kK}})
        for (const int evenWeight : {0, 100, 254})
            for (const int oddWeight : {0, 23, 200}) {
                Turn turn;
                Plan plan;
                plan.base = Plan::kWeave;
                plan.even = even;
                plan.odd = odd;
                plan.blend_even = {kK, evenWeight};
                plan.blend_odd = {kP, oddWeight};
                turn.resampler.Make(plan, turn.output.data());
                turn.ExpectLines(0, even, kK, evenWeight);
                turn.ExpectLines(1, odd, kP, oddWeight);
            }
}

TEST(TimeResampler, MixesWholePicturesAndLeavesTheOutputWhenThereIsNothingToDo)
{
    Turn turn;
    Plan plan;
    plan.base = Plan::kMix;
    plan.even = plan.odd = kK;
    plan.blend_all = {kN, 77};
    turn.resampler.Make(plan, turn.output.data());
    for (const int parity : {0, 1})
        turn.ExpectLines(parity, kK, kN, 77);
    const Bytes before = turn.output;
    turn.resampler.Make(Plan{}, turn.output.data());
    EXPECT_EQ(before, turn.output);
}

TEST(TimeResampler, ShiftsAFieldOfTheInterpolatedPicturesWithoutTouchingThem)
{
    // By number of the picture shown as previous, current and next: also where the film begins and
    // ends.
    constexpr size_t kShown[][3] = {{0, 1, 2}, {1, 1, 2}, {0, 1, 1}, {1, 1, 1}};
    for (const auto& shown : kShown)
        for (const int parity : {-1, 0, 1}) {
            Turn turn(64, 64);
            for (size_t i = 0; i < 3; i++) {
                const Bytes wide = DrawPicture(72, 64, 4, 3);
                for (size_t y = 0; y < 64; y++)
                    std::copy_n(wide.begin() + ptrdiff_t((y * 72 + 3 * i) * 4), turn.Row(),
                                turn.pictures[i].begin() + ptrdiff_t(y * turn.Row()));
                turn.shown[i] = &turn.pictures[shown[i]];
            }
            const auto before = turn.pictures;
            Plan plan;
            plan.base = Plan::kInterpolate;
            plan.fields = true;
            plan.shift_field = parity >= 0;
            plan.shifted_parity = std::max(parity, 0);
            plan.time = 0.4f;
            turn.resampler.Make(plan, turn.output.data());
            EXPECT_EQ(before, turn.pictures);

            Bytes from = before[shown[1]], to = before[shown[2]], expected(turn.output.size(), 255);
            for (size_t y = size_t(parity); parity >= 0 && y < 64; y += 2) {
                const auto line = ptrdiff_t(y * turn.Row());
                std::copy_n(before[shown[0]].begin() + line, turn.Row(), from.begin() + line);
                std::copy_n(before[shown[1]].begin() + line, turn.Row(), to.begin() + line);
            }
            MotionState motion;
            plain::MotionInterpolate(motion, from.data(), to.data(), 64, 64, true, expected.data(),
                                     0.4f, kCoarseMotion);
            EXPECT_EQ(expected, turn.output)
                << "parity " << parity << " shown " << shown[0] << shown[1] << shown[2];
        }
}

TEST(TimeResampler, TheSceneTestCountsColoursOverAllPixels)
{
    constexpr size_t kWhole = 60000000 / (3 * 255), kRest = 60000000 % (3 * 255);
    Turn turn(320, 256);
    Bytes &a = turn.pictures[0], &b = turn.pictures[1];
    std::fill(a.begin(), a.end(), uint8_t{0});
    b = a;
    std::fill_n(b.end() - ptrdiff_t(kWhole * 4), kWhole * 4, uint8_t{255});
    for (size_t i = 3; i < b.size(); i += 4)
        b[i] = uint8_t(i);  // the fourth byte does not count
    b[0] = 255;
    b[1] = kRest - 255;
    EXPECT_TRUE(turn.resampler.Alike(kP, kK));
    b[2] = 1;
    EXPECT_TRUE(turn.resampler.Alike(kK, kP)) << "asked before in this turn";
    turn.Begin();
    EXPECT_FALSE(turn.resampler.Alike(kP, kK));
    EXPECT_FALSE(turn.resampler.Alike(kK, kP));
    EXPECT_TRUE(turn.resampler.Alike(kK, kK));
}

TEST(TimeResampler, DeinterlacesTheFieldThatThePlanNames)
{
    for (const FinalStep step :
         {FinalStep::kNone, FinalStep::kAdaptive, FinalStep::kBlur, FinalStep::kFixedBlur})
        for (const int sel : {0, 1}) {
            Turn turn(16, 8);
            Plan plan;
            plan.base = Plan::kWeave;
            plan.even = kP;
            plan.odd = step == FinalStep::kAdaptive ? kN : kP;  // lines 7 apart are blurred
            plan.final_step = step;
            plan.sel = sel;
            turn.resampler.Make(plan, turn.output.data());

            Turn other(16, 8);
            Plan woven = plan;
            woven.final_step = FinalStep::kNone;
            other.resampler.Make(woven, other.output.data());
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
