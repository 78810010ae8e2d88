// Sound through a whole conversion with made-up frames: no pictures, no files.

#include <gtest/gtest.h>

#include <cmath>

#include "engine/sound/sound_loop.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

// PAL or not, and whether sound goes to a track.
constexpr std::tuple<bool, bool, bool> kWays[] = {
    {true, true, false}, {true, false, false}, {false, true, false}, {false, false, false},
    {true, true, true},  {true, false, true},  {false, true, true},  {false, false, true}};
#define TRACE_WAY(rate) SCOPED_TRACE(testing::PrintToString(std::tuple(rate, from, to, separate)))

// That every click is heard with its picture, to a frame, and no click is missing.
void ExpectInStep(const SoundLoop& run, const SampleSound& sound, uint64_t first, uint64_t end)
{
    const std::vector<uint64_t> clicks = FindClicks(run.Got(), 2);
    ASSERT_EQ(end - first, clicks.size());
    int64_t source = 0;  // the frame that holds the first sample of the second
    for (uint64_t second = first; second < end; second++) {
        while (sound.FirstOfFrame(uint64_t(source) + 1, run.setup.source_is_pal) <=
               second * sound.Rate())
            source++;
        const int64_t shown = run.ShownAt(clicks[second - first], sound.Rate());
        ASSERT_LE(std::abs(shown - source), 1) << "second " << second;
    }
}

TEST(AudioTransfer, StaysInStepAtEveryRateInEveryDirection)
{
    for (const uint32_t rate : {32000u, 44100u, 48000u})
        for (const auto& [from, to, separate] : kWays) {
            TRACE_WAY(rate);
            const SampleSound sound(rate);
            SoundLoop run(from, to, separate);
            const uint64_t frames = from ? 250 : 299;  // ten seconds
            run.Go(frames, [&](Bytes& f, uint64_t n) { sound.EmbedInto(f, n); });
            ExpectInStep(run, sound, 0, 10);
            // All of the source's sound, sample for sample, and not more than a frame beside it.
            const uint64_t all = sound.FirstOfFrame(frames, from);
            run.ExpectBegin(sound.Samples(0, size_t(all - rate / 25)));
            EXPECT_NEAR(double(all), double(run.Got().size() / 4), rate / 25.0);
            for (size_t i = 0; from && to && !separate && i < frames; i++)
                ASSERT_EQ(rate / 25 * i, run.first_sample[i]) << "the same in the same frames";
        }
}

TEST(AudioTransfer, StaysInStepOverTenMinutesThereAndBack)
{
    // Only the seconds' first frames have a click worth making; the others are silent.
    constexpr uint64_t kSeconds = 600;
    const SampleSound sound(48000);
    for (const bool separate : {true, false}) {
        SoundLoop there(true, false, separate), back(false, true);
        there.Go(kSeconds * 25, [&](Bytes& frame, uint64_t number) {
            if (number % 25 == 0) return sound.EmbedInto(frame, number);
            Embed(frame, Bytes(7680));
        });
        ExpectInStep(there, sound, 0, kSeconds);
        EXPECT_NEAR(kSeconds * 48000.0, double(there.Got().size() / 4), 1602.0);
        if (separate) continue;
        back.Go(there.shown.size(),
                [&](Bytes& frame, uint64_t number) { Embed(frame, there.HeardIn(number)); });
        ExpectInStep(back, sound, 0, kSeconds);
        EXPECT_NEAR(kSeconds * 48000.0, double(back.heard.size() / 4), 1920.0 + 1602.0);
    }
}

