// The small parts that sound passes on its way: ring, cadence, sample conversion, source stream.

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <deque>
#include <numeric>
#include <random>

#include "engine/sound/audio_fifo.h"
#include "engine/sound/made_up_sound.h"
#include "engine/sound/sample_cadence.h"
#include "engine/sound/sample_converter.h"

namespace kelvane {
namespace {

TEST(AudioFifo, BehavesLikeAQueueWhateverTheOrderOfWork)
{
    std::mt19937 random(5);
    AudioFifo fifo;
    std::deque<uint8_t> model;
    for (int turn = 0; turn < 3000; turn++) {
        Bytes piece(random() % 9000);
        const uint32_t work = random() % 6;
        if (work >= 3) {
            const auto got = ptrdiff_t(fifo.Get(piece));
            ASSERT_EQ(std::min(piece.size(), model.size()), size_t(got));
            ASSERT_TRUE(std::equal(piece.begin(), piece.begin() + got, model.begin()));
            model.erase(model.begin(), model.begin() + got);
        } else if (work == 2) {
            ASSERT_EQ(0, turn % 7 == 0 ? fifo.Grow(piece.size() % 100) : kOK);
            ASSERT_EQ(0, fifo.PutSilence(piece.size()));
            model.insert(model.end(), piece.size(), 0);
        } else {
            if (work == 1) piece.resize(std::min(piece.size(), fifo.TailRoom()));
            std::iota(piece.begin(), piece.end(), uint8_t(random()));
            model.insert(model.end(), piece.begin(), piece.end());
            if (work == 1) {
                std::copy(piece.begin(), piece.end(), fifo.TailPointer());
                fifo.Advance(piece.size());
            } else {
                ASSERT_EQ(0, fifo.Put(piece));
            }
        }
        ASSERT_EQ(model.size(), fifo.Count());
    }
}

TEST(AudioFifo, GrowsByTheShortfallUpToItsLimit)
{
    AudioFifo fifo;
    EXPECT_EQ(65536u, fifo.Free());
    ASSERT_EQ(0, fifo.Put(Bytes(65536)));
    EXPECT_EQ(0u, fifo.TailRoom());
    ASSERT_EQ(0, fifo.Put(Bytes(10)));
    EXPECT_EQ(0u, fifo.Free());
    EXPECT_EQ(-1, fifo.Put(Bytes(3000000 - 65545)));
    EXPECT_EQ(65546u, fifo.Count()) << "nothing was added";
    EXPECT_EQ(0, fifo.Put(Bytes(3000000 - 65546)));
    EXPECT_EQ(-1, fifo.Grow(1));
    fifo.Drop(100);
    EXPECT_EQ(0, fifo.Put(Bytes(100)));
}

TEST(SampleCadence, StepsFallOnTheirFrames)
{
    const uint32_t rows[][3] = {{48000, 0, 1609}, {48000, 1, 1600},   {48000, 4, 1600},
                                {48000, 5, 1608}, {48000, 375, 1609}, {48000, 376, 1600},
                                {44100, 0, 1476}, {44100, 37, 1472},  {32000, 11, 1075}};
    for (const auto& [rate, frame, samples] : rows)
        EXPECT_EQ(samples, CadenceFor(rate, false).Count(frame)) << rate << " " << frame;
    EXPECT_EQ(1764u, CadenceFor(44100, true).Count(9));
    EXPECT_EQ(0u, CadenceFor(22050, true).Count(0));
}

TEST(SampleCadence, TenMinutesAreTenMinutesToAFrame)
{
    for (const uint32_t rate : {32000u, 44100u, 48000u})
        for (const bool pal : {true, false}) {
            const double per_second = pal ? 25.0 : 30 / 1.001;
            uint64_t samples = 0;
            for (uint64_t i = 0; i < uint64_t(600 * per_second); i++) {
                samples += CadenceFor(rate, pal).Count(i);
                ASSERT_NEAR(double(i + 1) * rate / per_second, double(samples), 60.0) << i;
            }
        }
}

TEST(SampleCoding, RoundsAndLimitsToSixteenBits)
{
    const SampleCoding u8{.bits = 8, .is_unsigned = true}, s8{.bits = 8}, s16{.bits = 16},
        b16{.bits = 16, .big_endian = true}, s20{.bits = 20}, s24{.bits = 24},
        b24{.bits = 24, .big_endian = true}, s32{.bits = 32}, f32{.bits = 32, .is_float = true},
        f64{.bits = 64, .is_float = true, .big_endian = true};
    constexpr auto kMinusQuarter = std::bit_cast<uint64_t>(-0.25);
    // Half rounds up; what is out of range is limited. Of 32 bits: 0.5, 1, -1e30, 2.6 / 32768 and
    // not a number.
    const struct {
        SampleCoding coding;
        uint64_t from;
        int16_t to;
    } rows[] = {{u8, 0x000000, -32768},    {u8, 0x000080, 0},          {s8, 0x00007F, 32512},
                {b16, 0x1234, 0x1234},     {s24, 0x123480, 0x1235},    {s24, 0x12347F, 0x1234},
                {b24, 0x7FFFFF, 32767},    {b24, 0xFFFF00, -1},        {s20, 0xFFFF80, 0},
                {s32, 0x80000000, -32768}, {s32, 0x00018000, 2},       {f32, 0x3F000000, 16384},
                {f32, 0x3F800000, 32767},  {f32, 0xF149F2CA, -32768},  {f32, 0x38A66666, 3},
                {f32, 0x7FC00000, 0},      {f64, kMinusQuarter, -8192}};
    for (const auto& row : rows) {
        const auto order = row.coding.big_endian ? ByteOrder::kBig : ByteOrder::kLittle;
        Bytes from(row.coding.Bytes()), to(2);
        StoreBytes(from, row.from, order);
        ConvertSamples(row.coding, from, to.data());
        EXPECT_EQ(row.to, int16_t(LoadBytes(to, ByteOrder::kLittle))) << std::hex << row.from;
    }
    EXPECT_FALSE(b16.IsPlain() || s24.IsPlain());
    EXPECT_TRUE(RIFFCoding({kSamplePCM, 2, 8, 48000}).is_unsigned);
    EXPECT_TRUE(s16.IsPlain() && RIFFCoding({kSamplePCM, 2, 16, 48000}).IsPlain());
    EXPECT_FALSE(RIFFCoding({kSampleULaw, 2, 8, 48000}).IsSupported());
    const SampleCoding none[] = {{.bits = 0}, {.bits = 33}, {.bits = 16, .is_float = true}};
    for (const SampleCoding& coding : none)
        EXPECT_FALSE(coding.IsSupported()) << coding.bits;
}

TEST(StreamAudio, BringsChunksOfAnySizeInOrder)
{
    // Tiny, empty, larger than the ring begins and larger than it may become.
    Bytes all(4000040), got;
    std::iota(all.begin(), all.end(), uint8_t{0});
    MadeUpStream stream(all, {4, 0, 8, 28, 200000, 3799996, 4, 0});
    StreamAudioReader reader(stream, SampleCoding{});
    AudioFifo fifo;
    size_t most = 0;
    for (int turn = 0; turn < 1000; turn++) {
        const Status status = reader.Fill(fifo, 7936);
        most = std::max(most, fifo.Count());
        EXPECT_TRUE(status != 0 || fifo.Count() > 7936) << turn;
        Bytes frame(7680);
        frame.resize(fifo.Get(frame));
        got.insert(got.end(), frame.begin(), frame.end());
    }
    EXPECT_TRUE(reader.Ended());
    EXPECT_EQ(kEnd, reader.Fill(fifo, 7936)) << "the status stays";
    EXPECT_TRUE(all == got);
    EXPECT_LT(most, 300000u) << "a large chunk waits outside";
}

TEST(StreamAudio, ConvertsSamplesCutInTwoByTheirChunks)
{
    Bytes wide;
    for (int i = 0; i < 100; i++)
        wide.insert(wide.end(), {0, uint8_t(i), 1});
    MadeUpStream stream(wide, {100, 1, 199});
    StreamAudioReader reader(stream, {.bits = 24});
    AudioFifo fifo;
    EXPECT_EQ(kEnd, reader.Fill(fifo, 10000));
    ASSERT_EQ(200u, fifo.Count());
    Bytes samples(200);
    fifo.Get(samples);
    for (size_t i = 0; i < 100; i++)
        EXPECT_EQ(i, samples[2 * i] + 256u * (samples[2 * i + 1] - 1));
}

TEST(StreamAudio, AStreamOfNothingDoesNotHoldUpTheRun)
{
    MadeUpStream stream({}, {0, 0, 0, 0, 0});
    StreamAudioReader reader(stream, SampleCoding{});
    AudioFifo fifo;
    for (const StatusCode status : {kOK, kOK, kEnd})
        EXPECT_EQ(status, reader.Fill(fifo, 100));
}

// A stream whose only chunk cannot be read.
struct UnreadStream : AudioStream {
    explicit UnreadStream(uint64_t bytes) : left(bytes) {}
    uint32_t ChunkSize() override { return 400; }
    Status ReadChunk(uint8_t*, uint32_t, uint32_t& bytes) override
    {
        bytes = 0;
        return skipped ? Status(kEnd) : Status(kUnread, EIO);
    }
    uint64_t SkipChunk() override
    {
        skipped = left > 0;
        return left;
    }
    uint64_t left;
    bool skipped = false;
};

TEST(StreamAudio, WhatCannotBeReadIsSilenceAndIsCounted)
{
    for (const uint64_t bytes : {400u, 0u}) {
        UnreadStream stream(bytes);
        StreamAudioReader reader(stream, SampleCoding{});
        AudioFifo fifo;
        EXPECT_EQ(bytes ? kEnd : kUnread, reader.Fill(fifo, 1000));
        EXPECT_EQ(bytes, fifo.Count());
        EXPECT_EQ(bytes ? bytes : 2, reader.LostBytes()) << "never nothing";
        EXPECT_EQ(EIO, reader.Reason().SystemError());
        EXPECT_TRUE(reader.Ended());
    }
}

TEST(TrackAudio, WritesAChunkEachTurnAndMakesUpForWhatWasShort)
{
    MadeUpTrack track;
    track.SetFormat(48000, 2);
    AudioFifo fifo;
    TrackAudioWriter writer(3), each(0);
    writer.SetGroup(4);
    ASSERT_EQ(0, fifo.Put(Bytes(250)));
    for (int frame = 0; frame < 6; frame++) {
        writer.Owe(100);
        ASSERT_EQ(0, frame == 4 ? fifo.Put(Bytes(1000)) : kOK);
        EXPECT_EQ(0, writer.FrameWritten(fifo, false, track));
    }
    // Whole samples, and the rest later; at the end what is owed and up to one frame more.
    writer.Owe(100);
    EXPECT_EQ(0, writer.Finish(fifo, 100, track));
    // Silence for what the ring lacks: at once where nothing more will come.
    writer.Owe(1000);
    EXPECT_EQ(0, writer.Finish(fifo, 100, track));
    for (int frame = 0; frame < 2; frame++) {
        each.Owe(8);
        EXPECT_EQ(0, each.FrameWritten(fifo, true, track));
    }
    EXPECT_EQ((std::vector<size_t>{248, 352, 200, 1000, 8, 8}), track.sizes);
}

}  // namespace
}  // namespace kelvane
