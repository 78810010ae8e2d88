#include "quality/field_rules.h"

#include <algorithm>
#include <cmath>

namespace kelvane {

namespace {

// Of the two fields only one is blended, linearly between its neighbours in time.
FieldByRule Blended(double current, double f, double step, int field)
{
    constexpr int32_t kLeastWeight = 23;
    const double q = f + step / 2;
    const bool second = f + step / 4 >= 0.75;
    if (second != (field == 1)) return {second ? current + 1 : current, 0, 0};
    const double at = field == 0 ? f : q - 0.5;  // between fields of this parity
    const double before = std::floor(at), part = at - before;
    const bool nearBefore = part < 0.5;
    const auto weight = static_cast<int32_t>(255 * std::min(part, 1 - part));
    return {current + before + (nearBefore ? 0 : 1), current + before + (nearBefore ? 1 : 0),
            weight < kLeastWeight ? 0 : weight};
}

}  // namespace

FieldByRule ByRule(const Method& method, double position, double step, int field)
{
    const double current = std::floor(position + 0.00001), f = position - current;
    switch (method.resampling) {
        case 0:
            return {(field == 0 ? f >= 0.5 : f + step / 2 >= 1) ? current + 1 : current, 0, 0};
        case 1:
            return Blended(current, f, step, field);
        default:
            // Both fields are made at the same part of the way, the second one too.
            return {f < 0.05 ? current : f > 0.95 ? current + 1 : position, 0, 0};
    }
}

}  // namespace kelvane
