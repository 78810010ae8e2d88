#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "base/four_cc.h"
#include "media/describe/qt_description.h"
#include "media/media_files.h"
#include "media/quicktime/qt_file.h"
#include "media/quicktime/reader/qt_movie_parser.h"
#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

class QTReader : public ::testing::Test {
protected:
    std::string Put(const Bytes& bytes) { return fFolder.Write("movie.mov", bytes); }
    QTFile Open(const Bytes& bytes) { return QTFile(Put(bytes).c_str(), kRead); }
    QTFile OpenTrack(const QTTestTrack& track) { return Open(QTOneTrack(track)); }
    std::string Frames(const QTTestTrack& track)
    {
        QTFile file = OpenTrack(track);
        return NextFrames(file);
    }

    std::string Describe(const Bytes& movie)
    {
        std::string text;
        EXPECT_TRUE(DescribeQuickTime(Put(movie).c_str(), text));
        return text;
    }

    TempFolder fFolder;
};

TEST_F(QTReader, ReadsEveryLayoutAlike)
{
    for (const QTLayout& layout : QTLayouts()) {
        SCOPED_TRACE(layout.name);
        QTFile file = Open(layout.file);
        EXPECT_TRUE(IsQuickTimeFile(file.Path().c_str()) || layout.name == "atom of size 0");
        ASSERT_EQ(2, file.CountStreams());
        EXPECT_EQ("dvc "_4cc, file.TrackCodec(0));
        EXPECT_EQ("twos"_4cc, file.TrackCodec(1));
        EXPECT_EQ(3, file.SampleCount(0));
        EXPECT_EQ(120000, file.Duration(0));
        EXPECT_EQ("AAAA", NextFrame(file));
        EXPECT_EQ("1032 54769810 (-200)", NextFrames(file, 1)) << "little-endian for the caller";
        EXPECT_EQ("BBBB CCCC (-200)", NextFrames(file, 0));
    }
}

TEST_F(QTReader, SeeksVideoByFrameAndSoundByChunk)
{
    QTFile file = Open(QTLayouts()[0].file);
    EXPECT_EQ(0, file.SeekFrame(0, 2));
    EXPECT_EQ(2, file.FramePosition(0));
    EXPECT_EQ(2, file.CurrentChunk(0));
    EXPECT_EQ("CCCC", NextFrame(file, 0));
    EXPECT_EQ(0, file.SeekFrame(0, 1));
    EXPECT_EQ("BBBB", NextFrame(file, 0));
    EXPECT_EQ(0, file.SeekFrame(1, 1));
    EXPECT_EQ(1, file.CurrentSample(1));
    EXPECT_EQ(8u, file.FrameSize(1, 1));
    EXPECT_EQ("54769810", NextFrame(file, 1));
    EXPECT_EQ(2, file.FramePosition(1));
    EXPECT_EQ(0, file.SeekFrame(0, 3)) << "behind the last";
    for (const auto& [stream, frame] : {std::pair(0, 4), {1, 3}, {0, -1}, {2, 0}})
        EXPECT_EQ(-1, file.SeekFrame(stream, frame)) << stream;
}

TEST_F(QTReader, SurvivesEveryTruncation)
{
    const std::set<std::string> possible = {"AAAA", "1032", "0123", "(-200)", "(-201)", ""};
    for (const QTLayout& layout : QTLayouts()) {
        const std::string path = Put(layout.file);
        for (size_t length = layout.file.size(); length-- > 0;) {
            SCOPED_TRACE(layout.name + " cut to " + std::to_string(length));
            std::filesystem::resize_file(path, length);
            QTFile file(path.c_str(), kRead);
            if (file.InitCheck() != 0) continue;
            for (int32_t stream = 0; stream < file.CountStreams(); stream++) {
                const std::string first = NextFrame(file, stream);
                EXPECT_TRUE(possible.contains(first)) << first;
            }
        }
    }
}

