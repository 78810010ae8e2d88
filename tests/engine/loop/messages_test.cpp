// What a conversion says of files, settings and codecs that will not do, and what it leaves behind.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "base/four_cc.h"
#include "base/status.h"
#include "engine/loop/messages_case.h"
#include "engine/sound/made_up_sound.h"
#include "support/qt_builder.h"
#include "support/riff.h"

namespace kelvane {
namespace {

Bytes BytesOf(const std::string& text)
{
    return Bytes(text.begin(), text.end());
}

Bytes Movie(const char* format, bool video = true, uint32_t depth = 24)
{
    QTTestTrack track;
    track.video = video;
    track.format = format;
    track.depth = depth;
    track.stco = QTTable({8, 16});
    return Join(
        {QTAtom("mdat", {QTTinyMedia()}), QTAtom("moov", {QTMovieHeader(), track.Build()})});
}

constexpr char kCannotCreate[] = "Could not create destination file.";
constexpr char kReadError[] = "Error reading source file (video) !";
constexpr char kWriteError[] = "Write error in destination file (video track)!";

std::string ConversionOptions::*const kRoles[] = {
    &ConversionOptions::DVencoder, &ConversionOptions::DVdecoder, &ConversionOptions::DVCPROencoder,
    &ConversionOptions::DVCPROdecoder};

TEST_F(Messages, SourcesThatAreNone)
{
    const auto avi = [](const char* type, const char* handler) {
        TinyAVI file;
        file.type = type;
        file.handler = handler;
        return BytesOf(file.Build());
    };
    // An empty list; no list of streams at all; a head and 1000 bytes.
    const Bytes corrupted = BytesOf(RiffList("AVI ", {"LIST" + Little(0, 4) + "hdrl"}, "RIFF"));
    const Bytes streamless = BytesOf(
        RiffList("AVI ", {RiffList("hdrl", {RiffChunk("avih", std::string(56, '\0'))})}, "RIFF"));
    const Bytes headless = QTAtom("mdat", {Bytes(992)});
    const std::string none = "Source contains no video streams.";
    const std::string other = "Source is not DV or uncompressed AVI.";
    const std::string unknown = "Source is not recognized as AVI/QuickTime/Raw DV/ES-3 DV.";
    const std::tuple<const char*, Bytes, std::string> rows[] = {
        {"corrupted AVI", corrupted, "AVI parsing error, corrupted file"},
        {"AVI without streams", streamless, none},
        {"AVI of sound", avi("auds", "\0\0\0\0"), none},
        {"AVI of another codec", avi("vids", "MJPG"), other},
        {"interleaved, not DV", avi("iavs", "MJPG"), other},
        {"interleaved, raw", avi("iavs", "YUY2"), other},
        {"movie without a head", headless, "Quicktime open error"},
        {"movie of sound", Movie("twos", false), "Cannot find video stream in QuickTime movie."},
        {"movie of another codec", Movie("jpeg"), "Source is not a DV QuickTime."},
        {"HuffYUV in a movie", Movie("HFYU"), "Cannot find video stream in QuickTime movie."},
        {"text", Bytes(2000, 'a'), unknown},
        {"999 bytes", Bytes(999, 0x1F), unknown},
    };
    for (const auto& [what, file, message] : rows) {
        SCOPED_TRACE(what);
        Expect(-1, message, fFolder.Write("bad", file));
        EXPECT_FALSE(std::filesystem::exists(fFolder.Path("destination")));
    }
    const std::string fifo = fFolder.Path("fifo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    const std::string wav = fFolder.Path("sound.wav"), aiff = fFolder.Path("sound.aif");
    for (const std::string& sound : {wav, aiff})
        WriteSound(sound, {kSamplePCM, 2, 16, 48000}, Bytes(4000));
    for (const std::string& path : {wav, aiff, fFolder.Write("empty", {})})
        Expect(-1, unknown, path);
    Expect(-1, unknown + " (No such file or directory)", fFolder.Path("missing"));
    Expect(-1, unknown + " (Is a directory)", fFolder.Root().string());
    for (const std::string& path : {fifo, std::string("/dev/zero")})
        Expect(-1, unknown + " (Invalid argument)", path);
}

TEST_F(Messages, PicturesThatNoCodecReads)
{
    const std::string none = "No suitable decoder is found.";
    for (const char* handler : {"YV12", "YVYU", "HFYU"}) {
        TinyAVI file;
        file.handler = handler;
        Expect(-1, none, fFolder.Write("bad.avi", BytesOf(file.Build())));
    }
    Expect(-1, none, fFolder.Write("bad.mov", Movie("rle ", true, 16)));
    Choose("mov", "animation");
    Expect(-1, none, fFolder.Path("bad.mov"));  // nor is it copied under another depth
    for (const uint32_t depth : {1, 8, 16})
        for (const char* codec : {"apple-dv", "rgb24"}) {
            Choose("mov", codec);
            Expect(-1, none, fFolder.Write("bad.mov", Movie("raw ", true, depth)));
        }
}

TEST_F(Messages, DestinationsThatCannotBe)
{
    const std::string source = MakeClip(3);
    for (const char* format : {"dv", "avi2-odml", "avi1-ref", "matrox", "mov-audio"}) {
        Choose(format);
        const std::string cannot = kCannotCreate;
        Expect(-1, cannot + " (No such file or directory)", source, fFolder.Path("none/file"));
        Expect(-1, cannot + " (Is a directory)", source, fFolder.Root().string());
    }
    for (const auto& [format, codec] :
         {std::pair("es3", ""), {"du1", ""}, {"omf", ""}, {"avi1-ref", "rgb24"}}) {
        Choose(format, codec);
        Expect(-1, "Output format not supported.", source);
    }
    Choose("dv");
    const Bytes before = ReadWhole(source);
    Expect(-1, kCannotCreate + std::string(" (Device or resource busy)"), source, source);
    EXPECT_TRUE(before == ReadWhole(source)) << "a source is never its own destination";
}

TEST_F(Messages, CodecsThatAreNotSet)
{
    const std::string encoder = "DV Encoder is not set.", decoder = "DV Decoder is not set.";
    const std::string no_decoder = "No DVCPRO25 Decoder is set! Please check the Preferences.";
    const std::string no_encoder = "No DVCPRO25 Encoder is set! Please check the Preferences.";
    const struct {
        bool dvcpro_source, changes_system;
        int32_t data;
        std::set<int> missing;  // roles
        int status;
        std::string message;
    } rows[] = {
        {false, false, 0, {0}, -1, encoder},      {false, false, 0, {1}, -1, decoder},
        {false, false, 2, {0, 1}, -1, decoder},   {false, false, 2, {0}, 0, ""},
        {false, false, 2, {2}, -112, no_encoder}, {true, true, 0, {3}, -108, no_decoder},
        {true, true, 0, {2}, -112, no_encoder},   {true, true, 1, {2}, 0, ""},
        {true, false, 1, {3}, -108, no_decoder},  {true, false, 0, {2, 3}, 0, ""},
        {true, false, 2, {0, 2, 3}, 0, ""},
    };
    const std::string dv = MakeClip("dv", 3, {}), dvcpro = MakeClip("dvcpro", 3, {.dvcpro = true});
    const ConversionOptions all = fOptions;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message + std::to_string(&row - rows));
        fOptions = all;
        fOptions.opselection = row.changes_system ? kOperationToNTSC : kOperationConvert;
        fOptions.dataconv = row.data;
        for (const int role : row.missing)
            fOptions.*kRoles[role] = "None";
        Expect(row.status, row.message, row.dvcpro_source ? dvcpro : dv);
    }
}

class CodecMessages : public Messages {
protected:
    CodecMessages() : Messages(TEST_MODULES "/kelvane-codec-test-vfw") {}
};

TEST_F(CodecMessages, SayWhichCodecFailedAndOfWhichKind)
{
    const std::string good = "Test DV (VfW)";
    const char* const words[] = {"DV Encode", "DV Decode", "DVCPRO25 Encode", "DVCPRO25 Decode"};
    fOptions.opselection = kOperationToNTSC;
    for (size_t role = 0; role < 4; role++) {
        const std::string source = MakeClip("clip", 3, {.dvcpro = role >= 2}), word = words[role];
        for (const auto& [suffix, number] : {std::pair(" (VfW)", "#2"), {" (DirectX)", "#1"}}) {
            for (const auto option : kRoles)
                fOptions.*option = good;
            fOptions.*kRoles[role] = std::string("Refusing") + suffix;
            Expect(-1, word + "r initialization error " + number + ".", source);
            EXPECT_TRUE(std::filesystem::exists(fFolder.Path("destination")));
            fOptions.*kRoles[role] = std::string("Failing") + suffix;
            Expect(-1, word + " Error " + number + "!", source);
        }
    }
    // Whims that are put up with, in one run: the picture comes through upright.
    fOptions.opselection = kOperationConvert;
    fOptions.dataconv = 1;
    fOptions.DVencoder = fOptions.DVdecoder = fOptions.DVCPROdecoder = "DV Master Test (VfW)";
    const std::string source = fFolder.Path("clip"), out = Converted(source, "whims");
    EXPECT_GT(PictureNoise(DecodedFrame(source, 1, fState), DecodedFrame(out, 1, fState)), 30);
}

TEST_F(Messages, SoundThatWillNotDo)
{
    const std::vector<Bytes> frames = Film(MakeClip(4)).frames;
    const std::string wrong = "Wrong sample rate in input audio stream (22050 Hz)!";
    Choose("mov-audio");
    Expect(0, "", MakeAVI(frames, kAVIPAL, 96000, 16));  // which no QuickTime track could say
    EXPECT_NEAR(4 / 25.0, fResult.losses.sound_silenced, 1e-6);
    Choose("dv");
    for (const auto& [why, rate, bits] :
         {std::tuple(wrong, 22050, -1),
          {"Source audio format is not supported (PCM or float is needed)!", 48000, 64}}) {
        Expect(0, "", MakeAVI(frames, kAVIPAL, rate, bits));
        EXPECT_EQ(4u, Film(fFolder.Path("destination")).frames.size());
        EXPECT_NEAR(4 / 25.0, fResult.losses.sound_silenced, 1e-6);
        EXPECT_THAT(fResult.warnings,
                    testing::ElementsAre(why + " The film is converted without that sound."));
    }

    const auto companion = [&](const char* name, uint16_t channels, int32_t rate,
                               uint16_t depth = 16) {
        WriteSound(fFolder.Path(name), {kSamplePCM, channels, depth, rate}, Bytes(4800));
    };
    const std::string source = fFolder.Path("source.dv");
    companion("source.wav", 2, 22050);
    Expect(-13, wrong, source);
    std::filesystem::remove(fFolder.Path("source.wav"));
    const std::string loop = fFolder.Path("source.wav");
    std::filesystem::create_symlink(loop, loop);
    Expect(-18,
           "Error reading source file (audio) ! " + loop +
               " can't be read. (Too many levels of symbolic links)",
           source);
    std::filesystem::remove(loop);
    companion("source_1.wav", 2, 48000), companion("source_2.wav", 2, 48000);
    Expect(-18, "Source audio files should be mono!", source);
    EXPECT_EQ(fFolder.Path("source_2.wav"), fResult.audio_file_2);
    companion("source_1.wav", 1, 48000);
    for (const auto& [rate, depth] : {std::pair(32000, 16), {48000, 24}}) {
        companion("source_2.wav", 1, rate, uint16_t(depth));
        Expect(-18, "Source audio files have different formats!", source);
    }
}

TEST_F(Messages, ReferencedFilesThatAreNotThere)
{
    const std::string clip = MakeClip(12), media = fFolder.Path("ref.000");
    for (const char* format : {"avi1-ref", "avi2-ref"}) {
        const std::string source = Converted(clip, "ref.avi", format);
        Choose("dv");
        fAtProgress = [&](const ConversionProgress& progress) {
            if (progress.frames_read == 6) std::filesystem::resize_file(media, 6 * 144008);
            return Wish::kGoOn;
        };
        Expect(-1, std::string(kReadError) + " 6 of 12 frames are missing, the first is number 6.",
               source);
        EXPECT_EQ(6u, Film(fFolder.Path("destination")).frames.size());
        EXPECT_EQ(6u, fResult.losses.frames_missing);
        fAtProgress = nullptr;
        std::filesystem::remove(media);
        Expect(-1,
               "Error reading source file! The referenced file is not found. (No such file or "
               "directory)",
               source);
        EXPECT_EQ(0u, ReadWhole(fFolder.Path("destination")).size());
    }
}

TEST_F(Messages, ShortSourcesEndAsThePrefillSays)
{
    const auto failed = [](size_t frames) {
        return kReadError + (" The film has " + std::to_string(frames)) +
               (frames == 1 ? " frame." : " frames.");
    };
    const Bytes whole = ReadWhole(MakeClip(4));
    const auto begin = [&](size_t bytes) {
        return fFolder.Write("short.dv", std::span(whole).first(bytes));
    };
    for (const std::string format : {"dv", "avi1", "mov"}) {
        Choose(format);
        for (size_t frames = 1; frames <= 4; frames++) {
            SCOPED_TRACE(format + std::to_string(frames));
            const std::string clip = begin(frames * 144000), out = fFolder.Path("out");
            // Four frames are read at once for a change of field order, and the first is not
            // output.
            for (const bool swaps : {true, false}) {
                const bool fails = !swaps && frames < 3;
                fOptions.dstint = swaps;
                // A film of which nothing is written is none.
                const bool nothing = swaps && frames == 1;
                Expect(fails || nothing ? -1 : 0, fails || nothing ? failed(frames) : "", clip,
                       out);
                // An empty file of raw DV is none.
                if (fails || (swaps && frames == 1 && format == "dv")) continue;
                EXPECT_EQ(swaps ? frames - 1 : frames, Film(out).frames.size());
            }
        }
    }
    Choose("dv");
    Expect(-1, std::string(kReadError) + " 1 of 4 frames is missing, the first is number 3.",
           begin(whole.size() - 1000));
    EXPECT_EQ(3u, Film(fFolder.Path("destination")).frames.size());
    TinyAVI none;
    none.frames.clear();
    const std::string empty = fFolder.Write("empty.avi", BytesOf(none.Build()));
    Expect(-1, failed(0), empty);
    fOptions.dstint = 1;
    Expect(-1, failed(0), empty);
}

TEST_F(Messages, WhatARunThatWentWellDidToTheFilm)
{
    using testing::ElementsAre;
    const std::string clip = MakeClip("clip.dv", 12, {.pal = true});
    Converted(clip, "copy.dv", "dv");
    EXPECT_THAT(fResult.warnings, ElementsAre());
    fOptions.opselection = kOperationToPAL;
    fOptions.blendmode = 3;
    Converted(clip, "pal.dv", "dv");
    EXPECT_THAT(fResult.warnings, ElementsAre("Reverse pulldown of a film that is PAL already "
                                              "leaves out one frame in six."));
    Converted(clip, "pal.avi", "avi2", "rgb24");
    EXPECT_THAT(
        fResult.warnings,
        ElementsAre("Reverse pulldown of a film that is PAL already leaves out one frame in "
                    "six and makes no pictures of the others: they are black."));
    const Bytes black = Film(fFolder.Path("pal.avi")).frames.at(5);
    EXPECT_EQ(Bytes(black.size()), black);
    fOptions = ConversionOptions();
    Converted(clip, "mute.mov", "mov", "rgb24");
    EXPECT_THAT(fResult.warnings,
                ElementsAre("The output format carries no sound; that of the source is left out."));
    for (const char* channel : {"clip_1.wav", "clip_2.wav", "clip_3.wav", "clip_4.wav"})
        WriteSound(fFolder.Path(channel), {kSamplePCM, 1, 16, 48000}, Bytes(2 * 24000));
    Converted(clip, "four.mov", "mov-audio");
    EXPECT_THAT(
        fResult.warnings,
        ElementsAre("The sound is that of clip_1.wav, clip_2.wav, clip_3.wav, clip_4.wav, in place "
                    "of the film's own.",
                    "2 channels of the sound beside the film are left out."));
}

TEST_F(Messages, AStandardThatTheFilmHasAlreadyLeavesModesAndMethodsIdle)
{
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip("clip.dv", 4, {.pal = pal});
        const std::string already = std::string("The film is ") + (pal ? "PAL" : "NTSC") +
                                    " already: its size and rate are not changed.";
        const auto warned = [&](bool to_pal, int32_t mode, int32_t method) {
            fOptions.opselection = to_pal ? kOperationToPAL : kOperationToNTSC;
            fOptions.mode = mode;
            fOptions.blendmode = method;
            Converted(clip, "out.dv", "dv");
            return std::ranges::count(fResult.warnings, already) == 1;
        };
        EXPECT_FALSE(warned(pal, 0, 1)) << "nothing was asked for";
        EXPECT_TRUE(warned(pal, 1, 1));
        EXPECT_TRUE(warned(pal, 0, 0));
        EXPECT_TRUE(warned(pal, 0, 2));
        EXPECT_EQ(!pal, warned(pal, 0, 3)) << "reverse pulldown does change a PAL film";
        EXPECT_FALSE(warned(!pal, 1, 0)) << "both are used";
    }
}

