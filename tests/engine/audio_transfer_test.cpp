// Sound through a whole conversion with made-up frames: no pictures, no files.

#include "engine/audio_transfer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "support/clip_maker/sample_sound.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Blank(bool pal)
{
    Bytes frame(pal ? 144000 : 120000, 0xFF);
    frame[3] = pal ? 0xBF : 0x3F;
    return frame;
}

// Takes the sound away, but not its samples.
void ErasePacks(Bytes& frame)
{
    for (size_t sequence = 0; sequence * kDIFSequenceSize < frame.size(); sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            frame[AudioBlockAt(sequence, block) + kAudioPackAt] = 0xFF;
}

struct Track : AudioTrack {
    void SetFormat(uint32_t r, uint32_t c) override
    {
        EXPECT_EQ(0u, rate) << "once";
        rate = r, channels = c;
    }
    int WriteChunk(std::span<const uint8_t> chunk) override
    {
        EXPECT_NE(0u, rate) << "the format comes first";
        chunks++;
        samples.insert(samples.end(), chunk.begin(), chunk.end());
        return 0;
    }
    uint32_t rate = 0, channels = 0;
    size_t chunks = 0;
    Bytes samples;
};

// The frame loop around the sound: reads source frames into a ring of four, writes output frames
// in their own time, and gathers what is heard.
struct SoundLoop {
    explicit SoundLoop(bool source_pal, bool destination_pal, bool separate = false)
    {
        setup.source_is_pal = source_pal;
        setup.destination_is_pal = destination_pal;
        setup.source_is_dv = true;
        setup.separate_track = separate;
        setup.interleave = 5;
    }

    // `make` gives source frame n its sound; it has none before.
    void Go(uint64_t frames, const std::function<void(Bytes&, uint64_t)>& make,
            const std::function<void(AudioTransfer&)>& prepare = {})
    {
        AudioTransfer transfer(setup);
        if (prepare) prepare(transfer);
        const double step = setup.source_is_pal == setup.destination_is_pal ? 1.0
                            : setup.source_is_pal                           ? 25 / 29.97
                                                                            : 1.1988;
        Bytes frame = Blank(setup.source_is_pal), output = Blank(setup.destination_is_pal);
        double position = 0;
        uint64_t read = 0, number = 0;
        for (uint64_t due = 3;; number++, position += step,
                      due = 3 + static_cast<uint64_t>(std::floor(position + 0.00001))) {
            for (; read < due; read++) {
                if (read >= frames) continue;
                frame[3] = setup.source_is_pal ? 0xBF : 0x3F;
                ErasePacks(frame);
                make(frame, read);
                ASSERT_EQ(0, transfer.FrameRead(frame));
            }
            read_status = transfer.TurnRead();
            if (read - 3 >= frames) break;
            if (rate_status = transfer.CheckRate(); rate_status != 0) break;
            shown.push_back(read - 3);
            ErasePacks(output);
            transfer.EmbedInto(output, number);
            if (!setup.separate_track) Hear(output);
            ASSERT_EQ(0, transfer.FrameWritten(number, track));
        }
        EXPECT_EQ(0, transfer.Finish(track));
        message = transfer.Message();
    }

    void Hear(Bytes& output)
    {
        DIFFrame frame(output.data(), static_cast<uint32_t>(output.size()));
        AudioInfo info;
        rates.push_back(frame.GetAudioInfo(info) ? info.sample_rate : 0);
        Bytes sound(7776);
        sound.resize(frame.ExtractAudio(sound, 3));
        first_sample.push_back(heard.size() / 4);
        heard.insert(heard.end(), sound.begin(), sound.end());
    }

    // The output frame in which a sample of what was heard lies.
    size_t FrameOf(uint64_t sample) const
    {
        return static_cast<size_t>(
            std::upper_bound(first_sample.begin(), first_sample.end(), sample) -
            first_sample.begin() - 1);
    }

    AudioSetup setup;
    Track track;
    Bytes heard;                         // in all output frames
    std::vector<uint64_t> first_sample;  // of each output frame within it
    std::vector<uint64_t> shown;         // source frame behind each output frame
    std::vector<uint32_t> rates;         // in each output frame; 0 without sound
    int read_status = 0, rate_status = 0;
    std::string message;
};

void EmbedTone(const SampleSound& sound, Bytes& frame, uint64_t number)
{
    sound.EmbedInto(frame, number);
}

// The source frame that holds the first sample of a second.
uint64_t FrameOfSecond(const SampleSound& sound, uint64_t second, bool pal)
{
    uint64_t frame = second * (pal ? 25 : 2997) / (pal ? 1 : 100);
    while (sound.FirstOfFrame(frame + 1, pal) <= second * sound.Rate())
        frame++;
    return frame;
}

// That every click is heard with its picture, to a frame, and no click is missing.
void ExpectInStep(const SoundLoop& run, const SampleSound& sound, uint64_t seconds)
{
    const bool separate = run.setup.separate_track;
    const Bytes& samples = separate ? run.track.samples : run.heard;
    const std::vector<uint64_t> clicks = FindClicks(samples, 2);
    ASSERT_EQ(seconds, clicks.size());
    for (uint64_t second = 0; second < seconds; second++) {
        const uint64_t at = clicks[second];
        const double fps = run.setup.destination_is_pal ? 25.0 : 30 / 1.001;
        const auto frame = separate
                               ? static_cast<size_t>(static_cast<double>(at) / sound.Rate() * fps)
                               : run.FrameOf(at);
        const auto shown =
            static_cast<int64_t>(run.shown.at(std::min(frame, run.shown.size() - 1)));
        const uint64_t source = FrameOfSecond(sound, second, run.setup.source_is_pal);
        ASSERT_LE(std::abs(shown - static_cast<int64_t>(source)), 1) << "second " << second;
    }
}

TEST(AudioTransfer, StaysInStepAtEveryRateInEveryDirection)
{
    constexpr uint64_t kSeconds = 10;
    for (const uint32_t rate : {32000u, 44100u, 48000u}) {
        const SampleSound sound(rate);
        for (const auto& [from, to, separate] :
             {std::tuple(true, true, false), std::tuple(true, false, false),
              std::tuple(false, true, false), std::tuple(false, false, false),
              std::tuple(true, false, true), std::tuple(false, true, true)}) {
            SCOPED_TRACE(std::to_string(rate) + (from ? " PAL" : " NTSC") +
                         (to ? " PAL" : " NTSC") + (separate ? " track" : ""));
            SoundLoop run(from, to, separate);
            const uint64_t frames = from ? kSeconds * 25 : kSeconds * 2997 / 100;
            run.Go(frames, [&](Bytes& f, uint64_t n) { EmbedTone(sound, f, n); });
            ExpectInStep(run, sound, kSeconds);
            // All of the source's sound, sample for sample, and not more than a frame beside it.
            const uint64_t all = sound.FirstOfFrame(frames, from);
            const Bytes expected = sound.Samples(0, static_cast<size_t>(all - rate / 25));
            const Bytes& got = separate ? run.track.samples : run.heard;
            ASSERT_GE(got.size(), expected.size());
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.begin()));
            EXPECT_NEAR(static_cast<double>(all), static_cast<double>(got.size() / 4), rate / 25.0);
        }
    }
}