// Source frames that are damaged in ways of their own, every one with the sound of its number
// otherwise. What is lost is silent; the rest stays in step.
TEST(AudioTransfer, StaysInStepWhateverFramesLack)
{
    const auto set = [](size_t at, uint8_t pal, uint8_t ntsc) {
        return
            [=](Bytes& frame) { SetInAudioPacks(frame, at, frame.size() == 144000 ? pal : ntsc); };
    };
    const std::pair<const char*, std::function<void(Bytes&)>> rows[] = {
        {"no audio pack", EraseAudioPacks},
        {"a header that says nothing", [](Bytes& frame) { frame[3] = 0, EraseAudioPacks(frame); }},
        {"a rate that is not known", set(4, 0x18, 0x18)},
        {"more samples than there are places", set(1, 0xFF, 0xFF)},
        {"the other system's samples", set(3, 0xC0, 0xE0)},
    };
    // PAL or not, into a track or not, and the first and the last frame that is damaged.
    constexpr std::array<int, 4> kDamaged[] = {
        {1, 0, 30, 240}, {0, 0, 40, 290}, {0, 1, 40, 290}, {1, 0, 0, 0}};
    constexpr uint64_t kSeconds = 12;
    for (const auto& [what, damage] : rows)
        for (const uint32_t rate : {48000u, 32000u})
            for (const auto& [pal, separate, first, last] : kDamaged) {
                SCOPED_TRACE(testing::PrintToString(std::tuple(what, rate, pal, separate)));
                const SampleSound sound(rate, rate == 32000 ? 4 : 2);
                SoundLoop run(pal, pal, separate);
                run.Go(kSeconds * (pal ? 25 : 30) - 1, [&](Bytes& frame, uint64_t number) {
                    sound.EmbedInto(frame, number);
                    if (int(number) < first || int(number) > last) return;
                    number % 25 == 0 ? EraseAudioPacks(frame) : damage(frame);
                });
                const std::vector<uint64_t> clicks = FindClicks(run.Got(), 2);
                ASSERT_FALSE(clicks.empty());
                EXPECT_NEAR(kSeconds - 1.0, double(clicks.back()) / rate, 0.005);
                run.ExpectLength(rate, 0.04);
            }
}

TEST(AudioTransfer, SoundThatBeginsLateIsInStepAndFramesBeforeItAreLeftAlone)
{
    for (const uint32_t rate : {48000u, 44100u})
        for (const auto& [from, to, separate] : kWays) {
            TRACE_WAY(rate);
            const SampleSound sound(rate);
            SoundLoop run(from, to, separate);
            run.Go(from ? 500 : 599, [&](Bytes& frame, uint64_t number) {
                if (number >= 110) sound.EmbedInto(frame, number);
            });
            ExpectInStep(run, sound, from ? 5 : 4, 20);
            EXPECT_EQ(separate ? rate : 0, separate ? run.track.rate : run.rates[80]);
        }
}

TEST(AudioTransfer, ATrackWithoutAnySoundIsSilentAndAsLongAsThePictures)
{
    for (const uint64_t frames : {300, 20}) {
        SoundLoop run(true, true, true);
        run.Go(frames);
        EXPECT_EQ(48000u, run.track.rate);
        EXPECT_EQ(2u, run.track.channels);
        EXPECT_EQ(Bytes(frames * 7680, 0), run.track.samples);
    }
    SoundLoop frames(true, true);
    frames.Go(20);
    EXPECT_TRUE(frames.heard.empty()) << "frames stay as they are";
}

TEST(AudioTransfer, AChangeOfRateIsFollowedInFramesAndResampledInATrack)
{
    const SampleSound before(48000), after(32000);
    for (const auto& [from, to, separate] : kWays) {
        TRACE_WAY(0);
        SoundLoop run(from, to, separate);
        run.Go(1000, [&](Bytes& frame, uint64_t number) {
            (number / 130 % 2 == 0 ? before : after).EmbedInto(frame, number);
        });
        if (separate) {
            EXPECT_EQ(48000u, run.track.rate);
            run.ExpectLength(48000, 0.04);
            const std::vector<uint64_t> clicks = FindClicks(run.track.samples, 2);
            EXPECT_NEAR(1000 / (from ? 25.0 : 30.0), double(clicks.size()), 1.0);
            for (const uint64_t click : clicks)
                EXPECT_LE(std::min(click % 48000, 48000 - click % 48000), 1920u) << click;
            continue;
        }
        EXPECT_EQ(48000u, run.rates.front());
        EXPECT_EQ(32000u, run.rates.back());
        const std::vector<uint64_t> clicks = FindClicks(run.heard, 2);
        for (const uint64_t click : clicks) {
            const double second = double(run.ShownAt(click, 0)) / FramesPerSecond(from);
            EXPECT_NEAR(std::round(second), second, 0.09) << click;
        }
        EXPECT_NEAR(1000 / (from ? 25.0 : 30.0), double(clicks.size()), 1.0);
    }
}

// In PAL each rate has whole samples in a frame: not a sample is lost or made where it changes.
TEST(AudioTransfer, AChangeOfRateBetweenTwoFramesIsExact)
{
    // Of each source frame in turn.
    const std::vector<uint32_t> runs[] = {
        {48000, 48000, 48000, 32000, 32000, 32000, 44100, 48000, 44100, 44100},
        {32000, 48000, 48000, 48000, 48000, 32000},
        {44100, 44100, 32000, 48000}};
    for (const std::vector<uint32_t>& rates : runs) {
        Bytes expected;
        SoundLoop run(true, true);
        run.Go(rates.size(), [&](Bytes& frame, uint64_t number) {
            const SampleSound sound(rates[number]);
            sound.EmbedInto(frame, number);
            const Bytes samples =
                sound.Samples(sound.FirstOfFrame(number, true), rates[number] / 25);
            expected.insert(expected.end(), samples.begin(), samples.end());
        });
        EXPECT_EQ(rates, run.rates);
        EXPECT_TRUE(expected == run.heard) << testing::PrintToString(rates);
    }
}

