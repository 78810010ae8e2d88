#include "engine/timing/resampling_plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "engine/timing/time_position.h"

namespace kelvane {
namespace {

// The rules of time resampling, written a second time and as tables where they are tables: P, K, N
// and M are previous, current, next and newest.
enum { P, K, N, M };
constexpr int kNone = -1;

// Where lines of the output come from: a picture, one mixed with it, and the weight of that.
using Lines = std::array<int, 3>;
// By fields, the parity that is shifted, and the time.
using Motion = std::tuple<bool, int, float>;

// What an output picture is, however the plan words it. Pictures are numbered by identity, so that
// two neighbours that are one picture count as one.
struct Outcome {
    bool dropped = false;
    std::optional<Motion> motion{};
    Lines even = {kNone, kNone, 0}, odd = even;
    FinalStep final_step = FinalStep::kNone;
    int sel = kNone;  // where the final step asks for it

    auto All() const { return std::tuple(dropped, motion, even, odd, int(final_step), sel); }
};

// One call: its input, which neighbours are one picture, and which pictures are alike.
struct Turn {
    ResamplingInput in;
    std::array<int, 4> id;
    unsigned alike_pairs;  // one bit for each pair of different pictures
    int32_t dropped = 0;

    bool Alike(int a, int b) const
    {
        constexpr int kPair[4][4] = {{0, 0, 2, 3}, {0, 0, 1, 4}, {2, 1, 0, 5}, {3, 4, 5, 0}};
        const int x = id[size_t(a)], y = id[size_t(b)];
        return x == y || (alike_pairs >> kPair[x][y] & 1) != 0;
    }
    bool Same(int a, int b) const { return id[size_t(a)] == id[size_t(b)]; }
};

struct Expectation {
    explicit Expectation(const Turn& turn) : t(turn) { Make(); }

    // The pictures that a field's time asks for.
    int LateF() const { return f >= 0.5 ? N : K; }
    int EarlyF() const { return f >= 0.5 ? K : P; }
    int LateQ() const { return q >= 1 ? N : K; }

    void Weave(int even, int odd)
    {
        outcome.even[0] = t.id[size_t(even)];
        outcome.odd[0] = t.id[size_t(odd)];
    }
    void Copy(int picture) { Weave(picture, picture); }
    void Move(bool fields, int shifted) { outcome.motion = {fields, shifted, float(f)}; }
    void WeaveAlike(int even, int odd, int otherwise)
    {
        t.Alike(even, odd) ? Weave(even, odd) : Copy(otherwise);
    }
    void Blend(Lines& lines, int main, int partner, int weight, int least)
    {
        lines[0] = t.id[size_t(main)];
        if (weight < least || t.Same(main, partner) || !t.Alike(main, partner)) return;
        lines[1] = t.id[size_t(partner)];
        lines[2] = weight;
    }
    void Make()
    {
        const int method = int(t.in.method);
        if (f < 0.001 && s == 1.0)
            Whole(0);
        else if (i == 0 && method != 3)
            return Progressive();
        else if (method == 3 && t.in.direction != Direction::kSameStandard)
            t.in.direction == Direction::kToNTSC ? Pulldown() : ReversePulldown();
        else if (method == 3)
            return;
        else if (o >= 3)
            Deinterlacing();
        else
            method == 0 ? Nearest() : method == 1 ? Blended() : Interpolated();
        if (i == 0 || o < 3 || outcome.dropped) return;
        outcome.final_step = o == 3   ? FinalStep::kAdaptive
                             : o == 4 ? FinalStep::kBlur
                                      : FinalStep::kFixedBlur;
        outcome.sel = o == 5 ? kNone : sel;
    }

    // Whole frames, also of reverse pulldown: 0 for its first two phases, 1 for its last two.
    void Whole(int half)
    {
        constexpr int kRows[2][3][3] = {{{K, P, P}, {P, K, P}, {K, K, K}},
                                        {{N, K, K}, {K, N, P}, {N, N, N}}};
        const auto& [even, odd, otherwise] = kRows[half][swap ? i - 1 : 2];
        !swap || t.Alike(K, P) ? Weave(even, odd) : Copy(otherwise);
    }

