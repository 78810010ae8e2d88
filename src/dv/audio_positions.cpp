#include "dv/audio_positions.h"

#include <array>

#include "dv/dif_layout.h"

namespace kelvane {

namespace {

template <size_t count>
using Table = std::array<uint32_t, count>;

// `sequences` of the half that begins at sequence `first`; `width` bytes a sample or pair.
template <size_t count>
consteval Table<count> Positions(size_t sequences, size_t first, size_t width)
{
    const size_t row = kAudioBlocks * sequences;  // one place in every block of the half
    Table<count> table{};
    for (size_t n = 0; n < count; n++) {
        const size_t sequence = (n / 3 + 2 * (n % 3)) % sequences;
        const size_t block = 3 * (n % 3) + n % row / (row / 3);
        table[n] = static_cast<uint32_t>(AudioBlockAt(first + sequence, block) + kAudioSamplesAt +
                                         width * (n / row));
    }
    return table;
}

constexpr size_t kHalfPAL = kSequencesPAL / 2;
constexpr size_t kHalfNTSC = kSequencesNTSC / 2;

constexpr auto kA16 = Positions<kMaxSamplesPAL>(kHalfPAL, 0, 2);
constexpr auto kB16 = Positions<kMaxSamplesPAL>(kHalfPAL, kHalfPAL, 2);
constexpr auto kA12 = Positions<kMaxSamplesPAL>(kHalfPAL, 0, 3);
constexpr auto kB12 = Positions<kMaxSamplesPAL>(kHalfPAL, kHalfPAL, 3);
constexpr auto kNA16 = Positions<kMaxSamplesNTSC>(kHalfNTSC, 0, 2);
constexpr auto kNB16 = Positions<kMaxSamplesNTSC>(kHalfNTSC, kHalfNTSC, 2);
constexpr auto kNA12 = Positions<kMaxSamplesNTSC>(kHalfNTSC, 0, 3);
constexpr auto kNB12 = Positions<kMaxSamplesNTSC>(kHalfNTSC, kHalfNTSC, 3);

}  // namespace

constinit const PositionTable A16 = kA16;
constinit const PositionTable B16 = kB16;
constinit const PositionTable A12 = kA12;
constinit const PositionTable B12 = kB12;
constinit const PositionTable NA16 = kNA16;
constinit const PositionTable NB16 = kNB16;
constinit const PositionTable NA12 = kNA12;
constinit const PositionTable NB12 = kNB12;

}  // namespace kelvane
