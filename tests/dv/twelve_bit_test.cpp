#include "dv/twelve_bit.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvane {
namespace {

using Values = std::vector<uint16_t>;

TEST(TwelveBit, CodesAndSamplesAgreeWithTheTable)
{
    struct Row {
        uint32_t code;
        uint16_t sample;
    };
    const Row rows[] = {{0, 0},         {511, 511},     {512, 512},     {513, 514},
                        {767, 1022},    {768, 1024},    {1024, 2048},   {1280, 4096},
                        {1536, 8192},   {1792, 16384},  {2047, 0x7FC0}, {2048, 0x803F},
                        {2049, 0x807F}, {2051, 0x80FF}, {3583, 0xFDFF}, {4095, 0xFFFF}};
    for (const Row& row : rows)
        EXPECT_EQ(row.sample, Expand12(row.code)) << row.code;
    EXPECT_EQ(0x7FF, Compress12(32767));
    EXPECT_EQ(0x800, Compress12(-32768));
    EXPECT_EQ(0x200, Compress12(513));
    EXPECT_EQ(0xFFF, Compress12(-1));
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
    const auto negative = [](int value) { return static_cast<uint16_t>(value); };
    struct Row {
        const char* what;
        size_t channels;
        Values before, after;
    };
    const Row rows[] = {
        {"alone", 1, {10, kBad, 21}, {10, 15, 21}},
        {"signed mean, rounded down",
         1,
         {negative(-10), 0x807F, 5},
         {negative(-10), negative(-3), 5}},
        {"two in a row", 1, {8, kBad, kAlso, 16, 0}, {8, 12, 14, 16, 0}},
        {"three in a row: the first takes the mean with the bad one two places on",
         1,
         {8, kBad, kBad, 0x801F, 4, 4},
         {8, negative(-16365), negative(-8181), negative(-4089), 4, 4}},
        {"the first of each channel", 2, {kBad, kBad, 7, kBad, 1, 9}, {7, 9, 7, 9, 1, 9}},
        {"two bad successors: the bad value moves",
         1,
         {kBad, kAlso, 0x807F},
         {0x807F, 0x807F, 0x807F}},
        {"the last of each channel", 2, {1, 2, kBad, kBad}, {1, 2, 1, 2}},
        {"next to last, both bad", 1, {6, kBad, kBad}, {6, 6, 6}},
        {"nothing to take from", 2, {kBad, 3}, {kBad, 3}},
        {"not in the set", 1, {0, 0x80BF, 0x8000, 0}, {0, 0x80BF, 0x8000, 0}},
    };
    for (const Row& row : rows) {
        Values values = row.before;
        ConcealBadSamples(values, row.channels);
        EXPECT_EQ(row.after, values) << row.what;
    }
}

}  // namespace
}  // namespace kelvane
