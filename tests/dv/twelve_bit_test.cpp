#include "dv/twelve_bit.h"

#include <gtest/gtest.h>

#include <vector>

#include "dv/audio_concealment.h"

namespace kelvane {
namespace {

using Values = std::vector<uint16_t>;

TEST(TwelveBit, CodesAndSamplesAgreeWithTheTable)
{
    const std::pair<uint32_t, uint16_t> rows[] = {
        {0, 0},         {511, 511},     {512, 512},     {513, 514},
        {767, 1022},    {768, 1024},    {1024, 2048},   {1280, 4096},
        {1536, 8192},   {1792, 16384},  {2047, 0x7FC0}, {2048, 0x803F},
        {2049, 0x807F}, {2051, 0x80FF}, {3583, 0xFDFF}, {4095, 0xFFFF}};
    for (const auto& [code, sample] : rows)
        EXPECT_EQ(sample, Expand12(code)) << code;
    EXPECT_EQ(0x200, Compress12(513));
    EXPECT_EQ(0xDFE, Compress12(-516));
}

TEST(TwelveBit, CodingLosesAtMostTheStepOfTheSegment)
{
    for (uint32_t code = 0; code < 4096; code++)
        EXPECT_EQ(code, Compress12(static_cast<int16_t>(Expand12(code))));
    for (int sample = -32768; sample < 32768; sample++) {
        const auto back = static_cast<int16_t>(Expand12(Compress12(static_cast<int16_t>(sample))));
        const int size = sample < 0 ? ~sample : sample;
        const int loss = sample < 0 ? back - sample : sample - back;
        EXPECT_GE(loss, 0) << sample << ": towards zero";
        EXPECT_LE(loss, size / 256) << sample;
    }
}

TEST(TwelveBit, ConcealsLostSamplesFromNeighboursOfTheirChannel)
{
    constexpr uint16_t kBad = 0x803F, kAlso = 0x80FF;
    const struct {
        size_t channels;
        Values before, after;
    } rows[] = {
        {1, {10, kBad, 21}, {10, 15, 21}},
        // A signed mean, rounded down: -10 and 5 give -3.
        {1, {0xFFF6, 0x807F, 5}, {0xFFF6, 0xFFFD, 5}},
        {1, {8, kBad, kAlso, 16, 0}, {8, 12, 14, 16, 0}},
        // Three in a row: the first takes the mean with the bad one two places on.
        {1, {8, kBad, kBad, 0x801F, 4, 4}, {8, 0xC013, 0xE00B, 0xF007, 4, 4}},
        // The first of each channel; with two bad successors the bad value moves.
        {2, {kBad, kBad, 7, kBad, 1, 9}, {7, 9, 7, 9, 1, 9}},
        {1, {kBad, kAlso, 0x807F}, {0x807F, 0x807F, 0x807F}},
        // The last of each channel, and the next to last.
        {2, {1, 2, kBad, kBad}, {1, 2, 1, 2}},
        {1, {6, kBad, kBad}, {6, 6, 6}},
        // Nothing to take from; values that are not in the set.
        {2, {kBad, 3}, {kBad, 3}},
        {1, {0, 0x80BF, 0x8000, 0}, {0, 0x80BF, 0x8000, 0}},
    };
    for (const auto& row : rows) {
        Values values = row.before;
        ConcealBadSamples(values, row.channels);
        EXPECT_EQ(row.after, values) << testing::PrintToString(row.before);
    }
}

TEST(LostSamples, OfSixteenBitsAreBridged)
{
    constexpr uint16_t kLost = 0x8000;
    const struct {
        size_t channels;
        Values before, after;
    } rows[] = {
        {1, {10, kLost, 21}, {10, 15, 21}},
        {2, {0xFFF6, 7, kLost, kLost, 5, 9}, {0xFFF6, 7, 0xFFFD, 8, 5, 9}},
        // A long run, and a run at either end.
        {1, {0, kLost, kLost, kLost, 400}, {0, 100, 250, 325, 400}},
        {1, {kLost, kLost, kLost, 6, 8, kLost, kLost}, {6, 6, 6, 6, 8, 8, 8}},
        {2, {kLost, 1, kLost, 2}, {0, 1, 0, 2}},
        {1, {0x8001, 0x7FFF, 0x803F}, {0x8001, 0x7FFF, 0x803F}},
    };
    for (const auto& row : rows) {
        Values values = row.before;
        BridgeLostSamples(values, row.channels);
        EXPECT_EQ(row.after, values) << testing::PrintToString(row.before);
    }
}

}  // namespace
}  // namespace kelvane
