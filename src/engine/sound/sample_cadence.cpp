#include "engine/sound/sample_cadence.h"

#include <algorithm>
#include <iterator>

namespace kelvane {

namespace {

struct CadenceRow {
    uint32_t rate;
    uint32_t base_pal;
    SampleCadence ntsc;
};
constexpr CadenceRow kRows[] = {
    {32000, 1280, {1067, 11, 8, 120, 1}},
    {44100, 1764, {1471, 9, 4, 37, 1}},
    {48000, 1920, {1600, 5, 8, 375, 1}},
};

const CadenceRow* FindRow(uint32_t rate)
{
    const auto* row = std::ranges::find(kRows, rate, [](const CadenceRow& r) { return r.rate; });
    return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

bool IsKnownRate(uint32_t rate)
{
    return FindRow(rate) != nullptr;
}

SampleCadence CadenceFor(uint32_t rate, bool pal)
{
    const CadenceRow* row = FindRow(rate);
    if (!row) return {};
    return pal ? SampleCadence{.base = row->base_pal} : row->ntsc;
}

}  // namespace kelvane
