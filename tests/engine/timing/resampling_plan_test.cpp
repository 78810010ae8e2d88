#include "engine/timing/resampling_plan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "engine/timing/pulldown_plan.h"

namespace kelvane {
namespace {

constexpr char kNames[] = "PKNM";  // previous, current, next, newest

// "K" a copy, "K/N" even lines of K and odd ones of N, "K+N51/K" the even ones mixed with N; "=0.3"
// a frame between K and N, "@0.3" its fields, "^1" with the odd ones of a frame earlier; then how
// the picture is deinterlaced, and which field is kept.
std::string InWords(const ResamplingPlan& plan)
{
    std::ostringstream out;
    const auto lines = [&](Neighbour main, const ResamplingPlan::Blend& blend) {
        out << kNames[size_t(main)];
        if (blend.weight > 0) out << '+' << kNames[size_t(blend.partner)] << blend.weight;
    };
    switch (plan.base) {
        case ResamplingPlan::kNothing:
            out << "nothing";
            break;
        case ResamplingPlan::kDrop:
            return "dropped";
        case ResamplingPlan::kMix:
            lines(plan.even, plan.blend_all);
            break;
        case ResamplingPlan::kInterpolate:
            out << (plan.fields ? '@' : '=') << plan.time;
            if (plan.shift_field) out << '^' << plan.shifted_parity;
            break;
        case ResamplingPlan::kWeave:
            lines(plan.even, plan.blend_even);
            if (plan.even == plan.odd && plan.blend_even.weight == 0 && plan.blend_odd.weight == 0)
                break;
            out << '/';
            lines(plan.odd, plan.blend_odd);
    }
    constexpr const char* kSteps[] = {"", " a", " b", " fixed"};
    out << kSteps[size_t(plan.final_step)];
    if (plan.final_step == FinalStep::kAdaptive || plan.final_step == FinalStep::kBlur)
        out << plan.sel;
    return out.str();
}

enum { kNearest, kBlend, kMotion, kPulldown };
constexpr double kUp = 25 / 29.97, kDown = 29.97 / 25;

// The plans at some positions, behind each other.
struct Line {
    double step;
    int method, from, to;  // fields: 0 progressive or as the source, 1 upper, 2 lower first
    const char* cut;       // the pictures of a later scene: "NM" is a cut behind K
    const char* plans;
    bool may_change_order = false;
};

std::string PlanOf(const Line& line, ResamplingInput in)
{
    const auto scene = [&](Neighbour which) {
        return std::string(line.cut).find(kNames[size_t(which)]) != std::string::npos;
    };
    in.method = ResamplingMethod(line.method);
    in.source_interlace = FieldOrder(line.from);
    in.target_interlace = FieldTarget(line.to);
    in.allow_field_order_change = line.may_change_order;
    return InWords(
        DecideResampling(in, [&](Neighbour a, Neighbour b) { return scene(a) == scene(b); }));
}

std::string PlansOf(const Line& line, const std::vector<double>& positions)
{
    std::string plans;
    for (const double position : positions)
        plans +=
            (plans.empty() ? "" : "  ") + PlanOf(line, {.position = position, .step = line.step});
    return plans;
}

TEST(ResamplingPlan, TakesAFrameThatFallsOnASourceFrame)
{
    for (const Line& line : {
             Line{1, kBlend, 2, 0, "", "K"},
             {1, kBlend, 1, 2, "", "K/P"},
             {1, kBlend, 1, 2, "KNM", "P"},
             {1, kMotion, 2, 1, "", "P/K"},
             {1, kMotion, 2, 1, "KNM", "P"},
             {1, kNearest, 2, 3, "", "K a1"},
             {1, kNearest, 1, 4, "", "K b1"},
             {1, kNearest, 1, 5, "", "K fixed"},
         })
        EXPECT_EQ(line.plans, PlansOf(line, {7.000999})) << line.method << line.from << line.to;
    EXPECT_EQ("nothing", PlansOf({1.2, kPulldown, 2, 0, "", ""}, {3.4}));
}

TEST(ResamplingPlan, FollowsThePositionBetweenTwoFrames)
{
    // On both sides of the thresholds of the rules.
    const std::vector<double> positions = {2.05, 2.2, 2.3, 2.45, 2.55, 2.6, 2.8, 2.95};
    for (const Line& line : {
             Line{kUp, kNearest, 0, 0, "", "K  K  K  K  N  N  N  N"},
             {kUp, kNearest, 1, 1, "", "K  K  K  K  N/K  N  N  N"},
             {kUp, kNearest, 1, 1, "NM", "K  K  K  K  N  N  N  N"},
             {kDown, kNearest, 1, 2, "", "K/P  K/P  K/P  N/P  N/K  N/K  N/K  N/K"},
             {kUp, kNearest, 1, 2, "KNM", "P  P  P  P  K  N/K  N/K  N/K"},
             {kUp, kNearest, 1, 2, "NM", "K/P  K/P  K/P  K/P  K  K  K  K"},
             {kDown, kNearest, 2, 1, "", "P/K  P/K  P/K  P/N  K/N  K/N  K/N  K/N"},
             {kDown, kNearest, 2, 1, "NM", "P/K  P/K  P/K  P  K  K  K  K"},
             {kDown, kNearest, 2, 2, "", "K  K  K  N/K  N  N  N  N"},
             {kUp, kNearest, 2, 2, "NM", "K  K  K  K  N  N  N  N"},
             {kUp, kNearest, 1, 3, "", "K a1  K a1  K a0  K a0  N/K a0  N/K a0  N/K a1  N/K a1"},
             {kDown, kNearest, 1, 3, "NM", "K a1  K a1  K a0  K a0  N a0  N a0  N a1  N a1"},
             {kUp, kNearest, 2, 4, "", "K b0  K b0  K b1  K b1  K/N b1  K/N b1  K/N b0  K/N b0"},
             {kUp, kNearest, 2, 4, "NM", "K b0  K b0  K b1  K b1  N b1  N b1  N b0  N b0"},
             {kUp, kBlend, 0, 0, "", "K+N12  K+N51  K+N76  K+N114  K+N140  K+N153  K+N203  K+N242"},
             {kUp, kBlend, 0, 0, "NM", "K  K  K  K  N  N  N  N"},
             {kUp, kBlend, 1, 1, "",
              "K  K+N51/K  K+N76/K  K+N114/K  N/K+N119  N/N+K123  N/N+K72  N/N+K33"},
             {kUp, kBlend, 1, 1, "",
              "K+N24/K  K+N102/K  N+K144/K  N+K66/K  N/K+N24  N/K+N50  N/N+K144  N/N+K66", true},
             {kUp, kBlend, 1, 1, "NM", "K  K  K  K  N  N  N  N"},
             {kDown, kBlend, 1, 2, "",
              "K/P  K/P+K51  K/P+K76  K/P+K114  N+K89/K  N+K76/K  N+K25/K  N/K"},
             {kDown, kBlend, 1, 2, "", "K/P+K24  K/P+K102  K  K  K+N24/K  K+N50/K  N+K50/K  N/K",
              true},
             {kUp, kBlend, 1, 2, "KNM", "P  P  P  P  K+N119/K  N+K123/K  N+K72/K  N+K33/K"},
             {kDown, kBlend, 1, 2, "KNM", "P  P  K  K  K+N24/K  K+N50/K  N+K50/K  N/K", true},
             {kUp, kBlend, 1, 2, "NM", "K/P  K/P+K51  K/P+K76  K/P+K114  K  K  K  K"},
             {kUp, kBlend, 2, 1, "",
              "P/K  P+K51/K  P+K76/K  P+K114/K  K/K+N119  K/N+K123  K/N+K72  K/N+K33"},
             {kUp, kBlend, 2, 1, "", "P+K24/K  P+K102/K  K  K  K/K+N24  K/K+N50  K/N+K144  K/N+K66",
              true},
             {kUp, kBlend, 2, 1, "NM", "P+K24/K  P+K102/K  K  K  K  K  K  K", true},
             {kDown, kBlend, 2, 2, "",
              "K  K/K+N51  K/K+N76  K/K+N114  N+K89/N  N+K76/N  N+K25/N  N"},
             {kDown, kBlend, 2, 2, "",
              "K/K+N24  K/K+N102  K/N+K50  K/N+K24  K+N24/N  K+N50/N  N+K50/N  N", true},
             {kDown, kBlend, 2, 2, "NM", "K  K  K  K  N  N  N  N"},
             {kUp, kMotion, 0, 0, "", "=0.05  =0.2  =0.3  =0.45  =0.55  =0.6  =0.8  =0.95"},
             {kUp, kMotion, 0, 0, "NM", "K  K  K  K  N  N  N  N"},
             {kDown, kMotion, 1, 1, "", "@0.05  @0.2  @0.3  @0.45  @0.55  @0.6  @0.8  @0.95"},
             {kUp, kMotion, 1, 2, "",
              "@0.05^1  @0.2^1  @0.3^1  @0.45^1  @0.55^1  @0.6^1  @0.8^1  @0.95^1"},
             {kUp, kMotion, 1, 2, "NM", "P  P  P  P  K  K  K  K"},
             {kUp, kMotion, 2, 1, "",
              "@0.05^0  @0.2^0  @0.3^0  @0.45^0  @0.55^0  @0.6^0  @0.8^0  @0.95^0"},
             {kUp, kMotion, 2, 1, "KNM", "P  P  P  P  K  K  K  K"},
         })
        EXPECT_EQ(line.plans, PlansOf(line, positions))
            << (line.step == kUp ? "up, " : "down, ") << line.method << ", fields " << line.from
            << line.to << ", cut before " << line.cut
            << (line.may_change_order ? ", order may change" : "");
}

// A blend of less than 9 per cent is left out.
TEST(ResamplingPlan, LeavesOutAWeightThatNobodySees)
{
    const Line line = {kUp, kBlend, 2, 0, "", "K  K/K+N23"};
    EXPECT_EQ(line.plans, PlansOf(line, {4 + 22.9 / 255, 4 + 23.1 / 255}));
}

TEST(ResamplingPlan, MakesSixFramesOfFiveAndFiveOfSix)
{
    const struct {
        Direction direction;
        int from, to;
        const char *cut, *plans;
    } rows[] = {
        {Direction::kToNTSC, 2, 0, "", "K N N/K K K K "},
        {Direction::kToNTSC, 1, 1, "", "K N K/N K K K "},
        {Direction::kToNTSC, 2, 0, "NM", "K N K K K K "},
        {Direction::kToNTSC, 1, 2, "", "N/K K/N M/K N/K N/K N/K "},
        {Direction::kToNTSC, 2, 1, "", "K/N N/K K/M K/N K/N K/N "},
        {Direction::kToNTSC, 2, 1, "NM", "K N K K K K "},
        {Direction::kToPAL, 2, 0, "", "K K N/K N N K "},
        {Direction::kToPAL, 1, 1, "NM", "K K K N N K "},
        {Direction::kToPAL, 1, 2, "", "K/P K/P N/P N/K N/K K/P "},
        {Direction::kToPAL, 1, 2, "KNM", "P P N/K K K P "},
        {Direction::kToPAL, 1, 2, "NM", "K/P K/P P N/K N/K K/P "},
        {Direction::kToPAL, 2, 1, "", "P/K P/K P/N K/N K/N P/K "},
        {Direction::kToPAL, 2, 1, "KNM", "P P K/N P P P "},
        {Direction::kToPAL, 2, 1, "NM", "P/K P/K P/N K/N K/N P/K "},
    };
    for (const auto& row : rows) {
        Line line{1.2, kPulldown, row.from, row.to, row.cut, row.plans};
        std::string plans;
        const bool up = row.direction == Direction::kToNTSC;
        for (int64_t index = 6000; index < 6006; index++) {
            const int64_t current = 5000 + (index - 6000) * 5 / 6;
            plans += PlanOf(line, {.position = 3.4,
                                   .step = up ? 25.0 / 30 : 1.2,
                                   .direction = row.direction,
                                   .output_index = up ? index + 6 : index - 1000,
                                   .current_frame_number = current}) +
                     ' ';
        }
        EXPECT_EQ(row.plans, plans) << row.from << row.to << ", cut before " << row.cut;
    }
}

TEST(ResamplingPlan, PulldownDropsOneFrameInAThousand)
{
    for (const auto& [index, drops] : {std::pair<int64_t, bool>{0, false},
                                       {999, false},
                                       {1000, true},
                                       {1001, false},
                                       {54000, true}})
        EXPECT_EQ(drops, PulldownDrops(index)) << index;
}

}  // namespace
}  // namespace kelvane