TEST(AudioTransfer, StaysInStepOverTenMinutesThereAndBack)
{
    // Only the seconds' first frames have a click worth making; the others are silent.
    constexpr uint64_t kSeconds = 600;
    const SampleSound sound(48000);
    const Bytes quiet(7680);
    for (const bool separate : {false, true}) {
        SoundLoop there(true, false, separate);
        there.Go(kSeconds * 25, [&](Bytes& frame, uint64_t number) {
            if (number % 25 == 0) return EmbedTone(sound, frame, number);
            DIFFrame(frame.data(), static_cast<uint32_t>(frame.size())).EmbedAudio(quiet, 48000, 2);
        });
        ExpectInStep(there, sound, kSeconds);
        const Bytes& got = separate ? there.track.samples : there.heard;
        EXPECT_NEAR(kSeconds * 48000.0, static_cast<double>(got.size() / 4), 1602.0);
        if (separate) continue;
        SoundLoop back(false, true);
        back.Go(there.shown.size(), [&](Bytes& frame, uint64_t number) {
            const size_t at = there.first_sample[number] * 4;
            const size_t end = number + 1 < there.first_sample.size()
                                   ? there.first_sample[number + 1] * 4
                                   : there.heard.size();
            DIFFrame view(frame.data(), static_cast<uint32_t>(frame.size()));
            view.EmbedAudio(std::span(there.heard).subspan(at, end - at), 48000, 2);
        });
        ExpectInStep(back, sound, kSeconds);
        EXPECT_NEAR(kSeconds * 48000.0, static_cast<double>(back.heard.size() / 4),
                    1920.0 + 1602.0);
    }
}