TEST_F(QTReader, TellsWhatIsNoMovie)
{
    EXPECT_EQ(-1, QTFile(fFolder.Path("missing").c_str(), kRead).InitCheck());
    EXPECT_EQ(-1, QTFile(nullptr, kRead).InitCheck());
    EXPECT_EQ(-2, Open(Bytes()).InitCheck());
    EXPECT_EQ(-2, Open(QTAtom("mdat", {QTTinyMedia()})).InitCheck()) << "a recording broken off";
    // Every byte is read once at most: this one has heads of 8 bytes and nothing else.
    Bytes tiny;
    for (int i = 0; i < 300000; i++)
        tiny.insert(tiny.end(), {0, 0, 0, 8, 'f', 'r', 'e', 'e'});
    EXPECT_EQ(-2, Open(tiny).InitCheck());
    EXPECT_EQ(-2, Open(Join({QTAtom("a1b2", {}), QTTinyMoov(8)})).InitCheck())
        << "a type that is no letters ends the scan";

    const std::string sparse = Put(Join({Big(300 << 20), Text("moov")}));
    std::filesystem::resize_file(sparse, 400 << 20);
    EXPECT_EQ(-11, QTFile(sparse.c_str(), kRead).InitCheck()) << "too large for a header";

    EXPECT_TRUE(IsQuickTimeFile(Put(Join({Bytes(12), Text("mvhd"), Bytes(90)})).c_str()));
    EXPECT_FALSE(IsQuickTimeFile(Put(Join({Text("RIFF"), Bytes(96)})).c_str()));
    EXPECT_FALSE(IsQuickTimeFile(Put(Text("mdat")).c_str()));
    EXPECT_FALSE(IsQuickTimeFile(fFolder.Path("missing").c_str()));
}

TEST_F(QTReader, BelievesNoTableBeyondItsEnd)
{
    QTFile file = OpenTrack({.samples = 0xFFFFFFFF,
                             .stsz = Longs({0, 0, 0xFFFFFFFF, 4, 2}),
                             .stco = Longs({0, 0x7FFFFFFF, 8, 16})});
    EXPECT_EQ(2, file.ChunkCount(0));
    EXPECT_EQ(2u, file.FrameSize(0, 100)) << "beyond the table the size of the last frame";
    EXPECT_EQ("AAAA BB (-201)", NextFrames(file)) << "a third size is not in the table";

    // One that falls back and to 0.
    EXPECT_EQ("AAAA BBBB CCCC (-200)",
              Frames({.stsc = QTTable({1, 1, 1, 7, 5, 1, 2, 1, 1, 0, 9, 1}, 3),
                      .stco = QTTable({8, 12, 16})}));
    EXPECT_EQ("(-201)", Frames({.stsc = QTTable({1, 0, 1}, 3)})) << "chunks without samples";
    EXPECT_EQ("(-201)", Frames({.stco = QTTable({0xFFFFFFF0, 0})})) << "beyond the end of the file";

    QTFile endless = OpenTrack({.video = false, .format = "sowt", .duration = 0xFFFFFFFF});
    EXPECT_EQ(0u, endless.FrameSize(0, 0)) << "no caller makes room for what cannot be there";
    EXPECT_EQ("(-201)", NextFrame(endless));
}

TEST_F(QTReader, TakesTracksUpToItsLimit)
{
    const Bytes one = QTTestTrack{.stco = QTTable({8, 16})}.Build();
    Bytes tracks;
    for (int i = 0; i < 1025; i++)
        tracks.insert(tracks.end(), one.begin(), one.end());
    EXPECT_EQ(1024, Open(QTAtom("moov", {QTMovieHeader(), tracks})).CountStreams());
}

TEST_F(QTReader, RefusesBrokenCompressedHeaders)
{
    const auto streams = [&](const Bytes& moov) {
        const QTFile file = Open(Join({QTAtom("mdat", {QTTinyMedia()}), moov}));
        return file.InitCheck() == 0 ? file.CountStreams() : -1;
    };
    const Bytes good = QTCompressed(QTTinyMoov(8));
    EXPECT_EQ(2, streams(good));
    EXPECT_EQ(2, streams(QTCompressed(QTTinyMoov(8), 100000))) << "claims more than there is";
    EXPECT_EQ(2, streams(QTCompressed(QTTinyMoov(8), 0xF0000000))) << "claims gigabytes";
    Bytes broken = good;
    broken[broken.size() / 2] ^= 0x55;
    EXPECT_EQ(0, streams(broken));
    EXPECT_EQ(0, streams(QTCompressed(QTCompressed(QTTinyMoov(8))))) << "packed twice";
    EXPECT_EQ(0, streams(QTAtom("moov", {QTAtom("cmov", {QTAtom("cmvd", {Big(100)})})})));
}

