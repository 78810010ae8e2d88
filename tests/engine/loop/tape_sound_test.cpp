// What becomes of the sound in a tape's frames, from file to file.

#include <gmock/gmock.h>

#include "dv/audio_blocks.h"
#include "dv/dif_layout.h"
#include "engine/loop/conversion_case.h"
#include "engine/sound/made_up_sound.h"
#include "support/qt_builder.h"
#include "support/riff.h"

namespace kelvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

// Of all frames of a tape, interleaved.
Bytes SoundOf(Film& film, uint32_t mask)
{
    Bytes all, some(15552);
    for (Bytes& frame : film.frames) {
        some.resize(15552);
        some.resize(View(frame).ExtractAudio(some, mask));
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

// The audio blocks of a frame's second half, or of all of it, and nothing else.
Bytes AudioBlocks(const Bytes& frame, AudioHalf half)
{
    Bytes blocks(frame.size());
    CopyAudioBlocks(frame, blocks, half);
    return blocks;
}

class TapeSound : public ConversionCase {
protected:
    std::string FourChannels(bool pal)
    {
        return MakeClip(pal ? "four-pal.dv" : "four-ntsc.dv", 20,
                        {.pal = pal, .rate = 32000, .channels = 4});
    }
    // An AVI of a clip in which the frame of this number holds the one before.
    std::string HeldFilm(const std::string& clip, uint64_t held)
    {
        const RiffFilm film(Converted(clip, "held.avi", "avi1-odml"));
        constexpr uint64_t kHead = 8 + 24, kEntry = 8, kSizeAt = 4;
        std::string bytes = film.bytes;
        bytes.replace(film.Find("ix00").head + kHead + held * kEntry + kSizeAt, 4,
                      Little(0x80000000, 4));
        return fFolder.Write("held.avi", AsBytes(bytes));
    }
    void Take(ChannelChoice choice)
    {
        fAdjust = [choice](ConversionSettings& settings) { settings.channels = choice; };
    }
};

TEST_F(TapeSound, FourChannelsStayInFramesOfTheSameStandard)
{
    for (const bool pal : {true, false}) {
        const std::string tape = FourChannels(pal);
        Film before(tape);
        for (const int32_t kind : {0, 2}) {  // copied, and coded anew
            SCOPED_TRACE(kind);
            fOptions.dataconv = kind;
            Film after(Converted(tape, "out.dv", "dv"));
            ASSERT_EQ(20u, after.frames.size());
            for (size_t i = 0; i < 20; i++)
                EXPECT_TRUE(AudioBlocks(before.frames[i], AudioHalf::kSecond) ==
                            AudioBlocks(after.frames[i], AudioHalf::kSecond));
            EXPECT_THAT(fResult.warnings, ElementsAre());
            const Bytes was = SoundOf(before, 3), is = SoundOf(after, 3);
            EXPECT_TRUE(std::equal(was.begin(), was.end() - 8000, is.begin()));
            AudioInfo info;
            EXPECT_TRUE(View(after.frames[5]).GetAudioInfo(info));
            EXPECT_EQ(4u, info.channels);
        }
        fOptions.dataconv = 0;
    }
}

TEST_F(TapeSound, ChannelsAreChosen)
{
    const std::string tape = FourChannels(true);
    Film before(tape);
    const Bytes all = SoundOf(before, 15), first = SoundOf(before, 3), second = SoundOf(before, 12);
    Bytes mixed = first;
    for (size_t i = 0; i < mixed.size(); i += 2) {
        const int a = int16_t(first[i] | first[i + 1] << 8);
        const int b = int16_t(second[i] | second[i + 1] << 8);
        mixed[i] = uint8_t((a + b) >> 1), mixed[i + 1] = uint8_t((a + b) >> 9);
    }
    const struct {
        ChannelChoice choice;
        const Bytes& sound;
        bool warned;
    } rows[] = {
        {ChannelChoice::kAuto, first, true},    {ChannelChoice::k1And2, first, false},
        {ChannelChoice::k3And4, second, false}, {ChannelChoice::kMix, mixed, false},
        {ChannelChoice::kAll, all, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.choice));
        Take(row.choice);
        const Film track(Converted(tape, "out.avi", "avi2"));
        EXPECT_TRUE(row.sound == track.track);
        EXPECT_EQ(row.warned, !fResult.warnings.empty());
        EXPECT_EQ(row.choice == ChannelChoice::kAll ? 4 : 2,
                  track.source->audio_format.raw_audio.ch);
        if (row.choice == ChannelChoice::kAuto || row.choice == ChannelChoice::kAll) continue;
        Film frames(Converted(tape, "out.dv", "dv"));
        EXPECT_TRUE(row.sound == SoundOf(frames, 3));
    }
    // Into frames of another standard.
    fOptions.opselection = kOperationToNTSC;
    Take(ChannelChoice::kAll);
    Choose("dv");
    EXPECT_NE(0, Convert(tape, fFolder.Path("ntsc.dv")));
    EXPECT_THAT(fResult.message, HasSubstr("can't take all four channels"));
    Take(ChannelChoice::kAuto);
    Film ntsc(Converted(tape, "ntsc.dv", "dv"));
    EXPECT_THAT(fResult.warnings, Contains(HasSubstr("Channels 3 and 4")));
    EXPECT_TRUE(std::equal(first.begin(), first.end() - 8000, SoundOf(ntsc, 3).begin()));
}

TEST_F(TapeSound, IsUntouchedBitForBitWhereThatIsAskedFor)
{
    fAdjust = [](ConversionSettings& settings) { settings.sound_untouched = true; };
    for (const bool pal : {true, false})
        for (const uint32_t channels : {2u, 4u}) {
            SCOPED_TRACE(channels);
            Film before(MakeClip("tape.dv", 12, {.pal = pal, .rate = 32000, .channels = channels}));
            // Sound that does not come back from an embedding: lost samples, another time stamp.
            Bytes odd;
            for (Bytes& frame : before.frames) {
                frame[AudioBlockAt(1, 2) + 20] = 0x80, frame[AudioBlockAt(1, 2) + 21] = 0;
                frame[AudioBlockAt(0, 5) + 5] = 0x12;
                odd = Join({odd, frame});
            }
            const std::string tape = fFolder.Write("odd.dv", odd);
            for (const char* format : {"dv", "avi1", "mov"}) {
                const Film after(Converted(tape, "out", format));
                EXPECT_TRUE(before.frames == after.frames) << format;
            }
            fOptions.dataconv = 2;
            const Film anew(Converted(tape, "out", "dv"));
            fOptions.dataconv = 0;
            for (size_t i = 0; i < 12; i++)
                EXPECT_TRUE(AudioBlocks(before.frames[i], AudioHalf::kBoth) ==
                            AudioBlocks(anew.frames[i], AudioHalf::kBoth));
        }
    WriteSound(fFolder.Path("odd.wav"), {kSamplePCM, 2, 16, 48000}, Bytes(48000));
    Converted(fFolder.Path("odd.dv"), "out.dv", "dv");
    EXPECT_THAT(fResult.warnings,
                ElementsAre("The frames keep their own sound; odd.wav is left out."));
}

// A frame that stands for one that the disk does not give has no sound of its own.
TEST_F(TapeSound, AFrameThatIsRepeatedIsSilent)
{
    const std::string clip = MakeClip("held.dv", 6, {.rate = 32000, .channels = 4});
    const std::string held = HeldFilm(clip, 3);
    for (const bool untouched : {true, false}) {
        fAdjust = [untouched](ConversionSettings& settings) {
            settings.sound_untouched = untouched;
        };
        Film after(Converted(held, "out.dv", "dv"));
        ASSERT_EQ(6u, after.frames.size());
        const Bytes second = SoundOf(after, 12), first = SoundOf(after, 3);
        const size_t frame = 1280 * 4;
        for (size_t i = 0; i < 6; i++) {
            const auto silent = [&](const Bytes& sound) {
                return std::all_of(&sound[i * frame], &sound[i * frame] + frame,
                                   [](uint8_t byte) { return byte == 0; });
            };
            EXPECT_EQ(i == 3, silent(second)) << i;
            EXPECT_EQ(i == 3, silent(first)) << i;
        }
    }
}

TEST_F(TapeSound, LostSamplesAreBridgedOnTheWayToATrackOnly)
{
    Film tape(MakeClip("tape.dv", 6, {}));
    const Bytes whole = SoundOf(tape, 3);
    Bytes damaged;
    for (Bytes& frame : tape.frames) {
        Bytes sound(7680);
        View(frame).ExtractAudio(sound, 3);
        for (size_t i = 400; i < 500; i++)
            if (i % 3) sound[i * 4] = 0, sound[i * 4 + 1] = 0x80;
        View(frame).EmbedAudio(sound, 48000, 2);
        damaged = Join({damaged, frame});
    }
    const std::string path = fFolder.Write("lost.dv", damaged);
    const Film track(Converted(path, "out.avi", "avi2"));
    int most = 0;
    for (size_t i = 0; i < whole.size(); i += 2)
        most = std::max(most, std::abs(int16_t(whole[i] | whole[i + 1] << 8) -
                                       int16_t(track.track[i] | track.track[i + 1] << 8)));
    EXPECT_LE(most, 1500);
    Film copy(Converted(path, "out.dv", "dv"));
    EXPECT_TRUE(SoundOf(copy, 3) != whole) << "what is lost stays marked";
}

}  // namespace
}  // namespace kelvane