TEST(AudioTransfer, APALCopyHasTheSameSamplesInTheSameFrames)
{
    const SampleSound sound(48000);
    SoundLoop run(true, true);
    run.Go(60, [&](Bytes& frame, uint64_t number) { EmbedTone(sound, frame, number); });
    EXPECT_TRUE(sound.Samples(0, 60 * 1920) == run.heard);
    for (size_t i = 0; i < 60; i++)
        EXPECT_EQ(1920 * i, run.first_sample[i]);
}

// Source frames that are damaged in ways of their own, every one with the sound of its number
// otherwise. What is lost is silent; the rest stays in step.
TEST(AudioTransfer, StaysInStepWhateverFramesLack)
{
    const auto set_pack = [](Bytes& frame, size_t pc, uint8_t value) {
        for (size_t sequence = 0; sequence * 12000 < frame.size(); sequence++)
            for (size_t block = 0; block < 9; block++)
                if (frame[AudioBlockAt(sequence, block) + 3] == 0x50)
                    frame[AudioBlockAt(sequence, block) + 3 + pc] = value;
    };
    struct Row {
        const char* what;
        std::function<void(Bytes&)> damage;
    };
    const Row rows[] = {
        {"no audio pack", ErasePacks},
        {"a header that says nothing", [](Bytes& frame) { frame[3] = 0, ErasePacks(frame); }},
        {"a rate that is not known", [&](Bytes& frame) { set_pack(frame, 4, 0x18); }},
        {"more samples than there are places", [&](Bytes& frame) { set_pack(frame, 1, 0xFF); }},
        {"the other system's samples",
         [&](Bytes& frame) { set_pack(frame, 3, frame.size() == 144000 ? 0xC0 : 0xE0); }},
    };
    constexpr uint64_t kSeconds = 12;
    for (const Row& row : rows) {
        for (const uint32_t rate : {48000u, 32000u}) {
            const SampleSound sound(rate, rate == 32000 ? 4 : 2);
            for (const auto& [pal, separate, first, last] :
                 {std::tuple(true, false, 30, 240), std::tuple(false, false, 40, 290),
                  std::tuple(false, true, 40, 290), std::tuple(true, false, 0, 0)}) {
                SCOPED_TRACE(std::string(row.what) + " " + std::to_string(rate) +
                             (pal ? " PAL" : " NTSC") + (separate ? " track" : ""));
                SoundLoop run(pal, pal, separate);
                run.Go(kSeconds * (pal ? 25 : 30) - 1, [&](Bytes& frame, uint64_t number) {
                    EmbedTone(sound, frame, number);
                    const auto n = static_cast<int>(number);
                    if (n >= first && n <= last && n % 25 != 0) row.damage(frame);
                    if (n >= first && n <= last && n % 25 == 0) ErasePacks(frame);
                });
                const Bytes& got = separate ? run.track.samples : run.heard;
                const std::vector<uint64_t> clicks = FindClicks(got, 2);
                ASSERT_FALSE(clicks.empty());
                const double seconds = static_cast<double>(clicks.back()) / rate;
                EXPECT_NEAR(kSeconds - 1.0, seconds, 0.04);
                EXPECT_NEAR(static_cast<double>(run.shown.size()) / (pal ? 25.0 : 30 / 1.001),
                            static_cast<double>(got.size() / 4) / rate, 0.04);
            }
        }
    }
}

TEST(AudioTransfer, SoundThatBeginsLateIsInStepAndFramesBeforeItAreLeftAlone)
{
    for (const uint32_t rate : {48000u, 44100u}) {
        const SampleSound sound(rate);
        for (const auto& [from, to, separate] :
             {std::tuple(true, true, false), std::tuple(true, false, false),
              std::tuple(true, false, true), std::tuple(false, false, true)}) {
            SCOPED_TRACE(std::to_string(rate) + (from ? " PAL" : " NTSC") +
                         (to ? " PAL" : " NTSC") + (separate ? " track" : ""));
            SoundLoop run(from, to, separate);
            const uint64_t frames = from ? 500 : 600;
            run.Go(frames, [&](Bytes& frame, uint64_t number) {
                if (number >= 110) EmbedTone(sound, frame, number);
            });
            if (!separate) {
                EXPECT_EQ(0u, run.rates[100]) << "nothing is embedded before";
                const std::vector<uint64_t> clicks = FindClicks(run.heard, 2);
                ASSERT_FALSE(clicks.empty());
                const auto shown = static_cast<int64_t>(run.shown[run.FrameOf(clicks[0])]);
                EXPECT_LE(std::abs(shown - 125), 1);
            } else {
                EXPECT_EQ(rate, run.track.rate);
                const std::vector<uint64_t> clicks = FindClicks(run.track.samples, 2);
                ASSERT_FALSE(clicks.empty());
                EXPECT_NEAR(from ? 5.0 : 4.0, static_cast<double>(clicks[0]) / rate, 0.04);
            }
        }
    }
}