TEST_F(QTReader, ReadsHeadersWith64BitTimes)
{
    const auto wide = QTAtom("mdhd", {Big(0x01000000), Bytes(16), Big(600), Big(72, 8), Bytes(4)});
    QTMovie movie;
    ParseQTMovie(QTAtom("trak", {QTAtom("mdia", {wide})}), movie);
    ASSERT_EQ(1u, movie.tracks.size());
    EXPECT_EQ(600u, movie.tracks[0].TimeScale());
    EXPECT_EQ(72u, movie.tracks[0].media_header.Get(kMediaHeader["duration"]));
    const auto tkhd1 = QTAtom("tkhd", {Big(0x01000000), Bytes(16), Big(7), Bytes(4), Big(~0ull, 8),
                                       Bytes(52), Big(720 << 16), Big(576 << 16)});
    movie = {};
    ParseQTMovie(QTAtom("trak", {tkhd1}), movie);
    EXPECT_EQ(720, movie.tracks[0].Width());
    EXPECT_EQ(7u, movie.tracks[0].header.Get(kTrackHeader["track ID"]));
    EXPECT_EQ(0xFFFFFFFFu, movie.tracks[0].header.Get(kTrackHeader["duration"]))
        << "cut to what fits";
}

TEST_F(QTReader, KeepsWhatADescriptionHasBehindItsFixedPart)
{
    const QTFile picture = OpenTrack(
        {.extension = Join({QTAtom("gama", {Big(0x23333)}), QTAtom("pasp", {Big(1), Big(1)}),
                            QTAtom("fiel", {Big(2, 1), Big(6, 1)}), Bytes(3)})});
    const QTSampleDescription* description = picture.Movie().tracks[0].Description();
    ASSERT_TRUE(description);
    EXPECT_EQ(0x23333u, description->gamma);
    EXPECT_EQ(2, description->field_count);
    EXPECT_EQ(6, description->field_detail);

    const QTFile packed = OpenTrack(
        {.video = false,
         .extension = Join({Big(64), Big(34), Big(68), Big(2), QTAtom("wave", {Text("body")})}),
         .compression_id = 65534});
    description = packed.Movie().tracks[0].Description();
    ASSERT_TRUE(description);
    EXPECT_EQ(68u, description->packets.Get(kSoundPackets["bytes per frame"]));
    EXPECT_EQ(Text("body"), description->extension);
}

