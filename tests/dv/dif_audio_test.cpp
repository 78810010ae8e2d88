#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "dv/audio_positions.h"
#include "dv/dif_frame.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;

// A frame without content that says which system it is.
Bytes Blank(bool pal)
{
    Bytes frame(pal ? 144000 : 120000, 0xFF);
    frame[3] = pal ? 0xBF : 0x3F;
    return frame;
}

Bytes Noise(size_t bytes)
{
    std::mt19937 random(1);
    Bytes noise(bytes);
    std::ranges::generate(noise, [&] { return static_cast<uint8_t>(random()); });
    return noise;
}

DIFFrame View(Bytes& frame)
{
    return DIFFrame(frame.data(), static_cast<uint32_t>(frame.size()));
}

Bytes Extract(Bytes& frame, uint32_t mask)
{
    Bytes samples(4 * 2 * 1944);
    samples.resize(View(frame).ExtractAudio(samples, mask));
    return samples;
}

// One channel of interleaved 16-bit samples.
Bytes Channel(const Bytes& samples, size_t channels, size_t channel)
{
    Bytes one;
    for (size_t at = 2 * channel; at + 1 < samples.size(); at += 2 * channels)
        one.insert(one.end(), {samples[at], samples[at + 1]});
    return one;
}

// Whether `at` is a sample byte of an audio block.
bool IsAudioByte(size_t at)
{
    const size_t inSequence = at % 12000;
    return inSequence >= 480 && (inSequence - 480) % 1280 < 80 && (inSequence - 480) % 1280 >= 8;
}

// Against a frame that was Blank.
void ExpectOnlySoundDiffers(bool pal, const Bytes& after)
{
    const Bytes before = Blank(pal);
    for (size_t at = 0; at < after.size(); at++) {
        const bool sound = IsAudioByte(at) || IsAudioByte(at + 5);  // samples or a pack
        ASSERT_TRUE(sound || before[at] == after[at]) << at;
    }
}

Bytes PackOf(const Bytes& frame, size_t sequence, size_t block)
{
    const auto at = frame.begin() + static_cast<ptrdiff_t>(AudioBlockAt(sequence, block) + 3);
    return {at, at + 5};
}

// That every place is used once is seen below, where full frames come back.
TEST(AudioPositions, FollowTheShuffleOfTheAudioBlocks)
{
    EXPECT_EQ(1944u, A16.size());
    EXPECT_EQ(1620u, NB16.size());
    EXPECT_EQ(488u, A16[0]);
    EXPECT_EQ(2 * 12000u + 488 + 3 * 1280, A16[1]);
    EXPECT_EQ(491u, A12[54]);
    EXPECT_EQ(60000u + 490, NB16[45]);
}

TEST(DIFAudio, WritesPacksAsDecodersExpectThem)
{
    Bytes frame = Blank(true);
    for (size_t i = 0; i < 4; i++) {
        frame[459 + i] = static_cast<uint8_t>(0x20 + i);
        frame[464 + i] = static_cast<uint8_t>(0x30 + i);
    }
    EXPECT_EQ(7680u, View(frame).EmbedAudio(Bytes(7680), 48000, 2));
    EXPECT_EQ((Bytes{0x50, 0xD8, 0x00, 0xE0, 0x00}), PackOf(frame, 0, 3));
    EXPECT_EQ((Bytes{0x50, 0xD8, 0x00, 0xE0, 0x00}), PackOf(frame, 5, 0));
    EXPECT_EQ((Bytes{0x50, 0xD8, 0x01, 0xE0, 0x00}), PackOf(frame, 6, 3))
        << "the second channel's half";
    EXPECT_EQ((Bytes{0x51, 0x33, 0xCF, 0xA0, 0xFF}), PackOf(frame, 11, 1));
    EXPECT_EQ((Bytes{0x52, 0x20, 0x21, 0x22, 0x23}), PackOf(frame, 4, 5));
    EXPECT_EQ((Bytes{0x53, 0x30, 0x31, 0x32, 0x33}), PackOf(frame, 7, 3));
    EXPECT_EQ((Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), PackOf(frame, 4, 2));

    Bytes ntsc = Blank(false);
    View(ntsc).EmbedAudio(Bytes(1068 * 8), 32000, 4);
    EXPECT_EQ((Bytes{0x50, 0xCF, 0x31, 0xC0, 0x11}), PackOf(ntsc, 5, 0));
}