TEST(AudioTransfer, ATrackWithoutAnySoundIsSilentAndAsLongAsThePictures)
{
    SoundLoop run(true, true, true);
    run.Go(300, [](Bytes&, uint64_t) {});
    EXPECT_EQ(48000u, run.track.rate);
    EXPECT_EQ(2u, run.track.channels);
    EXPECT_EQ(Bytes(300 * 7680, 0), run.track.samples);
    SoundLoop shorter(true, true, true);
    shorter.Go(20, [](Bytes&, uint64_t) {});
    EXPECT_EQ(Bytes(20 * 7680, 0), shorter.track.samples);
    SoundLoop frames(true, true);
    frames.Go(20, [](Bytes&, uint64_t) {});
    EXPECT_TRUE(frames.heard.empty()) << "frames stay as they are";
}

TEST(AudioTransfer, AChangeOfRateIsFollowedInFramesAndSilentInATrack)
{
    const SampleSound before(48000), after(32000);
    for (const auto& [from, to] : {std::pair(true, true), std::pair(true, false),
                                   std::pair(false, false), std::pair(false, true)}) {
        SCOPED_TRACE(std::string(from ? "PAL" : "NTSC") + (to ? " PAL" : " NTSC"));
        const auto tape = [&](Bytes& frame, uint64_t number) {
            EmbedTone(number / 130 % 2 == 0 ? before : after, frame, number);
        };
        SoundLoop run(from, to);
        run.Go(1000, tape);
        EXPECT_EQ(48000u, run.rates.front());
        EXPECT_EQ(32000u, run.rates.back());
        size_t clicks = 0;
        bool clicked = false;  // in the frame before, and perhaps into this one
        for (size_t i = 0; i + 1 < run.rates.size(); i++) {
            const size_t at = run.first_sample[i] * 4, end = run.first_sample[i + 1] * 4;
            const auto found = FindClicks(std::span(run.heard).subspan(at, end - at), 2);
            if (!found.empty() && !(clicked && found[0] == 0)) {
                clicks++;
                const double second =
                    static_cast<double>(run.shown[i]) / (from ? 25.0 : 30 / 1.001);
                EXPECT_NEAR(std::round(second), second, 0.09) << "output frame " << i;
            }
            clicked = !found.empty();
        }
        EXPECT_NEAR(1000 / (from ? 25.0 : 30.0), static_cast<double>(clicks), 1.0);

        SoundLoop track(from, to, true);
        track.Go(1000, tape);
        EXPECT_EQ(48000u, track.track.rate);
        EXPECT_NEAR(1000 / (from ? 25.0 : 30 / 1.001),
                    static_cast<double>(track.track.samples.size()) / 4 / 48000, 0.04);
        for (const uint64_t click : FindClicks(track.track.samples, 2))
            EXPECT_LE(std::min(click % 48000, 48000 - click % 48000), 1920u) << click;
    }
}

// A stream of samples in chunks of an awkward size.
class Sound : public AudioStream {
public:
    Sound(Bytes samples, uint32_t chunk) : fSamples(std::move(samples)), fChunk(chunk) {}
    uint32_t ChunkSize() override { return fChunk; }
    int ReadChunk(uint8_t* buffer, uint32_t, uint32_t& bytes) override
    {
        if (fAt == fSamples.size()) return -1;
        bytes = static_cast<uint32_t>(std::min<size_t>(fChunk, fSamples.size() - fAt));
        std::copy_n(fSamples.begin() + static_cast<ptrdiff_t>(fAt), bytes, buffer);
        fAt += bytes;
        return 0;
    }

private:
    Bytes fSamples;
    uint32_t fChunk;
    size_t fAt = 0;
};

