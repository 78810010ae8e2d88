// QuickTime films of other programs, made byte by byte, and what becomes of them.

#include <algorithm>
#include <cmath>
#include <map>

#include "base/four_cc.h"
#include "dv/dif_layout.h"
#include "engine/containers/destination.h"
#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"
#include "media/avi/avi_file.h"
#include "support/qt_builder.h"
#include "support/riff.h"

namespace kelvane {
namespace {

class QuickTimeFilms : public ConversionCase {
protected:
    // A movie of frames with a size each of its own, each in a chunk of its own.
    std::string MakeMovie(const std::vector<Bytes>& frames, QTTestTrack track)
    {
        Bytes media;
        Fill(track, frames, media);
        return fFolder.Write("made.mov", QTOneTrack(track, media));
    }
    // With a track of sound in chunks of three samples.
    std::string MakeMovie(const std::vector<Bytes>& frames, QTTestTrack track, const Bytes& sound,
                          QTTestTrack heard, size_t sample)
    {
        Bytes media;
        Fill(track, frames, media);
        std::vector<Bytes> chunks;
        for (size_t at = 0; at < sound.size(); at += 3 * sample)
            chunks.emplace_back(&sound[at], &sound[at] + 3 * sample);
        Fill(heard, chunks, media);
        heard.samples *= 3;
        heard.stsc = QTTable({1, 3, 1}, 3);
        heard.stsz = {};
        return fFolder.Write("made.mov", Join({QTAtom("mdat", {media}), QTMoov({track, heard})}));
    }
    static void Fill(QTTestTrack& track, const std::vector<Bytes>& frames, Bytes& media)
    {
        Bytes sizes = Longs({0, 0, frames.size()}), places = Longs({0, frames.size()});
        for (const Bytes& frame : frames) {
            places = Join({places, Big(8 + media.size())});
            sizes = Join({sizes, Big(frame.size())});
            media.insert(media.end(), frame.begin(), frame.end());
        }
        track.samples = static_cast<uint32_t>(frames.size());
        track.stsc = QTTable({1, 1, 1}, 3);
        track.stsz = sizes;
        track.stco = places;
    }
    std::vector<Bytes> ClipFrames(int64_t count, bool pal = true)
    {
        return Film(MakeClip(count, pal)).frames;
    }
    // Of the film that a movie converts to: the letter of the source frame that each frame shows,
    // small where it has no sound.
    std::string Converts(const std::vector<Bytes>& frames, const QTTestTrack& track)
    {
        return Shown(frames, Converted(MakeMovie(frames, track), "out.dv", "dv"));
    }
    static std::string Shown(const std::vector<Bytes>& frames, const std::string& path)
    {
        std::map<Bytes, char> letters;
        for (size_t i = 0; i < frames.size(); i++)
            letters.emplace(PictureOf(frames[i]), char('A' + i));
        std::string shown;
        Film film(path);
        for (Bytes& frame : film.frames) {
            const auto found = letters.find(PictureOf(frame));
            Bytes sound(10400);
            sound.resize(View(frame).ExtractAudio(sound, 3));
            // The cadence of NTSC puts a few samples of its neighbours into a silent frame.
            const bool silent = std::ranges::count(sound, 0) > ptrdiff_t(sound.size() * 9 / 10);
            const char letter = found == letters.end() ? '?' : found->second;
            shown += silent ? char(tolower(letter)) : letter;
        }
        return shown;
    }
    // A frame without its sound blocks.
    static Bytes PictureOf(Bytes frame)
    {
        for (size_t sequence = 0; sequence < frame.size() / kDIFSequenceSize; sequence++)
            for (size_t block = 0; block < kAudioBlocks; block++)
                std::fill_n(&frame[AudioBlockAt(sequence, block)], kDIFBlockSize, uint8_t{0});
        return frame;
    }
};

TEST_F(QuickTimeFilms, APictureOfNoBytesStandsForTheOneBefore)
{
    std::vector<Bytes> frames = ClipFrames(6);
    frames[2].clear();
    frames[3].clear();
    EXPECT_EQ("ABbbEF", Converts(frames, {}));
    EXPECT_FALSE(fResult.losses.Any());
    EXPECT_EQ(6u, fResult.frames_written);
    frames[0].clear();
    EXPECT_EQ("BBbbEF", Converts(frames, {})) << "in front of the first one, for that";
}

TEST_F(QuickTimeFilms, APictureStandsAsLongAsTheFileSays)
{
    const std::vector<Bytes> frames = ClipFrames(5);
    EXPECT_EQ("ABbbbCDEee", Converts(frames, {.stts = QTTable({1, 24, 1, 96, 2, 24, 1, 72}, 2)}));
    EXPECT_EQ(10u, fResult.frames_written);
    EXPECT_FALSE(fResult.losses.Any());
    EXPECT_EQ("AaBbCcDdEe", Converts(frames, {.duration = 48})) << "the standard's frame, not its";
    EXPECT_EQ("ACDE", Converts(frames, {.stts = QTTable({1, 24, 1, 2, 3, 24}, 2)}));
    EXPECT_EQ(1u, fResult.losses.frames_left_out);
    EXPECT_TRUE(fResult.losses.Any());
    EXPECT_NE("", LossesInWords(fResult.losses));

    const std::vector<Bytes> ntsc = ClipFrames(5, false);
    EXPECT_EQ("ABCcDE", Converts(ntsc, {.height = 480, .stts = QTTable({2, 20, 1, 40, 2, 20}, 2)}));
}

TEST_F(QuickTimeFilms, SoundAndPictureBeginWhenTheEditListsSay)
{
    const std::vector<Bytes> frames = ClipFrames(4);
    // Samples of 24 bits, each of its own, and what is heard of them.
    Bytes sound, heard;
    for (uint32_t i = 0; i < 2 * 4 * 1920; i++) {
        const auto value = uint16_t(i + 1);
        const uint8_t bytes[] = {uint8_t(value >> 8), uint8_t(value), 0};
        sound.insert(sound.end(), bytes, bytes + 3);
        heard.insert(heard.end(), {uint8_t(value), uint8_t(value >> 8)});
    }
    const auto late = [](uint64_t ticks) {
        return Longs({ticks, 0xFFFFFFFF, 0x10000, 600, 0, 0x10000});
    };
    const struct {
        const char* what;
        Bytes picture, sound;
        size_t held, silence;  // frames, samples
        size_t warnings;
    } rows[] = {
        {"none", {}, {}, 0, 0, 0},
        // What is behind the other at the end is told.
        {"sound behind", {}, late(30), 0, 2400, 1},
        {"picture behind", late(30), {}, 2, 1440, 1},
        {"both", late(660), late(612), 2, 0, 1},
        {"another", {}, Longs({600, 10, 0x10000}), 0, 0, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        QTTestTrack track = QTTestTrack::Packed("in24", false);
        track.edits = row.sound;
        const std::string movie = MakeMovie(frames, {.edits = row.picture}, sound, track, 6);
        std::vector<Bytes> shown(row.held, frames[0]);
        shown.insert(shown.end(), frames.begin(), frames.end());
        const Film film(Converted(movie, "out.mov", "mov-audio"));
        EXPECT_TRUE(shown == film.frames);
        Bytes whole(row.silence * 4);
        whole.insert(whole.end(), heard.begin(), heard.end());
        whole.resize(film.track.size());
        EXPECT_LE((4 + row.held) * 7680, film.track.size());
        EXPECT_TRUE(whole == film.track);
        EXPECT_EQ(row.warnings, fResult.warnings.size());
        EXPECT_FALSE(fResult.losses.Any());
    }
    // Beyond a day there is no film.
    for (const bool picture : {true, false}) {
        QTTestTrack track = QTTestTrack::Packed("in24", false);
        const Bytes day = late(25 * 60 * 60 * 600);
        track.edits = picture ? Bytes() : day;
        EXPECT_FALSE(
            OpenSource(MakeMovie(frames, {.edits = picture ? day : Bytes()}, sound, track, 6)));
    }
}

TEST_F(QuickTimeFilms, AClockTooCoarseForTheStandardLosesNothing)
{
    const std::string path =
        MakeMovie(std::vector<Bytes>(2000, Bytes(4)), {.height = 480, .duration = 20});
    const auto source = OpenSource(path);
    ASSERT_TRUE(source);
    EXPECT_EQ(2000u, (*source)->CountFrames());
    // 20.02 is 20, and 21 once in fifty.
    Bytes times = Longs({0, 80});
    for (int i = 0; i < 40; i++)
        times = Join({times, Longs({49, 20, 1, 21})});
    const auto fine =
        OpenSource(MakeMovie(std::vector<Bytes>(2000, Bytes(4)), {.height = 480, .stts = times}));
    ASSERT_TRUE(fine);
    EXPECT_EQ(2000u, (*fine)->CountFrames());
    EXPECT_EQ(0u, (*fine)->LeftOut());
}

TEST_F(QuickTimeFilms, TheFrameOfOtherPicturesIsTheUsualDuration)
{
    const std::vector<Bytes> frames(4, Bytes(720 * 576 * 3));
    const auto source = OpenSource(MakeMovie(
        frames, {.format = "raw ", .duration = 0, .stts = QTTable({1, 100, 2, 50, 1, 150}, 2)}));
    ASSERT_TRUE(source);
    EXPECT_EQ(12.0f, (*source)->format.FrameRate());
    EXPECT_EQ(7u, (*source)->CountFrames());
    Bytes buffer(frames[0].size());
    std::vector<size_t> sizes;
    for (int64_t i = 0; i < 7; i++)
        sizes.push_back((*source)->ReadFrame(i, buffer).size / 1000);
    EXPECT_EQ((std::vector<size_t>{1244, 0, 1244, 1244, 1244, 0, 0}), sizes);
    EXPECT_EQ(kEnd, (*source)->ReadFrame(7, buffer).status.Code());
}

TEST_F(QuickTimeFilms, DVGoesByItsFirstWholeFrame)
{
    for (const bool pal : {true, false}) {
        std::vector<Bytes> frames = ClipFrames(4, pal);
        // Pictures shown in another size, descriptions of the other system or without a size.
        for (const auto& [width, height] : {std::pair(720u, pal ? 480u : 576u), {0u, 0u}})
            for (const auto& [shown_width, shown_height] : {std::pair(384, 288), {0, 0}})
                EXPECT_EQ("ABCD", Converts(frames, {.width = width,
                                                    .height = height,
                                                    .shown_width = shown_width,
                                                    .shown_height = shown_height,
                                                    .scale = 30000,
                                                    .duration = pal ? 1200u : 1001u}));
        // Nor is a first picture of no bytes the first frame.
        frames[0].clear();
        EXPECT_EQ("BBCD", Converts(frames, {.height = pal ? 480u : 576u,
                                            .scale = 30000,
                                            .duration = pal ? 1200u : 1001u}));
    }
    // Without a whole frame it is the description that tells.
    const auto source = OpenSource(
        MakeMovie({Bytes(1000)}, {.height = 576, .shown_width = 384, .shown_height = 288}));
    ASSERT_TRUE(source);
    EXPECT_TRUE((*source)->is_pal);
}

// As tapes begin, in either container.
TEST_F(QuickTimeFilms, ABlankFrameDoesNotTellTheSystem)
{
    std::vector<Bytes> frames = ClipFrames(5);
    frames[0] = frames[1] = ClipFrames(1, false)[0];
    for (Bytes* blank : {&frames[0], &frames[1]})
        for (size_t sequence = 0; sequence < 10; sequence++)
            for (const size_t block : kVideoAuxBlocks)
                std::fill_n(&(*blank)[sequence * kDIFSequenceSize + block + kVideoAuxPackAt],
                            kVideoAuxPacks * kPackSize, kNoPack);
    EXPECT_EQ("CcCDE", Converts(frames, {.height = 480}));
    EXPECT_EQ(2u, fResult.losses.frames_undecodable);

    const std::string path = fFolder.Path("blank.avi");
    {
        AVIFile avi(path.c_str(), kCreate);
        ASSERT_EQ(kOK, avi.BeginDVAVI(kAVIType1 | kAVINTSC | kAVIOldIndex, "dvsd"_4cc, 0));
        for (const Bytes& frame : frames)
            ASSERT_EQ(kOK, avi.WriteFrame(0, frame.data(), int32_t(frame.size())));
    }
    EXPECT_EQ("CcCDE", Shown(frames, Converted(path, "out.dv", "dv")));
}

TEST_F(QuickTimeFilms, PlainDVIsReadUnderOtherCodesToo)
{
    for (const bool pal : {true, false})
        for (const char* code : {"DVC ", "dv5n"})
            EXPECT_EQ("ABC", Converts(ClipFrames(3, pal), {.format = code,
                                                           .height = pal ? 576u : 480u,
                                                           .scale = 30000,
                                                           .duration = pal ? 1200u : 1001u}))
                << code;
    // DVCPRO50 has frames of twice the size.
    EXPECT_FALSE(OpenSource(MakeMovie({Bytes(240000)}, {.format = "dv5n", .height = 480})));
    std::vector<Bytes> frames = ClipFrames(1);
    frames[0][1] = 0xFF;
    EXPECT_FALSE(OpenSource(MakeMovie(frames, {.format = "DVC "})));
}

// A file as its writer leaves it when it is killed: no header, and a size of media of 0.
class BrokenCaptures : public QuickTimeFilms {
protected:
    static constexpr uint64_t kHead = 16;  // of the media

    // Frames with their sound between them as our own files have it, without the header.
    Bytes BreakOff(bool pal, int32_t frames)
    {
        Choose("mov-audio");
        fAdjust = [](ConversionSettings& settings) { settings.audio_interleave_factor = 2; };
        Bytes whole = ReadWhole(Converted(MakeClip(frames, pal), "whole.mov"));
        whole.resize(LoadBytes(std::span(whole).subspan(8, 8), ByteOrder::kBig));
        std::fill_n(whole.begin() + 8, 8, uint8_t{0});
        return whole;
    }
    Film Open(const Bytes& file) { return Film(fFolder.Write("broken.mov", file)); }
};

TEST_F(BrokenCaptures, GiveAllWholeFramesAndTheirSound)
{
    for (const bool pal : {true, false}) {
        const Bytes broken = BreakOff(pal, 9);
        const Film whole(fFolder.Path("whole.mov"));
        const Film all = Open(broken);
        EXPECT_EQ(whole.frames, all.frames);
        EXPECT_EQ(whole.track, all.track);
        EXPECT_EQ(9u, all.source->FramesSalvaged());
        EXPECT_EQ(48000, all.source->audio_format.raw_audio.srate);
        EXPECT_EQ(std::string::npos, all.source->Warning().find("left out"));
        EXPECT_EQ(0u, whole.source->FramesSalvaged());
        EXPECT_EQ("", whole.source->Warning());
        // Wherever it broke off, in the middle of its header as well.
        const Bytes file = ReadWhole(fFolder.Path("whole.mov"));
        const size_t header = file.size() - broken.size();
        for (const size_t length : {size_t{8}, header / 2, header - 1}) {
            const auto end = file.begin() + ptrdiff_t(broken.size() + length);
            const Film half = Open(Bytes(file.begin(), end));
            EXPECT_EQ(whole.frames, half.frames) << length;
            EXPECT_EQ(whole.track, half.track) << "and no header that passes for sound";
            EXPECT_EQ(9u, half.source->FramesSalvaged());
        }
        const size_t frame = whole.frames[0].size();
        for (const size_t length : {kHead + frame, kHead + 2 * frame - 1, kHead + 2 * frame,
                                    broken.size() - 100, kHead + 5 * frame}) {
            const Film cut = Open(Bytes(broken.begin(), broken.begin() + ptrdiff_t(length)));
            ASSERT_LE(cut.frames.size(), whole.frames.size());
            EXPECT_EQ(cut.frames.size(), cut.source->FramesSalvaged());
            EXPECT_GE((cut.frames.size() + 2) * frame * 108 / 100, length) << "frames are missing";
            EXPECT_TRUE(
                std::ranges::equal(cut.frames, std::span(whole.frames).first(cut.frames.size())));
            EXPECT_TRUE(std::ranges::equal(
                cut.track,
                std::span(whole.track).first(std::min(whole.track.size(), cut.track.size()))));
        }
    }
}

TEST_F(BrokenCaptures, AreConvertedWithALoss)
{
    const std::string path = fFolder.Write("broken.mov", BreakOff(true, 9));
    EXPECT_EQ(9u, Film(Converted(path, "out.dv", "dv")).frames.size());
    EXPECT_EQ(9u, fResult.losses.frames_salvaged);
    ASSERT_EQ(1u, fResult.warnings.size());
    EXPECT_NE(std::string::npos, fResult.warnings[0].find("broke off"));
}

TEST_F(BrokenCaptures, HaveTheirMediaInAnyKindOfAtom)
{
    const Bytes broken = BreakOff(true, 4);
    const Bytes media(broken.begin() + kHead, broken.end());
    const size_t frames = Film(fFolder.Path("whole.mov")).frames.size();
    const Bytes file_type = QTAtom("ftyp", {Text("qt  "), Big(512), Text("qt  ")});
    for (const Bytes& head :
         {Join({Big(0), Text("mdat")}), Join({Big(8), Text("mdat")}),
          Join({file_type, QTAtom("wide", {}), Big(0), Text("mdat")}),
          Join({Big(media.size() + 8), Text("mdat")}), Join({Big(0x7FFFFFFF), Text("mdat")})}) {
        const Film film = Open(Join({head, media}));
        EXPECT_EQ(frames, film.frames.size()) << AsText(head);
        EXPECT_FALSE(film.track.empty());
    }
}

TEST_F(BrokenCaptures, WhatIsNoSoundBetweenTheFramesIsLeftOut)
{
    const std::vector<Bytes> frames = ClipFrames(4);
    const Bytes head = Join({Big(0), Text("mdat")});
    const auto film = [&](const Bytes& between) {
        Bytes file = head;
        for (const Bytes& frame : frames)
            file = Join({file, frame, between});
        return Open(file);
    };
    const Film rubbish = film(Bytes(1234, 0x1F));
    EXPECT_EQ(frames, rubbish.frames);
    EXPECT_EQ(nullptr, rubbish.source->Audio()) << "the sound of the frames is";
    EXPECT_NE(std::string::npos, rubbish.source->Warning().find("3702 bytes"));

    // A frame that is damaged in its middle is not whole.
    Bytes torn = frames[1];
    torn[11 * 12000 + 1] = 0;
    EXPECT_EQ((std::vector<Bytes>{frames[0], frames[2]}),
              Open(Join({head, frames[0], torn, frames[2]})).frames);

    // A tone in either order of bytes comes out the same.
    Bytes little(7680), big(7680);
    for (size_t i = 0; i < 1920; i++)
        for (size_t channel = 0; channel < 2; channel++) {
            const auto value = static_cast<uint16_t>(20000 * std::sin(double(i) / 10));
            StoreBytes(std::span(little).subspan(i * 4 + channel * 2, 2), value,
                       ByteOrder::kLittle);
            StoreBytes(std::span(big).subspan(i * 4 + channel * 2, 2), value, ByteOrder::kBig);
        }
    for (const Bytes& sound : {little, big})
        EXPECT_EQ(Join({little, little, little, little}), film(sound).track);

    // Silence stands for sound that is lost: what comes behind it keeps its time. A piece of
    // rubbish within the frames of a chunk of sound takes nothing from it.
    const Bytes silence(little.size()), twice = Join({little, little});
    const Film gap = Open(Join(
        {head, frames[0], little, frames[1], Bytes(500), frames[2], little, frames[3], little}));
    EXPECT_EQ(Join({little, silence, little, little}), gap.track);
    EXPECT_NE(std::string::npos, gap.source->Warning().find("1 frame is silence"));
    const Film within = Open(Join({head, frames[0], frames[1], twice, frames[2], Bytes(500),
                                   frames[3], twice, frames[0], frames[1], twice}));
    EXPECT_EQ(Join({twice, twice, twice}), within.track);
}

// What fails the run with "Write error in destination file (video track)!".
TEST_F(QuickTimeFilms, NarrowOffsetsEndTheFilmAtTheirLimit)
{
    const std::string clip = MakeClip(1);
    const Bytes frame = Film(clip).frames[0];
    const auto source = OpenSource(clip);
    ASSERT_TRUE(source);
    for (const uint32_t option : {0u, uint32_t{kOptionOffsets64}}) {
        Choose("mov");
        ConversionSettings settings;
        FillConversionSettings(fOptions, fCodecs, settings);
        const std::string path = fFolder.Path("out.mov");
        DestinationPlan plan =
            PlanDestination(path, settings, **source, TypeOfDestination(fOptions.selection));
        plan.options = (plan.options & ~uint32_t{kOptionOffsets64}) | option;
        plan.narrow_qt_limit = 500000;
        const auto created = CreateDestination(plan);
        ASSERT_TRUE(created);
        size_t taken = 0;
        while (taken < 8 && (*created)->WriteFrame(frame) == kOK)
            taken++;
        EXPECT_EQ(option ? 8u : 3u, taken);
        EXPECT_EQ(kOK, (*created)->Finish());
        EXPECT_EQ(std::vector<Bytes>(taken, frame), Film(path).frames);
    }
}

TEST_F(QuickTimeFilms, RowsOfAnEvenNumberOfBytesArePacked)
{
    constexpr size_t kWidth = 5, kHeight = 3, kRow = kWidth * 3;
    Bytes packed, padded;
    for (size_t row = 0; row < kHeight; row++)
        for (size_t i = 0; i <= kRow; i++) {
            const auto value = static_cast<uint8_t>(row * 16 + i);
            padded.push_back(value);
            if (i < kRow) packed.push_back(value);
        }
    for (const Bytes& stored : {packed, padded}) {
        const std::string path =
            MakeMovie({stored, stored}, {.format = "raw ", .width = kWidth, .height = kHeight});
        EXPECT_EQ(std::vector<Bytes>(2, packed), Film(path).frames) << stored.size();
    }
    // An odd pixel of 4:2:2 has half a pair, which others read in other ways.
    const std::vector<Bytes> rgb(3, packed), yuv(3, Bytes((kWidth + 1) * kHeight * 2));
    const std::string narrow =
        MakeMovie(rgb, {.format = "raw ", .width = kWidth, .height = kHeight});
    for (const auto& [format, codec] : {std::pair("mov", "yuv422"), {"avi2", "yuy2"}}) {
        Choose(format, codec);
        EXPECT_EQ(-1, Convert(narrow, fFolder.Path("out")));
        EXPECT_EQ("No suitable encoder is found.", fResult.message);
    }
    Choose("dv");
    for (const char* format : {"yuvs", "2vuy", "yuv2"}) {
        EXPECT_EQ(-1,
                  Convert(MakeMovie(yuv, {.format = format, .width = kWidth, .height = kHeight}),
                          fFolder.Path("out.dv")));
        EXPECT_EQ("No suitable decoder is found.", fResult.message);
    }
}

TEST_F(QuickTimeFilms, MoreThanADayOfHoldsIsACorruptedFile)
{
    const std::vector<Bytes> frames = ClipFrames(2);
    constexpr uint64_t kDay = 24 * 60 * 60 * 600;
    const auto opens = [&](uint64_t duration) -> bool {
        return bool(OpenSource(MakeMovie(frames, {.stts = QTTable({1, duration, 1, 24}, 2)})));
    };
    EXPECT_TRUE(opens(kDay));
    EXPECT_FALSE(opens(kDay + 48));
    EXPECT_FALSE(opens(0xFFFFFFFF));
    EXPECT_EQ(-1, Convert(MakeMovie(frames, {.duration = 0xF0000000}), fFolder.Path("out.dv")));
    EXPECT_EQ("Quicktime parsing error, corrupted file", fResult.message);
}

}  // namespace
}  // namespace kelvane