TEST_F(QTReader, TellsTheFormatOfAStream)
{
    const std::tuple<const char*, uint32_t, uint32_t, uint32_t, uint32_t> rows[] = {
        {"AVdv", 24, kEncodedVideo, 8, 1},  {"dvcp", 24, kEncodedVideo, 8, 1},
        {"raw ", 32, kRawVideo, 6, 0},      {"raw ", 24, kRawVideo, 5, 0},
        {"raw ", 16, kRawVideo, 0, 0},      {"jpeg", 32, kEncodedVideo, 8, 5},
        {"jpeg", 24, kEncodedVideo, 3, 5},  {"png ", 8, kEncodedVideo, 0, 7},
        {"mjpa", 24, kEncodedVideo, 3, 6},  {"cvid", 24, kEncodedVideo, 3, 8},
        {"rle ", 32, kEncodedVideo, 8, 11}, {"yuv2", 24, kRawVideo, 16421, 0},
        {"yuvu", 24, kRawVideo, 16421, 0},  {"2vuy", 24, kRawVideo, 16416, 0},
        {"yuvs", 24, kRawVideo, 16389, 0},  {"yuv4", 24, kRawVideo, 16420, 0},
        {"v308", 24, kRawVideo, 16419, 0},  {"y411", 24, kUnknownFormat, 0, 0},
    };
    for (const auto& [code, depth, kind, space, encoding] : rows) {
        const MediaFormat format = OpenTrack({.format = code, .depth = depth}).StreamFormat(0);
        EXPECT_EQ(kind, format.kind) << code << depth;
        if (!kind) continue;
        EXPECT_EQ(std::tuple(space, 720, 576, 25.0f),
                  std::tuple(format.Space(), format.Width(), format.Height(), format.FrameRate()))
            << code << depth;
        EXPECT_EQ(encoding, kind == kEncodedVideo ? format.encoded_video.encoding : 0);
    }
    const MediaFormat ntsc = OpenTrack({.height = 480}).StreamFormat(0);
    EXPECT_EQ(120000, ntsc.encoded_video.framesize);
    EXPECT_EQ(29.97f, ntsc.FrameRate()) << "by height, whatever the tables say";
    EXPECT_EQ(kUnknownFormat, OpenTrack({}).StreamFormat(1).kind);
    // The size of what is coded, whatever is shown of it.
    for (const auto& [shown_width, shown_height] : {std::pair(384, 288), {0, 0}, {1024, 480}})
        for (const char* code : {"dvc ", "raw ", "rle "}) {
            const MediaFormat format =
                OpenTrack(
                    {.format = code, .shown_width = shown_width, .shown_height = shown_height})
                    .StreamFormat(0);
            EXPECT_EQ(std::pair(720, 576), std::pair(format.Width(), format.Height()))
                << code << shown_width;
        }

    const std::tuple<const char*, uint32_t, uint32_t, uint32_t> sounds[] = {
        {"twos", kRawAudio, kSamplePCM, 0},
        {"sowt", kRawAudio, kSamplePCM, 0},
        {"raw ", kRawAudio, kSamplePCMUnsigned, 0},
        {"ulaw", kEncodedAudio, kSamplePCM, kSampleULaw},
        {"ima4", kEncodedAudio, kSamplePCM, kSampleIMA4},
        {"in24", kRawAudio, kSamplePCM, 0},
        {"fl64", kRawAudio, kSampleFloat, 0},
        {"mp4a", kEncodedAudio, kSampleUnknown, 0},
        {"lpcm", kEncodedAudio, kSampleUnknown, 0},
    };
    for (const auto& [code, kind, output, encoding] : sounds) {
        const MediaFormat format = OpenTrack({.video = false, .format = code}).StreamFormat(0);
        // The output comes first in both views.
        const RawAudioFormat& raw = format.raw_audio;
        EXPECT_EQ(std::tuple(kind, output, 48000, 2),
                  std::tuple(format.kind, raw.format, raw.srate, raw.ch))
            << code;
        EXPECT_EQ(encoding, kind == kEncodedAudio ? format.encoded_audio.encoding : 0);
    }
}

// Bits, u for unsigned, f for float, b for big-endian: as ReadFrame gives the samples; the bytes of
// the first chunk, of two sample frames; and them.
TEST_F(QTReader, TellsHowSamplesLie)
{
    const auto plain = [](const char* code, uint32_t bits) {
        return QTTestTrack{.video = false,
                           .format = code,
                           .bits = bits,
                           .scale = 48000,
                           .duration = 1,
                           .stco = QTTable({8, 16})};
    };
    const auto wide = [](uint64_t bits, uint64_t flags, uint64_t bytes, uint64_t channels = 2) {
        return QTTestTrack::Wide("lpcm", channels, bits, flags, bytes);
    };
    const std::string none = "-";
    const std::pair<QTTestTrack, std::string> rows[] = {
        {plain("twos", 16), "16 8 10325476"},
        {plain("twos", 8), "8b 4 0123"},
        {plain("twos", 24), "24b 12 0123456789ab"},
        {plain("sowt", 16), "16 8 01234567"},
        {plain("raw ", 8), "8ub 4 0123"},
        {plain("raw ", 16), "16 8 10325476"},
        {QTTestTrack::Packed("in24", false), "24b 12 0123456789ab"},
        {QTTestTrack::Packed("in24", true), "24 12 0123456789ab"},
        {QTTestTrack::Packed("in32", true), "32 16 0123456789abcdef"},
        {QTTestTrack::Packed("fl32", false), "32fb 16 0123456789abcdef"},
        {QTTestTrack::Packed("fl64", true), "64f 32 0123456789abcdefghijklmnopqrstuv"},
        {QTTestTrack::Packed("twos", true), "16 8 10325476"},
        {wide(16, 4 | 8, 4), "16 8 01234567"},
        {wide(16, 2 | 4 | 8, 4), "16 8 10325476"},
        {wide(8, 8, 2), "8u 4 0123"},
        {wide(24, 2 | 4 | 8, 6), "24b 12 0123456789ab"},
        {wide(32, 1 | 8, 8), "32f 16 0123456789abcdef"},
        {wide(64, 1 | 2 | 8, 8, 1), "64fb 16 0123456789abcdef"},
        {wide(20, 4 | 16, 6), "24 12 0123456789ab"},
        {wide(20, 4, 6), none},       // at the bottom of their bytes
        {wide(16, 4 | 32, 4), none},  // one channel behind the other
        {wide(24, 4 | 8, 7), none},
        {wide(24, 4 | 8, 0), none},
        {plain("ulaw", 16), none},
        {plain("lpcm", 16), none},
    };
    for (const auto& [track, expected] : rows) {
        SCOPED_TRACE(track.format + " " + expected);
        QTFile file = Open(QTOneTrack(track, Text("0123456789abcdefghijklmnopqrstuvwxyz....")));
        const SampleCoding coding = file.SoundCoding(0);
        EXPECT_EQ(expected != none, coding.IsSupported());
        if (expected == none) continue;
        EXPECT_EQ(48000, file.StreamFormat(0).raw_audio.srate);
        const auto mark = [](bool is, const char* letter) { return is ? letter : ""; };
        EXPECT_EQ(expected, std::to_string(coding.bits) + mark(coding.is_unsigned, "u") +
                                mark(coding.is_float, "f") + mark(coding.big_endian, "b") + " " +
                                std::to_string(file.FrameSize(0, 0)) + " " + NextFrame(file));
    }
    const QTFile broken = OpenTrack(QTTestTrack::Wide("lpcm", ~0u, ~0u, ~0u, ~0u));
    EXPECT_FALSE(broken.SoundCoding(0).IsSupported());
    EXPECT_FALSE(broken.SoundCoding(1).IsSupported());
}