    void Progressive()
    {
        if (t.in.method == ResamplingMethod::kNearest || !t.Alike(K, N)) return Copy(LateF());
        if (t.in.method == ResamplingMethod::kMotion) return Move(false, kNone);
        Blend(outcome.even, K, N, int(f * 255), 1);
        outcome.odd = outcome.even;
    }

    void Deinterlacing()
    {
        const bool middle = f >= 0.25 && f < 0.75;
        sel = i == 1 ? !middle : middle;
        i == 1 ? WeaveAlike(LateF(), K, LateF()) : WeaveAlike(K, LateF(), LateF());
    }

    void Nearest()
    {
        const int rows[4][2] = {
            {LateQ(), EarlyF()}, {LateF(), LateQ()}, {EarlyF(), LateQ()}, {LateQ(), LateF()}};
        // Away from a cut; at one the picture of the first field's time goes out whole.
        WeaveAlike(rows[row][0], rows[row][1], swap ? EarlyF() : LateF());
    }

    void Blended()
    {
        struct Field {
            int main, partner;
            double x;
        };
        const double e0 = f < 0.5 ? f : 1 - f;
        const double e = q < 0.5 ? 0.5 - q : q < 1 ? q - 0.5 : 1.5 - q;
        const Field y = q < 0.5 ? Field{K, P, e} : q < 1 ? Field{K, N, e} : Field{N, K, e};
        const Field g = swap ? (f < 0.5 ? Field{P, K, e0} : Field{K, P, e0})
                             : (f < 0.5 ? Field{K, N, e0} : Field{N, K, e0});
        const int r = swap ? K : N;
        const bool late = f + s / 4 >= 0.75, allow = t.in.allow_field_order_change;

        Field first = late ? Field{r, r, 0} : g, other = late ? y : Field{K, K, 0};
        if (allow && !late && std::abs(0.5 - f) < e)
            first = swap ? Field{K, K, 0} : Field{N, K, std::abs(1 - q)};
        if (allow && late && std::abs(1 - q) < e0) other = Field{K, N, std::abs(0.5 - f)};

        const bool firstIsEven = row == 1 || row == 2;
        for (const bool even : {true, false}) {
            const Field& field = even == firstIsEven ? first : other;
            Blend(even ? outcome.even : outcome.odd, field.main, field.partner,
                  int(field.x * 255) * (allow ? 2 : 1), 23);
        }
    }

    void Interpolated()
    {
        if (!t.Alike(K, N) || (swap && !t.Alike(P, K))) return Copy(swap ? EarlyF() : LateF());
        Move(true, !swap ? kNone : i == 1 ? 1 : 0);
    }

    void Pulldown()
    {
        outcome.dropped = t.in.output_index > 0 && t.in.output_index % 1000 == 0;
        if (outcome.dropped) return;
        const int64_t p = t.in.current_frame_number - t.dropped;
        const int64_t phase = t.in.output_index % 6;
        if (phase == 2) {
            const int u = p % 5 == 2 ? P : K;
            const int v = u + (swap ? 2 : 1);
            return o == 1 ? WeaveAlike(u, v, u) : WeaveAlike(v, u, u);
        }
        constexpr int64_t kWanted[6] = {0, 1, -1, 2, 3, 4};
        const int64_t j = kWanted[phase];
        const int x = p % 5 == j ? K : (p + 4) % 5 == j ? P : (p + 1) % 5 == j ? N : K;
        if (!swap) return Copy(x);
        const int w = t.Same(x, K) ? N : K;
        i == 1 ? WeaveAlike(w, x, x) : WeaveAlike(x, w, x);
    }

    void ReversePulldown()
    {
        const int64_t phase = t.in.output_index % 5;
        if (phase != 2) return Whole(phase >= 3);
        if (!swap) return i == 1 ? WeaveAlike(K, N, K) : WeaveAlike(N, K, K);
        int a = N, b = P;
        if (!t.Alike(i == 1 ? N : K, P)) (t.Alike(N, K) ? b : a) = t.Alike(N, K) ? K : P;
        i == 1 ? Weave(a, b) : Weave(b, a);
    }