TEST_F(Messages, AFullDiskIsToldAndTheSourceStaysAsItWas)
{
    const std::string source = MakeClip(6);
    const Bytes before = ReadWhole(source);
    fOptions.aileave = 1;
    for (const char* format : {"dv", "avi1", "avi2", "mov", "mov-audio"}) {
        Choose(format);
        // A movie has a head at once.
        const std::string no_space = " (No space left on device)";
        Expect(-1,
               format[0] == 'm' ? kCannotCreate + no_space
                                : kWriteError + (" The file holds 0 frames." + no_space),
               source, "/dev/full");
    }
    signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &old));
    bool sound = false;
    // Steps of less than a chunk of sound, through a frame and its sound.
    for (rlim_t limit = 400000; limit < 560000; limit += 7000)
        for (const char* format : {"avi2", "mov-audio"}) {
            Choose(format);
            const rlimit small = {limit, old.rlim_max};
            ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
            const int status = Convert(source, fFolder.Path("full"));
            ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &old));
            EXPECT_EQ(-1, status);
            const bool track =
                fResult.message.starts_with("Write error in destination file (audio");
            EXPECT_TRUE(track || fResult.message.starts_with(kWriteError)) << fResult.message;
            sound |= track;
            const size_t frames = Film(fFolder.Path("full")).frames.size();
            EXPECT_EQ(frames, fResult.frames_written);
            EXPECT_TRUE(fResult.message.ends_with("holds " + std::to_string(frames) +
                                                  " frames. (File too large)"))
                << fResult.message;
            EXPECT_GE(limit, std::filesystem::file_size(fFolder.Path("full")));
            EXPECT_THAT(fResult.warnings, testing::IsEmpty()) << "the film was not over";
        }
    EXPECT_TRUE(sound);
    EXPECT_TRUE(before == ReadWhole(source));
}

TEST_F(Messages, StoppingLeavesAWholeFileBehind)
{
    const std::string source = MakeClip(10);
    for (const char* format : {"dv", "avi1", "avi2-odml", "canopus2", "matrox", "mov-audio"}) {
        Choose(format);
        for (const size_t wanted : {1, 5, 10}) {
            size_t seen = 0;
            fAtProgress = [&](const ConversionProgress&) {
                return ++seen < wanted ? Wish::kGoOn : wanted == 5 ? Wish::kEnd : Wish::kStop;
            };
            const Film film(Converted(source, "stopped"));
            SCOPED_TRACE(format);
            EXPECT_EQ(wanted == 5 ? Outcome::kEnded : Outcome::kStopped, fResult.outcome);
            EXPECT_EQ(wanted, film.frames.size());
            EXPECT_EQ(wanted, film.source->CountFrames());
            const double sound = film.track.empty() ? 0 : double(wanted) * 7680;
            EXPECT_NEAR(sound, double(film.track.size()), 7680);
        }
    }
}

}  // namespace
}  // namespace kelvane
