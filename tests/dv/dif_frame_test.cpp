#include "dv/dif_frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvane {
namespace {

using Frame = std::vector<uint8_t>;

constexpr uint32_t kPALSize = 144000;

DIFFrame View(Frame& frame)
{
    return DIFFrame(frame.data(), static_cast<uint32_t>(frame.size()));
}

void SetPack(Frame& frame, size_t at, Pack pack)
{
    std::copy(pack.begin(), pack.end(), frame.begin() + static_cast<ptrdiff_t>(at));
}

TEST(DIFFrame, AnswersForAFrameOfZerosAndOneOfOnes)
{
    DIFFrame frame;  // owns zeros
    Timecode timecode;
    AudioInfo info;
    EXPECT_EQ(0u, frame.Size());
    EXPECT_EQ(0, frame.Frame()[kPALSize - 1]);
    EXPECT_FALSE(frame.IsPAL() || frame.IsDVCPRO() || frame.Is420());
    EXPECT_EQ(-1, frame.IsWidescreen());
    EXPECT_FALSE(frame.GetTimecode(timecode) || frame.GetAudioInfo(info));

    Frame ones(kPALSize, 0xFF);
    frame.AttachFrame(ones.data(), kPALSize);
    EXPECT_TRUE(frame.IsPAL() && frame.IsDVCPRO());
    EXPECT_FALSE(frame.Is420());
    EXPECT_EQ(-1, frame.IsWidescreen()) << "an id of 0xFF is no pack";
    frame.AttachFrame(ones.data(), kPALSize, true);
    ones[3] = 0;
    EXPECT_TRUE(frame.IsPAL()) << "a copy";
}

TEST(DIFFrame, TellsTheSystemByDSFAndThenBySourcePack)
{
    Frame bytes(kPALSize, 0);
    SetPack(bytes, 3 + 400, {0x60, 0, 0, 0x20, 0});  // any place among the VAUX packs
    EXPECT_TRUE(View(bytes).IsPAL());
    EXPECT_TRUE(View(bytes).Is420());
    bytes[4] = 1;
    EXPECT_FALSE(View(bytes).Is420()) << "DVCPRO is 4:1:1 in PAL too";
    // A later pack of the same id wins.
    SetPack(bytes, 3 + 400 + 5, {0x60, 0, 0, 0, 0});
    EXPECT_FALSE(View(bytes).IsPAL());
    // Only the first sequence counts.
    SetPack(bytes, 12000 + 3 + 400 + 10, {0x60, 0, 0, 0x20, 0});
    EXPECT_FALSE(View(bytes).IsPAL());
}

TEST(DIFFrame, SetsTheWideBitsAtTheUsualPlaceOrBehindAVideoSourcePack)
{
    Frame usual(kPALSize, 0xFF);
    SetPack(usual, 453, {0x61, 0x3F, 0xC8, 0xFC, 0xFF});
    EXPECT_EQ(0, View(usual).IsWidescreen());
    View(usual).SetWidescreen(true);
    EXPECT_EQ(0xCF, usual[455]);
    EXPECT_EQ(1, View(usual).IsWidescreen());
    View(usual).SetWidescreen(false);
    EXPECT_EQ(0xC8, usual[455]);

    // Elsewhere: the last 0x60, 0x61 pair counts, whatever the pack boundaries.
    Frame pairs(kPALSize, 0xFF);
    pairs[250] = 0x60, pairs[255] = 0x61, pairs[257] = 0;
    pairs[341] = 0x60, pairs[346] = 0x61, pairs[348] = 0;
    View(pairs).SetWidescreen(true);
    EXPECT_EQ(0, pairs[257]);
    EXPECT_EQ(7, pairs[348]);

    Frame alone(kPALSize, 0xFF);
    SetPack(alone, 243, {0x61, 0, 0, 0, 0});
    const Frame before = alone;
    View(alone).SetWidescreen(true);
    EXPECT_EQ(before, alone) << "no source pack in front: nothing changes";
    EXPECT_EQ(0, View(alone).IsWidescreen());
}

TEST(DIFFrame, SaysInEveryControlPackHowItsFieldsFollowEachOther)
{
    const std::pair<FieldOrder, uint8_t> rows[] = {{FieldOrder::kUpperFirst, 0xBC},
                                                   {FieldOrder::kLowerFirst, 0xFC},
                                                   {FieldOrder::kProgressive, 0xEC}};
    for (const bool pal : {true, false})
        for (const auto& [order, flags] : rows)
            for (const uint8_t before : {0x3C, 0xFF}) {
                Frame bytes(pal ? kPALSize : 120000, 0xFF);
                bytes[3] = pal ? 0xBF : 0x3F;
                Frame expected = bytes;
                const size_t last = bytes.size() - 12000;
                for (const size_t at : {size_t{243}, size_t{453}, last + 323, last + 473}) {
                    SetPack(bytes, at, {0x61, 0x3F, 0xC8, before, 0x61});
                    SetPack(expected, at,
                            {0x61, 0x3F, 0xC8, uint8_t(flags | (before & 0x2F)), 0x61});
                }
                View(bytes).SetFieldOrder(order);
                EXPECT_TRUE(expected == bytes) << int(flags) << ", and nothing else is touched";
                EXPECT_EQ(order, View(bytes).GetFieldOrder());
            }
    Frame none(kPALSize, 0xFF);
    EXPECT_EQ(std::nullopt, View(none).GetFieldOrder());
    SetPack(none, 453, {0x61, 0x3F, 0xC8, 0x7C, 0xFF});
    EXPECT_EQ(std::nullopt, View(none).GetFieldOrder()) << "the first field shown twice";
}

TEST(DIFFrame, ReadsTheFirstTimecodeOfAllSequences)
{
    Frame bytes(kPALSize, 0xFF);
    // Last sync block of the last subcode block of the last sequence.
    SetPack(bytes, 11 * 12000 + 160 + 6 + 5 * 8, {0x13, 0xC4, 0x59, 0x99, 0xE3});
    Timecode timecode;
    ASSERT_TRUE(View(bytes).GetTimecode(timecode));
    EXPECT_EQ((std::array{23, 19, 59, 4}),
              (std::array{timecode.hours, timecode.minutes, timecode.seconds, timecode.frames}));
    SetPack(bytes, 80 + 6, {0x13, 0xAF, 0, 0, 0});
    ASSERT_TRUE(View(bytes).GetTimecode(timecode));
    EXPECT_EQ(35, timecode.frames) << "digits beyond 9 are not rejected";
}

TEST(DIFFrame, ReadsRateSamplesAndChannelsFromTheAudioSourcePack)
{
    const struct {
        Pack pack;
        std::array<uint32_t, 4> expected;  // system, rate, samples, channels
    } rows[] = {
        {{0x50, 0xD8, 0x00, 0xE0, 0xC0}, {50, 48000, 1920, 2}},
        {{0x50, 0x16, 0x20, 0xC0, 0xC0}, {60, 48000, 1602, 4}},
        {{0x50, 0x16, 0x00, 0x20, 0x08}, {50, 44100, 1764, 2}},
        {{0x50, 0x00, 0x00, 0x00, 0x08}, {60, 44100, 1452, 2}},
        {{0x50, 0x10, 0x20, 0x20, 0x11}, {50, 32000, 1280, 4}},
        {{0x50, 0x0F, 0x00, 0x00, 0x10}, {60, 32000, 1068, 2}},
        {{0x50, 0x3F, 0x00, 0x00, 0x18}, {60, 48000, 0, 2}},
    };
    for (const auto& [pack, expected] : rows) {
        Frame bytes(kPALSize, 0xFF);
        SetPack(bytes, AudioBlockAt(2, 8) + 3, pack);
        AudioInfo info;
        ASSERT_TRUE(View(bytes).GetAudioInfo(info));
        EXPECT_EQ(expected,
                  (std::array{info.system, info.sample_rate, info.samples, info.channels}));
    }
}

TEST(DIFFrame, StaysInsideAShortBuffer)
{
    for (const size_t size : {0u, 1u, 4u, 243u, 455u, 480u, 11999u, 120000u}) {
        SCOPED_TRACE(size);
        Frame bytes(size, 0);
        if (size > 3) bytes[3] = 0x80;      // says PAL whatever the size is
        if (size > 453) bytes[453] = 0x61;  // whose wide bits may lie behind the end
        DIFFrame frame = View(bytes);
        Timecode timecode;
        AudioInfo info;
        EXPECT_EQ(size > 3, frame.IsPAL());
        EXPECT_FALSE(frame.GetTimecode(timecode) || frame.GetAudioInfo(info));
        frame.SetWidescreen(true);
        frame.SetFieldOrder(FieldOrder::kUpperFirst);
    }
}

}  // namespace
}  // namespace kelvane