TEST(AudioTransfer, AStreamShorterOrLongerThanThePicturesEndsWithThem)
{
    const SampleSound sound(48000);
    for (const uint64_t seconds : {3, 8, 20}) {
        for (const bool separate : {false, true}) {
            for (const uint32_t chunk : {1000u, 192000u}) {
                SCOPED_TRACE(std::to_string(seconds) + (separate ? " track " : " ") +
                             std::to_string(chunk));
                Sound stream(sound.Samples(0, seconds * 48000), chunk);
                SoundLoop run(true, false, separate);
                run.Go(
                    200, [](Bytes&, uint64_t) {},
                    [&](AudioTransfer& transfer) {
                        EXPECT_EQ(0, transfer.SetSourceStream(stream, SampleCoding{}, 48000, 2));
                    });
                const Bytes& got = separate ? run.track.samples : run.heard;
                EXPECT_NEAR(static_cast<double>(run.shown.size()) * 1001 / 30000,
                            static_cast<double>(got.size()) / 4 / 48000, 0.034);
                Bytes expected = sound.Samples(0, std::min<uint64_t>(seconds, 8) * 48000 - 1602);
                EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.begin()));
                if (seconds < 8) {
                    EXPECT_EQ(0, got.back()) << "silence, not repetition";
                }
            }
        }
    }
}

TEST(AudioTransfer, MonoIsHeardOnBothChannelsOfAFrame)
{
    const Bytes mono = SampleSound(48000).Samples(0, 48000);  // two seconds as mono
    Sound stream(mono, 4000);
    SoundLoop run(true, true);
    run.Go(
        20, [](Bytes&, uint64_t) {},
        [&](AudioTransfer& transfer) {
            EXPECT_EQ(0, transfer.SetSourceStream(stream, SampleCoding{}, 48000, 1));
        });
    ASSERT_EQ(20 * 7680u, run.heard.size());
    for (size_t i = 0; i < run.heard.size(); i += 4) {
        ASSERT_EQ(0, memcmp(&run.heard[i], &mono[i / 2], 2));
        ASSERT_EQ(0, memcmp(&run.heard[i + 2], &mono[i / 2], 2));
    }
}

TEST(AudioTransfer, RatesAndCodingsThatCannotBeMovedAreRefusedWithWords)
{
    Sound stream(Bytes(1000), 100);
    AudioTransfer transfer(AudioSetup{});
    EXPECT_EQ(-1, transfer.SetSourceStream(stream, SampleCoding{}, 22050, 2));
    EXPECT_EQ("Wrong sample rate in input audio stream (22050 Hz)!", transfer.Message());
    EXPECT_EQ(-1, transfer.SetSourceStream(stream, {.bits = 4}, 48000, 0));
    EXPECT_EQ(-1, transfer.SetSourceStream(stream, {.bits = 16, .is_float = true}, 48000, 2));
    EXPECT_FALSE(transfer.Message().empty());

    const TempFolder folder;
    {
        AudioFile file(folder.Path("clip.wav").c_str(), kCreate, kWAVFileType);
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 2, 16, 22050}));
        ASSERT_EQ(0, file.Write(Bytes(4000).data(), 1000));
    }
    SoundLoop run(true, true);
    run.setup.companions = true;
    run.setup.source_path = folder.Path("clip.dv");
    run.Go(20, [](Bytes&, uint64_t) {});
    EXPECT_EQ(-13, run.rate_status);
    EXPECT_EQ("Wrong sample rate in input audio stream (22050 Hz)!", run.message);
}

TEST(AudioTransfer, ACompanionTakesTheFramesPlace)
{
    const SampleSound sound(44100), inside(48000);
    const TempFolder folder;
    {
        AudioFile file(folder.Path("clip_1.wav").c_str(), kCreate, kWAVFileType);
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 2, 16, 44100}));
        ASSERT_EQ(0, file.Write(sound.Samples(0, 44100 * 8).data(), 44100 * 8));
    }
    for (const bool separate : {false, true}) {
        for (const int32_t interleave : {0, 1, 30}) {
            SoundLoop run(true, false, separate);
            run.setup.companions = true;
            run.setup.interleave = interleave;
            run.setup.source_path = folder.Path("clip.dv");
            run.Go(200, [&](Bytes& frame, uint64_t number) { EmbedTone(inside, frame, number); });
            const Bytes expected = sound.Samples(0, 44100 * 8 - 1800);
            const Bytes& got = separate ? run.track.samples : run.heard;
            ASSERT_GE(got.size(), expected.size());
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.begin()))
                << separate << " " << interleave;
            const size_t chunks = interleave == 30 ? 8u : 240u;  // one more at the end
            if (separate) {
                EXPECT_NEAR(chunks, run.track.chunks, 2) << interleave;
            }
        }
    }
}

}  // namespace
}  // namespace kelvane