TEST(AudioTransfer, AStreamShorterOrLongerThanThePicturesEndsWithThem)
{
    const SampleSound sound(48000);
    for (const uint64_t seconds : {3, 8, 20})
        for (const bool separate : {false, true})
            for (const uint32_t chunk : {1000u, 192000u}) {
                SCOPED_TRACE(testing::PrintToString(std::tuple(seconds, separate, chunk)));
                MadeUpStream stream(sound.Samples(0, seconds * 48000), {chunk});
                SoundLoop run(true, false, separate);
                run.stream = &stream;
                run.Go(200);
                run.ExpectLength(48000, 0.034);
                run.ExpectBegin(sound.Samples(0, std::min<uint64_t>(seconds, 8) * 48000 - 1602));
                EXPECT_TRUE(seconds >= 8 || run.Got().back() == 0) << "silence, not repetition";
            }
}

TEST(AudioTransfer, MonoIsHeardOnBothChannelsOfAFrame)
{
    const Bytes mono = SampleSound(48000).Samples(0, 48000);  // two seconds as mono
    MadeUpStream stream(mono, {4000});
    SoundLoop run(true, true);
    run.stream = &stream;
    run.channels = 1;
    run.Go(20);
    ASSERT_EQ(20 * 7680u, run.heard.size());
    for (size_t i = 0; i < run.heard.size(); i++)
        ASSERT_EQ(mono[i / 4 * 2 + i % 2], run.heard[i]) << i;
}

TEST(AudioTransfer, SoundThatGoesNowhereIsNotLost)
{
    AudioSetup setup;
    setup.source_is_pal = setup.destination_is_pal = setup.source_is_dv = setup.nowhere = true;
    AudioTransfer transfer(setup);
    Bytes frame(144000, 0xFF);
    frame[3] = 0xBF;
    Embed(frame, Bytes(7680, 1));
    for (int i = 0; i < 500; i++)  // more than the ring of sound can hold
        ASSERT_TRUE(transfer.FrameRead(frame));
    EXPECT_EQ(0, transfer.UnreadSeconds());
    EXPECT_EQ(0, transfer.SecondsLeftOver());
}

TEST(AudioTransfer, NoChannelsAndTooManyAreRefused)
{
    MadeUpStream stream(Bytes(1000), {100});
    AudioTransfer transfer(AudioSetup{});
    for (const auto& [channels, taken] : {std::pair(0u, false), {17u, false}, {16u, true}})
        EXPECT_EQ(taken, bool(transfer.SetSourceStream(stream, SampleCoding{}, 48000, channels)));
}

TEST(AudioTransfer, ACompanionTakesTheFramesPlace)
{
    const SampleSound sound(44100), inside(48000);
    const TempFolder folder;
    WriteSound(folder.Path("clip_1.wav"), {kSamplePCM, 2, 16, 44100}, sound.Samples(0, 44100 * 8));
    for (const bool separate : {false, true})
        for (const int32_t interleave : {0, 1, 30}) {
            SCOPED_TRACE(interleave);
            SoundLoop run(true, false, separate);
            run.setup.companions = true;
            run.setup.interleave = interleave;
            run.setup.source_path = folder.Path("clip.dv");
            run.Go(200, [&](Bytes& frame, uint64_t number) { inside.EmbedInto(frame, number); });
            run.ExpectBegin(sound.Samples(0, 44100 * 8 - 1800));
            const double chunks = !separate          ? 0
                                  : interleave == 30 ? 8
                                                     : 240;  // one more at the end
            EXPECT_NEAR(chunks, double(run.track.sizes.size()), 2);
        }
}

TEST(AudioTransfer, ACompanionThatIsLongerEndsWithTheFilm)
{
    const TempFolder folder;
    WriteSound(folder.Path("clip_1.wav"), {kSamplePCM, 2, 16, 48000},
               SampleSound(48000).Samples(0, 48000 * 3));
    for (const int32_t interleave : {1, 7}) {
        SoundLoop run(true, true, true);
        run.setup.companions = true;
        run.setup.interleave = interleave;
        run.setup.source_path = folder.Path("clip.dv");
        run.Go(50);
        EXPECT_EQ(50u * 1920, run.track.samples.size() / 4);
    }
}

}  // namespace
}  // namespace kelvane