TEST_F(QTReader, SaysHowPictureAndSoundBeginTogether)
{
    constexpr uint64_t kNone = 0xFFFFFFFF, kOne = 0x10000;
    // Three frames of PAL, a second of sound; the movie's clock has 600 ticks a second.
    const auto start = [&](const Bytes& picture, const Bytes& sound, bool silent = false) {
        QTTestTrack second = QTTestTrack::Packed("in24", false);
        second.samples = 48000;
        second.edits = sound;
        const QTTestTrack first{.stco = QTTable({8, 16}), .edits = picture};
        const QTFile file = Open(QTMoov({first, second}));
        const QTStart found = file.Start(0, DVFormat(true), silent ? -1 : 1);
        return std::tuple(found.held, found.silence, found.has_other_edits);
    };
    const auto late = [&](uint64_t ticks) { return Longs({ticks, kNone, kOne, 9999, 0, kOne}); };
    const auto is = [](uint64_t held, uint64_t silence, bool other = false) {
        return std::tuple(held, silence, other);
    };
    EXPECT_EQ(is(0, 0), start({}, {}));
    EXPECT_EQ(is(0, 0), start(Longs({72, 0, kOne}), Longs({600, 0, kOne})));
    EXPECT_EQ(is(0, 0), start(Longs({0, 0, kOne}), Longs({595, 0, kOne})))
        << "as long as its media";
    EXPECT_EQ(is(0, 24000), start({}, late(300)));
    EXPECT_EQ(is(0, 80), start(late(300), late(301)));
    EXPECT_EQ(is(2, 0), start(late(48), {}));
    EXPECT_EQ(is(13, 960), start(late(300), {})) << "12.5 frames";
    EXPECT_EQ(is(0, 0), start(late(300), late(300)));
    EXPECT_EQ(is(1, 1840), start(late(1), {}));
    EXPECT_EQ(is(0, 48000), start({}, Longs({300, kNone, kOne, 300, kNone, kOne, 600, 0, kOne})));
    EXPECT_EQ(is(0, 0), start(late(300), {}, true)) << "nothing to be in step with";

    for (const Bytes& other :
         {Longs({600, 1, kOne}), Longs({600, 0, 0x8000}), Longs({300, 0, kOne, 300, 0, kOne}),
          Longs({500, 0, kOne}), Longs({600, 0, kOne, 10, kNone, kOne}), Longs({10, kNone, kOne})})
        EXPECT_EQ(is(0, 0, true), start({}, other));
    EXPECT_EQ(is(0, 24000, true), start({}, Longs({300, kNone, kOne, 300, 900, kOne})));
    EXPECT_EQ(is(0, 0, true), start(Longs({72, 24, kOne}), {}, true));

    // Version 1 has 64-bit durations and times.
    const auto wide = [&](uint64_t duration, uint64_t media_time) {
        QTMovie movie;
        const Bytes elst =
            QTAtom("elst", {Big(1 << 24), Big(2), Big(duration, 8), Big(~0ull, 8), Big(kOne),
                            Big(600, 8), Big(media_time, 8), Big(kOne), Bytes(19)});
        ParseQTMovie(QTAtom("trak", {QTAtom("edts", {elst})}), movie);
        return movie.tracks.at(0).edits;
    };
    EXPECT_EQ(Longs({300, kNone, kOne, 600, 0, kOne}), wide(300, 0));
    EXPECT_EQ(Longs({kNone, kNone, kOne, 600, kNone - 1, kOne}), wide(1ull << 40, 1ull << 40))
        << "cut to what fits, and a time is no gap";
}