TEST(DIFAudio, GivesBackEverySampleAndTouchesNothingElse)
{
    const struct {
        bool pal;
        uint32_t rate;
        size_t samples;
    } rows[] = {{true, 48000, 1920},  {true, 44100, 1764},  {true, 32000, 1280},
                {false, 48000, 1609}, {false, 44100, 1476}, {false, 32000, 1076},
                {true, 48000, 1944},  {false, 48000, 1620}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.rate) + (row.pal ? " PAL" : " NTSC"));
        Bytes frame = Blank(row.pal);
        const Bytes samples = Noise(row.samples * 4);
        EXPECT_EQ(samples.size(), View(frame).EmbedAudio(samples, row.rate, 2));
        EXPECT_EQ(samples, Extract(frame, 3));
        EXPECT_EQ(Channel(samples, 2, 0), Extract(frame, 1));
        EXPECT_EQ(Channel(samples, 2, 1), Extract(frame, 2 | 12));
        EXPECT_TRUE(Extract(frame, 12).empty());
        ExpectOnlySoundDiffers(row.pal, frame);
    }
}

TEST(DIFAudio, OneChannelIsHeardOnBoth)
{
    Bytes frame = Blank(true);
    const Bytes mono = Noise(1920 * 2);
    EXPECT_EQ(mono.size(), View(frame).EmbedAudio(mono, 48000, 1));
    EXPECT_EQ(mono, Extract(frame, 1));
    EXPECT_EQ(mono, Extract(frame, 2));
    EXPECT_EQ(480u * 2, View(frame).EmbedAudio(mono, 48000, 4)) << "not stepped by channels";
}

TEST(DIFAudio, CutsWhatAFrameCannotHold)
{
    Bytes pal = Blank(true), ntsc = Blank(false);
    EXPECT_EQ(1944u * 4, View(pal).EmbedAudio(Bytes(1960 * 4), 48000, 2));
    EXPECT_EQ(1620u * 4, View(ntsc).EmbedAudio(Bytes(1960 * 4 + 3), 48000, 2));
    // 1896 + 63 samples are claimed.
    for (size_t block = 0; block < 9; block++)
        pal[AudioBlockAt(0, block) + 4] = 0xFF;
    EXPECT_EQ(1944u * 4, Extract(pal, 3).size());
    Bytes small(10);
    EXPECT_EQ(8u, View(pal).ExtractAudio(small, 3)) << "whole groups only";
    EXPECT_EQ(0u, View(pal).ExtractAudio({}, 3));
    // Pairs of 12 bits end where the audio blocks end, before the picture.
    Bytes four = Blank(true);
    View(four).EmbedAudio(Bytes(1944 * 8), 32000, 4);
    ExpectOnlySoundDiffers(true, four);
}

TEST(DIFAudio, FourChannelsInTwelveBits)
{
    Bytes whole(1280 * 8);
    for (size_t i = 0; i < whole.size(); i += 2)  // values that 12 bits keep
        whole[i] = static_cast<uint8_t>(i * 7 / 2);
    Bytes pal = Blank(true);
    EXPECT_EQ(whole.size(), View(pal).EmbedAudio(whole, 32000, 4));
    EXPECT_EQ(whole, Extract(pal, 15));
    EXPECT_EQ(Channel(whole, 4, 3), Extract(pal, 8));
    EXPECT_EQ(Channel(whole, 4, 1), Extract(pal, 2));

    // NTSC: the second pair takes the place of the first, and the other half keeps its bytes.
    const Bytes samples(whole.begin(), whole.begin() + 1068 * 8);
    Bytes ntsc = Blank(false);
    View(ntsc).EmbedAudio(samples, 32000, 4);
    EXPECT_EQ(Channel(samples, 4, 2), Extract(ntsc, 1));
    EXPECT_EQ(Channel(samples, 4, 3), Extract(ntsc, 2));
    EXPECT_EQ(Bytes(1068 * 4, 0xFF), Extract(ntsc, 12));
}

TEST(DIFAudio, AFrameWithoutUsableSoundGivesNothing)
{
    Bytes frame = Blank(true);
    EXPECT_TRUE(Extract(frame, 3).empty());
    View(frame).EmbedAudio(Bytes(7680), 48000, 2);
    EXPECT_FALSE(Extract(frame, 3).empty());
    EXPECT_TRUE(Extract(frame, 0).empty());
    for (size_t sequence = 0; sequence < 12; sequence++)
        for (size_t block = 0; block < 9; block++)
            frame[AudioBlockAt(sequence, block) + 7] = 0x18;  // a rate that is not known
    EXPECT_TRUE(Extract(frame, 3).empty());
    // 48 kHz with four channels is read as two of 16 bits.
    for (size_t block = 0; block < 9; block++)
        frame[AudioBlockAt(0, block) + 5] = 0x20, frame[AudioBlockAt(0, block) + 7] = 0;
    EXPECT_EQ(7680u, Extract(frame, 15).size());
}

