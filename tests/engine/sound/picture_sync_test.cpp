// Sound on tapes that were not locked, against the pictures that it belongs to.
//
// KELVANE_SYNC_MINUTES=60 build/release/bin/engine_audio_test --gtest_filter=PictureSync.Keeps*
// makes the table of docs/sound.md of that many minutes; KELVANE_SYNC_WAY="NTSC to PAL" one way of
// it.

#include "engine/sound/picture_sync.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "engine/sound/sync_measures.h"

namespace kelvane {
namespace {

struct Tape {
    const char* name;
    double speed;
    UnlockedTape::Damage damage = UnlockedTape::kNone;
};
constexpr Tape kTapes[] = {
    {"locked", 1},
    {"+0.5 %", 1.005},
    {"+200 ppm", 1.0002},
    {"-0.5 %", 0.995},
    {"-200 ppm", 0.9998},
    {"lost packs", 1.002, UnlockedTape::kLostPacks},
    {"wrong counts", 0.998, UnlockedTape::kWrongCounts},
};

struct Way {
    const char* name;
    bool from, to;
    ResamplingMethod method = ResamplingMethod::kNearest;
};
constexpr Way kWays[] = {
    {"PAL", true, true},
    {"NTSC", false, false},
    {"PAL to NTSC", true, false},
    {"NTSC to PAL", false, true},
    {"pulldown", true, false, ResamplingMethod::kPulldown},
    {"reverse pulldown", false, true, ResamplingMethod::kPulldown},
};

struct Heard {
    std::vector<double> behind;  // flashes, in milliseconds
    double residue;              // decibels
    double Mean() const
    {
        return std::accumulate(behind.begin(), behind.end(), 0.0) / double(behind.size());
    }
};

Heard Listen(const Way& way, const Tape& tape, bool separate, double seconds)
{
    const UnlockedTape source(way.from, tape.speed, tape.damage);
    SoundLoop run(way.from, way.to, separate);
    run.settings.timeresampling = way.method;
    run.setup.follows = true;
    run.Go(uint64_t(seconds * FramesPerSecond(way.from)),
           [&](Bytes& frame, uint64_t number) { source.Record(frame, number); });
    return {ClicksBehindFlashes(run, source.FlashEvery()), ResidueOfTone(run.Got())};
}

TEST(PictureSync, KeepsSoundWithItsPicturesWithoutAClick)
{
    const char* asked = std::getenv("KELVANE_SYNC_MINUTES");
    const char* only = std::getenv("KELVANE_SYNC_WAY");
    for (const Way& way : kWays)
        for (const Tape& tape : kTapes)
            for (const bool separate : {false, true}) {
                const bool quick = tape.speed == (way.from ? 1.005 : 0.995);
                if ((!asked && !quick) || (only && way.name != std::string(only))) continue;
                SCOPED_TRACE(std::string(way.name) + ", " + tape.name);
                const Heard heard = Listen(way, tape, separate, asked ? 60 * atof(asked) : 31);
                ASSERT_LE(3u, heard.behind.size());
                const auto [least, most] = std::ranges::minmax(heard.behind);
                if (asked) {
                    printf("| %s | %s | %s | %.1f | %.1f | %.1f | %.1f to %.1f | %.1f | %.0f |\n",
                           way.name, tape.name, separate ? "track" : "frames", heard.behind.front(),
                           heard.behind[heard.behind.size() / 2], heard.behind.back(), least, most,
                           heard.Mean(), heard.residue);
                    fflush(stdout);
                    continue;
                }
                // Pictures of pulldown lie from 53 ms behind to 7 ms ahead by themselves.
                const bool pulldown = way.from && way.method == ResamplingMethod::kPulldown;
                EXPECT_LE(std::fabs(heard.Mean()), pulldown ? 30 : 20);
                const double usual = way.method == ResamplingMethod::kPulldown ? 25.5 : 20.5;
                EXPECT_LE(most, usual);
                EXPECT_GE(least, pulldown ? -36 : -usual);
                EXPECT_LE(heard.residue, -60);
            }
}

// Whatever is followed, in frames of the same standard every sample is there, in order; and from
// where they have come together each frame has its own.
TEST(PictureSync, FramesOfTheSameStandardKeepTheirOwnSamples)
{
    for (const bool pal : {true, false})
        for (const double speed : {1.005, 0.995, 1.0}) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(pal, speed)));
            const UnlockedTape source(pal, speed);
            SoundLoop followed(pal, pal), plain(pal, pal);
            followed.setup.follows = true;
            const uint64_t frames = 400;
            const auto record = [&](Bytes& frame, uint64_t n) { source.Record(frame, n); };
            followed.Go(frames, record), plain.Go(frames, record);
            for (size_t i = 0; i < source.FirstSample(frames - 1); i++)
                ASSERT_EQ(UnlockedTape::ToneAt(double(i)), SampleAt(followed.heard, i, 0)) << i;
            EXPECT_EQ(speed == 1.0, plain.heard == followed.heard);
            for (uint64_t frame = 200; speed != 1.0 && frame <= frames; frame++)
                ASSERT_EQ(source.FirstSample(frame), followed.first_sample[frame]) << frame;
            for (uint64_t frame = 0; frame < 30; frame++)
                ASSERT_EQ(plain.first_sample[frame], followed.first_sample[frame]) << frame;
        }
}

// A separate track is as described, byte for byte, until it has to follow.
TEST(PictureSync, ATrackIsLeftAloneUntilItHasToFollow)
{
    for (const auto& [speed, frames] : {std::pair(1.0, 300), {1.005, 52}, {0.995, 52}}) {
        const UnlockedTape source(true, speed);
        SoundLoop followed(true, true, true), plain(true, true, true);
        followed.setup.follows = true;
        const auto record = [&](Bytes& frame, uint64_t n) { source.Record(frame, n); };
        followed.Go(300, record), plain.Go(300, record);
        ASSERT_EQ(300u * 7680, followed.Got().size());
        const auto same = std::ranges::mismatch(followed.Got(), plain.Got()).in1;
        const auto until = size_t(same - followed.Got().begin()) / 7680;
        EXPECT_NEAR(frames, double(until), 1);
    }
}

TEST(Resampler, DoesNotMindThePiecesThatItIsFed)
{
    Bytes input;
    for (uint32_t i = 0, noise = 1; i < 40000; i++, noise = noise * 1664525 + 1013904223)
        input.push_back(uint8_t(noise >> 24));
    const auto made = [&](size_t piece) {
        Resampler resampler(2, 1.0);
        AudioFifo from, to;
        Bytes output;
        size_t at = 0;
        for (int block = 0; block < 10; block++) {
            resampler.Ask(800, 1 + block * 0.001);
            for (; at < std::min(input.size(), size_t(block + 1) * 4000); at += piece) {
                EXPECT_EQ(
                    0, from.Put(std::span(input).subspan(at, std::min(piece, input.size() - at))));
                EXPECT_EQ(0, resampler.Run(from, false, to));
            }
        }
        EXPECT_EQ(0, resampler.Run(from, true, to));
        output.resize(to.Count());
        to.Get(output);
        EXPECT_EQ(8000u * 4, output.size());
        return output;
    };
    const Bytes whole = made(4000);
    EXPECT_TRUE(whole == made(4));
    EXPECT_TRUE(whole == made(1720));
}

}  // namespace
}  // namespace kelvane