    const Turn& t;
    const int i = int(t.in.source_interlace), o = int(t.in.target_interlace);
    const double s = t.in.step;
    const double f = t.in.position - std::floor(t.in.position + 0.00001), q = f + s / 2;
    const bool swap = (i == 1 && o == 2) || (i == 2 && o == 1);
    // Of field orders: 1 to 2, 1 to other, other to 1, other to other.
    const int row = i == 1 ? (o == 2 ? 0 : 1) : (o == 1 ? 2 : 3);
    int sel = 1;
    Outcome outcome;
};

// What a plan comes to.
Outcome Read(const ResamplingPlan& plan, const Turn& turn)
{
    Outcome outcome;
    const bool mixed = plan.base == ResamplingPlan::kMix;
    const auto lines = [&](Neighbour main, const ResamplingPlan::Blend& own) {
        const ResamplingPlan::Blend& blend = mixed ? plan.blend_all : own;
        const int from = turn.id[size_t(main)], with = turn.id[size_t(blend.partner)];
        return blend.weight == 0 || from == with ? Lines{from, kNone, 0}
                                                 : Lines{from, with, blend.weight};
    };
    outcome.dropped = plan.base == ResamplingPlan::kDrop;
    if (outcome.dropped || plan.base == ResamplingPlan::kNothing) return outcome;
    if (mixed || plan.base == ResamplingPlan::kWeave) {
        outcome.even = lines(plan.even, plan.blend_even);
        outcome.odd = lines(mixed ? plan.even : plan.odd, plan.blend_odd);
    } else {
        const int shifted = plan.shift_field ? plan.shifted_parity : kNone;
        outcome.motion = {plan.fields, shifted, plan.time};
    }
    outcome.final_step = plan.final_step;
    if (plan.final_step == FinalStep::kAdaptive || plan.final_step == FinalStep::kBlur)
        outcome.sel = plan.sel;
    return outcome;
}

// Decides a turn and compares; false after a difference.
bool Agrees(Turn& turn)
{
    int32_t dropped = turn.dropped;
    const auto alike = [&](Neighbour a, Neighbour b) { return turn.Alike(int(a), int(b)); };
    const Outcome found = Read(DecideResampling(turn.in, alike, dropped), turn);
    const Outcome expected = Expectation(turn).outcome;
    turn.dropped += expected.dropped;
    const bool agrees = found.All() == expected.All() && dropped == turn.dropped;
    const ResamplingInput& in = turn.in;
    EXPECT_TRUE(agrees) << testing::PrintToString(
        std::tuple("expected", expected.All(), "found", found.All(), "position", in.position,
                   "step", in.step, "method", int(in.method), "from", int(in.source_interlace),
                   "to", int(in.target_interlace), "allow", in.allow_field_order_change, "output",
                   in.output_index, "pairs", turn.alike_pairs, "pictures", turn.id));
    return agrees;
}

// Four pictures; those of the start, of the last two turns, and of a film of one frame.
constexpr std::array<int, 4> kLayouts[] = {
    {0, 1, 2, 3}, {1, 1, 2, 3}, {0, 1, 2, 2}, {0, 1, 1, 1}, {1, 1, 1, 1}};
constexpr double kUp = 25 / 29.97, kDown = 29.97 / 25;

// Compares for all field orders, coinciding pictures, and `patterns` of pairs that are alike.
bool AgreesForAllPictures(Turn& turn, unsigned patterns)
{
    for (int orders = 0; orders < 18; orders++) {
        turn.in.source_interlace = FieldOrder(orders / 6);
        turn.in.target_interlace = FieldTarget(orders % 6);
        for (const auto& layout : kLayouts)
            for (unsigned pairs = 0; pairs < patterns; pairs++) {
                turn.id = layout;
                turn.alike_pairs = pairs;
                // With a change of field order pulldown reads four frames ahead: P is never K.
                if (turn.in.method == ResamplingMethod::kPulldown &&
                    turn.in.direction != Direction::kSameStandard && Expectation(turn).swap &&
                    turn.Same(P, K))
                    continue;
                if (!Agrees(turn)) return false;
            }
    }
    return true;
}

// A grid, a hair to both sides of whole frames, the least weight of a blend, and thresholds of the
// rules for all paces.
std::vector<double> Positions()
{
    std::vector<double> positions = {0.99995, 0.99999,        0.999991,      1.000999,
                                     1.001,   4 + 22.5 / 255, 4 + 23.5 / 255};
    for (int k = 0; k < 48; k++)
        positions.push_back(7 + k / 48.0);
    for (const double s : {kUp, kDown, 1.0, 1.2})
        for (const double edge : {1 - s / 2, 0.5 - s / 2, 0.75 - s / 4, 0.25, 0.5, 0.75})
            for (const double side : {-0.002, 0.0, 0.002})
                positions.push_back(2 + edge + side);
    return positions;
}

TEST(ResamplingPlan, FollowsTheRulesAtEachPosition)
{
    Turn turn{};
    for (const double step : {kUp, kDown, 1.0, 1.2})
        for (const double position : Positions())
            for (int variant = 0; variant < 5; variant++) {
                turn.in.step = step;
                turn.in.position = position;
                turn.in.method = ResamplingMethod(variant == 4 ? 1 : variant);
                turn.in.allow_field_order_change = variant == 1;
                ASSERT_TRUE(AgreesForAllPictures(turn, 8));
            }
}

TEST(ResamplingPlan, FollowsTheRulesInEachPhaseOfBothPulldowns)
{
    Turn turn{};
    turn.in.method = ResamplingMethod::kPulldown;
    for (int i = 0; i < 2 * 6 * 5; i++) {
        turn.in.direction = i < 30 ? Direction::kToNTSC : Direction::kToPAL;
        turn.in.output_index = i / 5 % 6;
        turn.in.current_frame_number = 1 + i % 5;
        turn.in.step = turn.in.direction == Direction::kToNTSC ? kUp : 1.2;
        turn.in.position = double(turn.in.output_index) * turn.in.step;
        ASSERT_TRUE(AgreesForAllPictures(turn, 64));
    }
}

// A long run: one output frame in a thousand is dropped, the phase goes on from the output's
// number, and each source frame is shown, in order, but for those lost with a dropped frame. One in
// a thousand is a little more than both rates ask for, so that in time the picture wanted is no
// longer among the neighbours: after output 5000 only the rules are compared.
TEST(ResamplingPlan, PulldownDropsOneFrameInAThousandAndShowsTheOthersInOrder)
{
    for (const auto& [order, target] : {std::pair{2, 0}, {1, 1}, {1, 2}, {2, 1}, {0, 3}}) {
        SCOPED_TRACE(testing::Message() << order << " to " << target);
        const auto from = FieldOrder(order);
        const auto to = FieldTarget(target);
        ConversionSettings settings;
        settings.op = Operation::kToNTSC;
        settings.timeresampling = ResamplingMethod::kPulldown;
        settings.src_interlace = from;
        settings.dst_interlace = to;
        TimePosition time(settings, true, false);
        Turn turn{{}, {0, 1, 2, 3}, 63};
        turn.in = {.step = time.Step(),
                   .method = ResamplingMethod::kPulldown,
                   .source_interlace = from,
                   .target_interlace = to,
                   .direction = Direction::kToNTSC,
                   .current_frame_number = FieldsSwap(from, to) ? 1 : 0};
        int64_t shown = -1;
        for (int64_t index = 0; index < 12000; index++) {
            turn.in.output_index = index;
            turn.in.position = time.Position();
            turn.in.current_frame_number += time.FramesToRead();
            time.Advance(index, uint64_t(turn.in.current_frame_number) + 3);
            ASSERT_TRUE(Agrees(turn));
            EXPECT_EQ(index / 1000, turn.dropped);
            if (index >= 5000 || (index > 0 && index % 1000 == 0)) continue;
            const Outcome made = Expectation(turn).outcome;
            const int64_t now =
                turn.in.current_frame_number - 1 + std::min(made.even[0], made.odd[0]);
            EXPECT_LE(shown, now) << index;
            EXPECT_LE(now, shown + (index % 1000 == 1 ? 3 : 1)) << index;
            shown = now;
        }
    }
}

// Such a picture is not made again when the next one takes the same lines.
TEST(ResamplingPlan, OnlyWeavesWhenNothingElseIsDone)
{
    ResamplingPlan plan;
    EXPECT_FALSE(plan.OnlyWeaves());
    plan.base = ResamplingPlan::kWeave;
    EXPECT_TRUE(plan.OnlyWeaves());
    for (ResamplingPlan::Blend* blend : {&plan.blend_even, &plan.blend_odd}) {
        blend->weight = 23;
        EXPECT_FALSE(plan.OnlyWeaves());
        blend->weight = 0;
    }
    plan.final_step = FinalStep::kAdaptive;
    EXPECT_FALSE(plan.OnlyWeaves());
}

}  // namespace
}  // namespace kelvane