// What a tape gives for the audio blocks of a sequence that it lost: codes that stand for no
// sample.
void LoseSequence(Bytes& frame, size_t sequence, const Bytes& code)
{
    for (size_t block = 0; block < 9; block++)
        for (size_t at = 8; at < 80; at++)
            frame[AudioBlockAt(sequence, block) + at] = code[(at - 8) % code.size()];
}

// Each of the four channels rises and falls by 1 a sample, at its own place, in values that 12 bits
// hold exactly.
int16_t Wave(size_t sample, size_t channel)
{
    const auto turn = static_cast<int>((sample + 37 * channel) % 400);
    return static_cast<int16_t>(turn < 200 ? turn - 100 : 300 - turn);
}

TEST(DIFAudio, OfTwelveBitsIsMendedInTheChannelsOfALostSequenceAlone)
{
    constexpr size_t kSamples = 1280;
    Bytes samples;
    for (size_t i = 0; i < kSamples; i++)
        for (size_t channel = 0; channel < 4; channel++) {
            const auto value = static_cast<uint16_t>(Wave(i, channel));
            samples.insert(samples.end(), {uint8_t(value), uint8_t(value >> 8)});
        }
    for (const size_t lost : {0, 3, 5, 6, 11}) {
        SCOPED_TRACE(lost);
        Bytes frame = Blank(true);
        ASSERT_EQ(samples.size(), View(frame).EmbedAudio(samples, 32000, 4));
        LoseSequence(frame, lost, {0x80, 0x80, 0x00});
        const Bytes all = Extract(frame, 15);
        for (size_t channel = 0; channel < 4; channel++) {
            const Bytes one = Extract(frame, 1u << channel);
            EXPECT_EQ(Channel(all, 4, channel), one);
            const bool whole = (channel < 2) != (lost < 6);
            size_t mended = 0;
            for (size_t i = 0; i < kSamples; i++) {
                const auto value = static_cast<int16_t>(one[2 * i] | one[2 * i + 1] << 8);
                ASSERT_NEAR(Wave(i, channel), value, whole ? 0 : 1) << i << ' ' << channel;
                const auto& places = channel < 2 ? A12 : B12;
                mended += places[i] / 12000 == lost;
            }
            EXPECT_EQ(whole, mended == 0);
        }
    }
    // Of 16 bits they come out as they stand.
    Bytes frame = Blank(true);
    View(frame).EmbedAudio(Bytes(kSamples * 4), 32000, 2);
    LoseSequence(frame, 2, {0x80, 0x00});
    const Bytes first = Extract(frame, 1);
    for (size_t i = 0; i < kSamples; i++)
        ASSERT_EQ(A16[i] / 12000 == 2 ? 0x80 : 0, first[2 * i + 1]);
    EXPECT_EQ(Bytes(kSamples * 2), Extract(frame, 2));
}

TEST(DIFAudio, StaysInsideAShortBuffer)
{
    for (const size_t size : {0u, 4u, 483u, 490u, 4400u, 71999u, 120000u, 143999u}) {
        SCOPED_TRACE(size);
        Bytes frame = Noise(size);
        if (size > 3) frame[3] = 0x80;
        const Bytes samples(7680, 1);
        for (const uint32_t rate : {48000u, 32000u}) {
            View(frame).EmbedAudio(samples, rate, rate == 32000 ? 4 : 2);
            Bytes out(16000);
            EXPECT_LE(View(frame).ExtractAudio(out, 15), out.size());
        }
    }
    Bytes pal = Blank(true);  // an NTSC frame's worth of bytes that says PAL
    pal.resize(120000);
    View(pal).EmbedAudio(Bytes(7680, 1), 48000, 2);
    EXPECT_EQ(Bytes(3840, 1), Extract(pal, 1)) << "the first half is whole";
    EXPECT_EQ(0, Extract(pal, 2)[2 * 2 + 1]) << "what is missing reads as zero";
}

TEST(DIFAudioDeathTest, ARateThatDVDoesNotKnowEndsTheProcess)
{
    Bytes frame = Blank(true);
    EXPECT_EXIT(View(frame).EmbedAudio(Bytes(100), 22050, 2), testing::ExitedWithCode(255), "");
}

}  // namespace
}  // namespace kelvane