using QTDescription = QTReader;

TEST_F(QTDescription, TellsSystemSamplingAndAspectOfDV)
{
    const auto describe = [this](const char* format, uint32_t size, const Bytes& media) {
        return Describe(QTOneTrack({.format = format,
                                    .samples = 1,
                                    .stsc = QTTable({1, 1, 1}, 3),
                                    .stsz = Longs({0, size, 1})},
                                   media));
    };
    Bytes frame(120000);
    frame[4] = 1;  // APT of DVCPRO
    EXPECT_EQ("QuickTime DVCPRO NTSC 4:1:1 (16:9 format)", describe("dvc ", 120000, frame))
        << "a frame without aspect counts as wide";
    frame.resize(144000);
    frame[3] = 0x80;  // DSF: 625/50
    frame[4] = 0;
    EXPECT_EQ("QuickTime AVID DV PAL 4:2:0 (16:9 format)", describe("AVdv", 144000, frame));
    frame[0] = 0x1F;
    frame[1] = 0x07;
    for (const char* code : {"DVC ", "dv5n", "dvcp"})
        EXPECT_EQ("QuickTime DV PAL 4:2:0 (16:9 format)", describe(code, 144000, frame)) << code;
    EXPECT_EQ("QuickTime unknown codec", describe("dv5n", 143999, frame));
    EXPECT_EQ("QuickTime AVID <video read error>", describe("AVdv", 144000, Bytes(1000)));
    EXPECT_EQ("QuickTime <video read error>", describe("dvcp", 0xFFFFFFFF, frame));
}

TEST_F(QTDescription, NamesTheOtherFormats)
{
    const std::pair<QTTestTrack, const char*> rows[] = {
        {{.format = "raw "}, "Uncompressed RGB PAL"},
        {{.format = "raw ", .height = 480}, "Uncompressed RGB 720x480 @ 25.00 fps"},
        {{.format = "raw ", .height = 480, .scale = 30000, .duration = 1001},
         "Uncompressed RGB NTSC"},
        {{.format = "SVQ1"}, "Sorenson video"},
        {{.format = "yv12"}, "Planar YUV 4:2:0"},
        {{.format = "????"}, "unknown codec"},
        {{.video = false, .format = "sowt"}, "stereo 48kHz audio"},
        {{.video = false, .format = "twos", .channels = 4, .rate = 32000}, "4-ch 32kHz audio"},
        {{.video = false, .format = "twos", .channels = 1, .rate = 22050}, "mono 22050 Hz audio"},
        {{.video = false, .format = "ulaw"}, "ulaw audio"},
        {{.video = false, .format = "ima4"}, "IMA4 audio"},
    };
    for (const auto& [track, text] : rows)
        EXPECT_EQ(std::string("QuickTime ") + text, Describe(QTOneTrack(track)));
}

TEST_F(QTDescription, SaysWhatIsWrongWithAFile)
{
    EXPECT_EQ("QuickTime unknown (no streams)", Describe(QTMoov({})));
    std::string text;
    EXPECT_FALSE(DescribeQuickTime(nullptr, text));
    EXPECT_EQ("QuickTime [prg error]", text);
    EXPECT_FALSE(DescribeQuickTime("/nowhere/at all", text));
    EXPECT_EQ("QuickTime [open error]", text);
}

}  // namespace
}  // namespace kelvane
