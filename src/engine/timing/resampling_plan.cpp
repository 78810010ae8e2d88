#include "engine/timing/resampling_plan.h"

#include <algorithm>
#include <cmath>

#include "engine/timing/pulldown_plan.h"

namespace kelvane {

namespace {

using enum Neighbour;

constexpr int32_t kLeastWeight = 23;  // a mix of less than 9 per cent is not worth it

// The position within a source frame; can come out a hair below 0.
double FractionOf(double position)
{
    return position - std::floor(position + 0.00001);
}

int32_t WeightOf(double part)
{
    return static_cast<int32_t>(part * 255);
}

bool UpperToLower(const ResamplingInput& in)
{
    return in.source_interlace == FieldOrder::kUpperFirst &&
           in.target_interlace == FieldTarget::kLowerFirst;
}
bool LowerToUpper(const ResamplingInput& in)
{
    return in.source_interlace != FieldOrder::kUpperFirst &&
           in.target_interlace == FieldTarget::kUpperFirst;
}

// The output frame falls on a source frame.
ResamplingPlan PlanAligned(const ResamplingInput& in, const AlikeTest& alike)
{
    if (!FieldsSwap(in.source_interlace, in.target_interlace)) return Copy(kCurrent);
    if (!alike(kCurrent, kPrevious)) return Copy(kPrevious);
    return in.source_interlace == FieldOrder::kUpperFirst ? Weave(kCurrent, kPrevious)
                                                          : Weave(kPrevious, kCurrent);
}

ResamplingPlan PlanProgressive(const ResamplingInput& in, double f, const AlikeTest& alike)
{
    const Neighbour nearest = f < 0.5 ? kCurrent : kNext;
    if (in.method == ResamplingMethod::kNearest || !alike(kCurrent, kNext)) return Copy(nearest);
    if (in.method == ResamplingMethod::kBlend) {
        ResamplingPlan plan = Copy(kCurrent);
        plan.base = ResamplingPlan::kMix;
        plan.blend_all = {kNext, std::max(WeightOf(f), 0)};
        return plan;
    }
    ResamplingPlan plan;
    plan.base = ResamplingPlan::kInterpolate;
    plan.time = static_cast<float>(f);
    return plan;
}

ResamplingPlan PlanDeinterlaced(const ResamplingInput& in, double f, const AlikeTest& alike)
{
    const Neighbour late = f >= 0.5 ? kNext : kCurrent;
    const bool middle = f >= 0.25 && f < 0.75;
    const bool upperFirst = in.source_interlace == FieldOrder::kUpperFirst;
    ResamplingPlan plan = upperFirst ? Weave(late, kCurrent) : Weave(kCurrent, late);
    if (plan.even != plan.odd && !alike(plan.even, plan.odd)) plan = Copy(late);
    plan.sel = upperFirst ? !middle : middle;
    return plan;
}

// The picture of the first field: where two scenes meet it stands for the whole frame.
Neighbour NearestPicture(const ResamplingInput& in, double f)
{
    if (UpperToLower(in) || LowerToUpper(in)) return f >= 0.5 ? kCurrent : kPrevious;
    return f >= 0.5 ? kNext : kCurrent;
}

// True when the first of the output's fields is on the odd lines.
bool FirstIsOdd(const ResamplingInput& in)
{
    return UpperToLower(in) ||
           (in.source_interlace != FieldOrder::kUpperFirst && !LowerToUpper(in));
}

ResamplingPlan PlanNearestFields(const ResamplingInput& in, double f, const AlikeTest& alike)
{
    const Neighbour first = NearestPicture(in, f);
    const Neighbour second = f + in.step / 2 >= 1 ? kNext : kCurrent;
    if (first != second && !alike(first, second)) return Copy(first);
    return FirstIsOdd(in) ? Weave(second, first) : Weave(first, second);
}

// One field of a blended frame: lines of a picture, mixed with those of a partner.
struct FieldChoice {
    Neighbour main;
    Neighbour partner;
    double part = 0;  // of the partner
};

struct BlendChoice {
    FieldChoice first, other;  // the output's fields in the order of time
};

// Only one field of an output frame is blended, never both.
BlendChoice ChooseBlend(const ResamplingInput& in, double f)
{
    const bool swap = FieldsSwap(in.source_interlace, in.target_interlace);
    const bool turned = UpperToLower(in) || LowerToUpper(in);
    const double q = f + in.step / 2;
    const bool otherBlends = f + in.step / 4 >= 0.75;
    // How far each field is from the nearest source field.
    const double e0 = f < 0.5 ? f : 1 - f;
    const double e = q < 0.5 ? 0.5 - q : q < 1 ? q - 0.5 : 1.5 - q;
    const Neighbour whole = turned ? kCurrent : kNext;
    const FieldChoice plainCurrent = {kCurrent, kCurrent, 0};

    if (in.allow_field_order_change && !otherBlends && std::abs(0.5 - f) < e) {
        if (turned) return {plainCurrent, plainCurrent};
        return {{kNext, kCurrent, std::abs(1 - q)}, plainCurrent};
    }
    if (in.allow_field_order_change && otherBlends && std::abs(1 - q) < e0)
        return {{whole, whole, 0}, {kCurrent, kNext, std::abs(0.5 - f)}};
    if (otherBlends) {
        const Neighbour main = q < 1 ? kCurrent : kNext;
        const Neighbour partner = q < 0.5 ? kPrevious : q < 1 ? kNext : kCurrent;
        return {{whole, whole, 0}, {main, partner, e}};
    }
    const Neighbour early = swap ? kPrevious : kCurrent, late = swap ? kCurrent : kNext;
    if (f < 0.5) return {{early, late, e0}, plainCurrent};
    return {{late, early, e0}, plainCurrent};
}

ResamplingPlan::Blend BlendOf(const ResamplingInput& in, const FieldChoice& field)
{
    int32_t weight = WeightOf(field.part);
    if (in.allow_field_order_change) weight *= 2;
    if (field.partner == field.main || weight < kLeastWeight) return {};
    return {field.partner, weight};
}

ResamplingPlan PlanBlendedFields(const ResamplingInput& in, double f, const AlikeTest& alike)
{
    const BlendChoice choice = ChooseBlend(in, f);
    const FieldChoice& even = FirstIsOdd(in) ? choice.other : choice.first;
    const FieldChoice& odd = FirstIsOdd(in) ? choice.first : choice.other;
    ResamplingPlan plan = Weave(even.main, odd.main);
    plan.blend_even = BlendOf(in, even);
    plan.blend_odd = BlendOf(in, odd);
    // No frame holds two scenes, neither mixed nor field by field.
    const auto one_scene = [&](Neighbour a, Neighbour b) { return a == b || alike(a, b); };
    const auto blends_well = [&](Neighbour main, const ResamplingPlan::Blend& blend) {
        return blend.weight == 0 || one_scene(main, blend.partner);
    };
    if (one_scene(plan.even, plan.odd) && blends_well(plan.even, plan.blend_even) &&
        blends_well(plan.odd, plan.blend_odd))
        return plan;
    return Copy(NearestPicture(in, f));
}

ResamplingPlan PlanInterpolatedFields(const ResamplingInput& in, double f, const AlikeTest& alike)
{
    const bool swap = FieldsSwap(in.source_interlace, in.target_interlace);
    if (swap && !(alike(kPrevious, kCurrent) && alike(kCurrent, kNext)))
        return Copy(f >= 0.5 ? kCurrent : kPrevious);
    if (!swap && !alike(kCurrent, kNext)) return Copy(f < 0.5 ? kCurrent : kNext);
    ResamplingPlan plan;
    plan.base = ResamplingPlan::kInterpolate;
    plan.fields = true;
    plan.shift_field = swap;
    plan.shifted_parity = in.source_interlace == FieldOrder::kUpperFirst ? 1 : 0;
    plan.time = static_cast<float>(f);
    return plan;
}

ResamplingPlan PlanPicture(const ResamplingInput& in, const AlikeTest& alike)
{
    const double f = FractionOf(in.position);
    if (f < 0.001 && in.step == 1.0) return PlanAligned(in, alike);
    if (in.method == ResamplingMethod::kPulldown) {
        if (in.direction == Direction::kToNTSC) return PlanPulldown(in, alike);
        if (in.direction == Direction::kToPAL) return PlanReversePulldown(in, alike);
        return {};  // nothing is written to the picture; deliberate
    }
    if (in.source_interlace == FieldOrder::kProgressive) return PlanProgressive(in, f, alike);
    if (IsDeinterlaced(in.target_interlace)) return PlanDeinterlaced(in, f, alike);
    if (in.method == ResamplingMethod::kNearest) return PlanNearestFields(in, f, alike);
    if (in.method == ResamplingMethod::kBlend) return PlanBlendedFields(in, f, alike);
    return PlanInterpolatedFields(in, f, alike);
}

FinalStep FinalStepOf(const ResamplingInput& in)
{
    if (in.source_interlace == FieldOrder::kProgressive) return FinalStep::kNone;
    switch (in.target_interlace) {
        case FieldTarget::kAdaptive:
            return FinalStep::kAdaptive;
        case FieldTarget::kBlur:
            return FinalStep::kBlur;
        case FieldTarget::kFixedBlur:
            return FinalStep::kFixedBlur;
        default:
            return FinalStep::kNone;
    }
}

}  // namespace

ResamplingPlan Copy(Neighbour picture)
{
    return Weave(picture, picture);
}

ResamplingPlan Weave(Neighbour even, Neighbour odd)
{
    ResamplingPlan plan;
    plan.base = ResamplingPlan::kWeave;
    plan.even = even;
    plan.odd = odd;
    return plan;
}

FieldOrder OutputFieldOrder(const ResamplingInput& in)
{
    // Pulldown weaves some frames of the fields of two, also where the source is progressive.
    const bool pulldown =
        in.method == ResamplingMethod::kPulldown && in.direction != Direction::kSameStandard;
    const bool source_has_fields = in.source_interlace != FieldOrder::kProgressive;
    const bool deinterlaced = source_has_fields && IsDeinterlaced(in.target_interlace);
    if (deinterlaced || (!source_has_fields && !pulldown)) return FieldOrder::kProgressive;
    const bool as_source = in.target_interlace == FieldTarget::kAsSource;
    const bool upper_first = as_source ? in.source_interlace == FieldOrder::kUpperFirst
                                       : in.target_interlace == FieldTarget::kUpperFirst;
    return upper_first ? FieldOrder::kUpperFirst : FieldOrder::kLowerFirst;
}

bool ResamplingPlan::LooksAt(Neighbour which) const
{
    const auto blends = [&](const Blend& blend) {
        return blend.weight != 0 && blend.partner == which;
    };
    switch (base) {
        case kWeave:
            return even == which || odd == which || blends(blend_even) || blends(blend_odd);
        case kMix:
            return even == which || blend_all.partner == which;
        case kInterpolate:
            return which == Neighbour::kCurrent || which == Neighbour::kNext ||
                   (shift_field && which == Neighbour::kPrevious);
        default:
            return false;
    }
}

ResamplingPlan DecideResampling(const ResamplingInput& input, const AlikeTest& alike)
{
    ResamplingPlan plan = PlanPicture(input, alike);
    plan.final_step = FinalStepOf(input);
    return plan;
}

}  // namespace kelvane
