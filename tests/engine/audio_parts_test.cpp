// The small parts that sound passes on its way: ring, cadence, sample conversion, source stream.

#include <gtest/gtest.h>

#include <bit>
#include <deque>
#include <numeric>
#include <random>

#include "engine/audio_fifo.h"
#include "engine/sample_cadence.h"
#include "engine/sample_coding.h"
#include "engine/stream_audio.h"
#include "engine/track_audio.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Counting(size_t bytes)
{
    Bytes data(bytes);
    std::iota(data.begin(), data.end(), uint8_t{0});
    return data;
}

TEST(AudioFifo, BehavesLikeAQueueWhateverTheOrderOfWork)
{
    std::mt19937 random(5);
    AudioFifo fifo;
    std::deque<uint8_t> model;
    for (int turn = 0; turn < 3000; turn++) {
        const size_t bytes = random() % 9000;
        switch (random() % 5) {
            case 0: {
                Bytes piece(bytes);
                for (uint8_t& byte : piece)
                    byte = static_cast<uint8_t>(random());
                ASSERT_EQ(0, fifo.Put(piece));
                model.insert(model.end(), piece.begin(), piece.end());
                break;
            }
            case 1: {
                const size_t piece = std::min(bytes, fifo.TailRoom());
                for (size_t i = 0; i < piece; i++) {
                    fifo.TailPointer()[i] = static_cast<uint8_t>(i);
                    model.push_back(static_cast<uint8_t>(i));
                }
                fifo.Advance(piece);
                break;
            }
            case 2:
                if (turn % 7 == 0) {
                    ASSERT_EQ(0, fifo.Grow(bytes % 100));
                }
                ASSERT_EQ(0, fifo.PutSilence(bytes / 4));
                model.insert(model.end(), bytes / 4, 0);
                break;
            default: {
                Bytes piece(bytes);
                piece.resize(fifo.Get(piece));
                ASSERT_EQ(std::min(bytes, model.size()), piece.size());
                ASSERT_TRUE(std::equal(piece.begin(), piece.end(), model.begin()));
                model.erase(model.begin(), model.begin() + static_cast<ptrdiff_t>(piece.size()));
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
    const SampleCadence ntsc48 = CadenceFor(48000, false);
    const std::vector<std::pair<uint64_t, uint32_t>> expected = {
        {0, 1609}, {1, 1600}, {4, 1600}, {5, 1608}, {375, 1609}, {376, 1600}};
    for (const auto& [frame, samples] : expected)
        EXPECT_EQ(samples, ntsc48.Count(frame)) << frame;
    EXPECT_EQ(1476u, CadenceFor(44100, false).Count(0));
    EXPECT_EQ(1472u, CadenceFor(44100, false).Count(37));
    EXPECT_EQ(1075u, CadenceFor(32000, false).Count(11));
    EXPECT_EQ(1764u, CadenceFor(44100, true).Count(9));
    EXPECT_EQ(0u, CadenceFor(22050, true).Count(0));
}

TEST(SampleCadence, TenMinutesAreTenMinutesToAFrame)
{
    for (const uint32_t rate : {32000u, 44100u, 48000u}) {
        for (const bool pal : {true, false}) {
            const uint64_t frames = pal ? 15000 : 17982;
            const SampleCadence cadence = CadenceFor(rate, pal);
            uint64_t samples = 0;
            for (uint64_t i = 0; i < frames; i++) {
                samples += cadence.Count(i);
                const double exact = static_cast<double>(i + 1) * rate / (pal ? 25.0 : 30 / 1.001);
                ASSERT_NEAR(exact, static_cast<double>(samples), 60.0) << rate << " " << i;
            }
        }
    }
}

int16_t Converted(const SampleCoding& coding, uint64_t bits)
{
    uint8_t from[8], to[2];
    for (size_t i = 0; i < coding.Bytes(); i++) {
        const size_t shift = 8 * (coding.big_endian ? coding.Bytes() - 1 - i : i);
        from[i] = static_cast<uint8_t>(bits >> shift);
    }
    ConvertSamples(coding, std::span(from).first(coding.Bytes()), to);
    return static_cast<int16_t>(to[0] | to[1] << 8);
}

TEST(SampleCoding, RoundsAndLimitsToSixteenBits)
{
    const SampleCoding u8{.bits = 8, .is_unsigned = true}, s8{.bits = 8}, s24{.bits = 24},
        b24{.bits = 24, .big_endian = true}, s32{.bits = 32}, f32{.bits = 32, .is_float = true},
        f64{.bits = 64, .is_float = true, .big_endian = true}, b16{.bits = 16, .big_endian = true},
        s20{.bits = 20};
    EXPECT_EQ(-32768, Converted(u8, 0));
    EXPECT_EQ(0, Converted(u8, 0x80));
    EXPECT_EQ(0x7F00, Converted(s8, 0x7F));
    EXPECT_EQ(0x1234, Converted(b16, 0x1234));
    EXPECT_EQ(0x1235, Converted(s24, 0x123480));
    EXPECT_EQ(0x1234, Converted(s24, 0x12347F));
    EXPECT_EQ(32767, Converted(b24, 0x7FFFFF)) << "limited";
    EXPECT_EQ(-1, Converted(b24, 0xFFFF00));
    EXPECT_EQ(0, Converted(s20, 0xFFFF80)) << "half rounds up";
    EXPECT_EQ(-32768, Converted(s32, 0x80000000));
    EXPECT_EQ(2, Converted(s32, 0x00018000));
    const auto real = [&](float value) { return Converted(f32, std::bit_cast<uint32_t>(value)); };
    EXPECT_EQ(16384, real(0.5f));
    EXPECT_EQ(32767, real(1.0f));
    EXPECT_EQ(-32768, real(-1e30f));
    EXPECT_EQ(3, real(2.6f / 32768));
    EXPECT_EQ(0, real(std::bit_cast<float>(0x7FC00000))) << "not a number";
    EXPECT_EQ(-8192, Converted(f64, std::bit_cast<uint64_t>(-0.25)));
    EXPECT_TRUE((SampleCoding{.bits = 16}).IsPlain());
    EXPECT_FALSE(b16.IsPlain() || s24.IsPlain());
    EXPECT_TRUE(RIFFCoding({kSamplePCM, 2, 8, 48000}).is_unsigned);
    EXPECT_TRUE(RIFFCoding({kSamplePCM, 2, 16, 48000}).IsPlain());
    EXPECT_FALSE(RIFFCoding({kSampleULaw, 2, 8, 48000}).IsSupported());
    EXPECT_FALSE(QuickTimeCoding({kSamplePCM, 2, 8, 48000}).is_unsigned);
    EXPECT_FALSE(QuickTimeCoding({kSamplePCM, 2, 24, 48000}).IsSupported());
    EXPECT_FALSE((SampleCoding{.bits = 0}).IsSupported() ||
                 (SampleCoding{.bits = 33}).IsSupported() ||
                 (SampleCoding{.bits = 16, .is_float = true}).IsSupported());
}

// A stream of given chunks.
class MadeUpStream : public AudioStream {
public:
    explicit MadeUpStream(std::vector<Bytes> chunks) : fChunks(std::move(chunks)) {}
    uint32_t ChunkSize() override
    {
        return fNext < fChunks.size() ? static_cast<uint32_t>(fChunks[fNext].size()) : 0;
    }
    int ReadChunk(uint8_t* buffer, uint32_t room, uint32_t& bytes) override
    {
        if (fNext >= fChunks.size()) return -1;
        EXPECT_LE(fChunks[fNext].size(), room);
        bytes = static_cast<uint32_t>(fChunks[fNext].size());
        std::copy(fChunks[fNext].begin(), fChunks[fNext].end(), buffer);
        fNext++;
        return 0;
    }

private:
    std::vector<Bytes> fChunks;
    size_t fNext = 0;
};

TEST(StreamAudio, BringsChunksOfAnySizeInOrder)
{
    // Tiny, empty, larger than the ring begins and larger than it may become.
    const Bytes all = Counting(4 * 1000 * 1000 + 40);
    std::vector<Bytes> chunks;
    size_t at = 0;
    for (const size_t size : {4u, 0u, 8u, 28u, 200000u, 3799996u, 4u}) {
        chunks.emplace_back(all.begin() + static_cast<ptrdiff_t>(at),
                            all.begin() + static_cast<ptrdiff_t>(at + size));
        at += size;
    }
    chunks.emplace_back(all.begin() + static_cast<ptrdiff_t>(at), all.end());
    MadeUpStream stream(std::move(chunks));
    StreamAudioReader reader(stream, SampleCoding{});
    AudioFifo fifo;
    Bytes got;
    size_t most = 0;
    for (int turn = 0; turn < 1000; turn++) {
        const int status = reader.Fill(fifo, 7936);
        most = std::max(most, fifo.Count());
        if (status == 0) {
            EXPECT_GT(fifo.Count(), 7936u) << turn;
        }
        Bytes frame(7680);
        frame.resize(fifo.Get(frame));
        got.insert(got.end(), frame.begin(), frame.end());
    }
    EXPECT_TRUE(reader.Ended());
    EXPECT_EQ(-1, reader.Fill(fifo, 7936)) << "the status stays";
    EXPECT_TRUE(all == got);
    EXPECT_LT(most, 300000u) << "a large chunk waits outside";
}

TEST(StreamAudio, ConvertsSamplesCutInTwoByTheirChunks)
{
    Bytes wide;
    for (int i = 0; i < 100; i++)
        wide.insert(wide.end(), {0, static_cast<uint8_t>(i), 1});
    MadeUpStream stream({Bytes(wide.begin(), wide.begin() + 100),
                         Bytes(wide.begin() + 100, wide.begin() + 101),
                         Bytes(wide.begin() + 101, wide.end())});
    StreamAudioReader reader(stream, {.bits = 24});
    AudioFifo fifo;
    EXPECT_EQ(-1, reader.Fill(fifo, 10000));
    ASSERT_EQ(200u, fifo.Count());
    Bytes samples(200);
    fifo.Get(samples);
    for (size_t i = 0; i < 100; i++)
        EXPECT_EQ(i, samples[2 * i] + 256u * (samples[2 * i + 1] - 1));
}

TEST(StreamAudio, AStreamOfNothingDoesNotHoldUpTheRun)
{
    MadeUpStream stream(std::vector<Bytes>(5));
    StreamAudioReader reader(stream, SampleCoding{});
    AudioFifo fifo;
    EXPECT_EQ(0, reader.Fill(fifo, 100));
    EXPECT_EQ(0, reader.Fill(fifo, 100));
    EXPECT_EQ(-1, reader.Fill(fifo, 100));
}

struct MadeUpTrack : AudioTrack {
    void SetFormat(uint32_t, uint32_t) override {}
    int WriteChunk(std::span<const uint8_t> chunk) override
    {
        chunks.push_back(chunk.size());
        return 0;
    }
    std::vector<size_t> chunks;
};

TEST(TrackAudio, WritesAChunkEachTurnAndMakesUpForWhatWasShort)
{
    MadeUpTrack track;
    AudioFifo fifo;
    TrackAudioWriter writer(3);
    writer.SetGroup(4);
    ASSERT_EQ(0, fifo.Put(Bytes(250)));
    for (int frame = 0; frame < 6; frame++) {
        writer.Owe(100);
        if (frame == 4) {
            ASSERT_EQ(0, fifo.Put(Bytes(1000)));
        }
        EXPECT_EQ(0, writer.FrameWritten(fifo, false, track));
    }
    EXPECT_EQ((std::vector<size_t>{248, 352}), track.chunks)
        << "whole samples; the rest comes later";
    writer.Owe(100);
    EXPECT_EQ(0, writer.Finish(fifo, 100, track));
    EXPECT_EQ(200u, track.chunks.back()) << "what is owed and up to one frame more";
    writer.Owe(1000);
    EXPECT_EQ(0, writer.Finish(fifo, 100, track));
    EXPECT_EQ(1000u, track.chunks.back()) << "silence for what the ring lacks";

    TrackAudioWriter each(0);
    MadeUpTrack other;
    for (int frame = 0; frame < 2; frame++) {
        each.Owe(8);
        EXPECT_EQ(0, each.FrameWritten(fifo, true, other));
    }
    EXPECT_EQ((std::vector<size_t>{8, 8}), other.chunks)
        << "nothing more will come: padded at once";
}

}  // namespace
}  // namespace kelvane
