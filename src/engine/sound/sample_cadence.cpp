#include "engine/sound/sample_cadence.h"

#include <iterator>

#include "dv/audio_rates.h"

namespace kelvane {

namespace {

// Indexed as kAudioRates.
constexpr SampleCadence kNTSCCadences[] = {
    {1600, 5, 8, 375, 1},
    {1471, 9, 4, 37, 1},
    {1067, 11, 8, 120, 1},
};
static_assert(std::size(kNTSCCadences) == std::size(kAudioRates));

}  // namespace

SampleCadence CadenceFor(uint32_t rate, bool pal)
{
    const AudioRate* row = FindAudioRate(rate);
    if (!row) return {};
    return pal ? SampleCadence{.base = rate / 25} : kNTSCCadences[row - kAudioRates];
}

}  // namespace kelvane
