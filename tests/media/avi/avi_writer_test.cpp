#include <gtest/gtest.h>

#include <algorithm>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/avi/avi_file.h"
#include "media/media_files.h"
#include "support/avi_films.h"
#include "support/riff.h"
#include "support/temp_folder.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

using Words = std::vector<uint32_t>;

// Frames of `bytes` bytes; sound if that is 0.
std::vector<Bytes> Numbered(uint32_t count, size_t bytes)
{
    std::vector<Bytes> frames;
    for (uint32_t i = 0; i < count; i++)
        frames.push_back(bytes ? NumberedFrame(bytes, i) : NumberedSound(i));
    return frames;
}

class AVIWriterTest : public testing::Test {
protected:
    std::string Path(const std::string& name = "film.avi") const { return fFolder.Path(name); }
    // A film of a type, of which we read back all frames.
    RiffFilm Film(const char* type, uint32_t frames, const AVILimits& limits = {},
                  size_t size = 144000, bool pal = true) const
    {
        const AVIOutput& output = OutputNamed(type);
        SCOPED_TRACE(std::string(type) + (pal ? " PAL" : " NTSC"));
        EXPECT_EQ(frames, WriteFilm(Path(), output, pal, frames, limits, size));
        EXPECT_TRUE(Numbered(frames, size) == ReadFilm(Path()));
        EXPECT_TRUE(Numbered(output.HasSound() ? frames : 0, 0) == ReadFilm(Path(), 1));
        RiffFilm film(Path());
        EXPECT_TRUE(film.IsWhole());
        return film;
    }
    const TempFolder fFolder;
};

TEST_F(AVIWriterTest, ReadsBackEveryTypeBitForBit)
{
    for (const AVIOutput& output : kAVIOutputs) {
        for (const bool pal : {true, false}) {
            for (const uint32_t frames : {0u, 5u}) {
                const RiffFilm film = Film(output.name, frames, {}, pal ? 144000 : 120000, pal);
                EXPECT_EQ(frames, film.At("avih", 16, 4));
                EXPECT_EQ(output.HasSound() ? 2 : 1, AVIFile(Path().c_str(), kRead).CountStreams());
            }
        }
    }
}

TEST_F(AVIWriterTest, CanBeReadWhileItIsWritten)
{
    const AVILimits limits = {.first_riff = 3000000, .later_riff = 1000000, .chunks_per_index = 5};
    for (const AVIOutput& output : kAVIOutputs) {
        SCOPED_TRACE(output.name);
        AVIFile film(Path().c_str(), kCreate);
        film.SetLimits(limits);
        ASSERT_EQ(0, film.BeginDVAVI(output.flags | kAVIPAL, output.handler, 0));
        ASSERT_EQ(output.HasSound() ? kOK : kError, film.SetAudioFormat(1, 32000, 2, -1));
        for (uint32_t i = 0; i < 40; i++) {
            const Bytes frame = NumberedFrame(144000, i), sound = NumberedSound(i);
            ASSERT_EQ(0, film.WriteFrame(0, frame.data(), int32_t(frame.size())));
            if (output.HasSound()) {
                ASSERT_EQ(0, film.WriteFrame(1, sound.data(), int32_t(sound.size())));
            }
            if (i % 13 != 0) continue;
            const std::string now = fFolder.Write("now.avi", AsBytes(RiffFilm(Path()).bytes));
            // What is being written is locked: the file of the references too.
            if (!(output.flags & kAVIReference)) {
                EXPECT_TRUE(Numbered(i + 1, 144000) == ReadFilm(now)) << i;
            }
            EXPECT_TRUE(Numbered(output.HasSound() ? i + 1 : 0, 0) == ReadFilm(now, 1)) << i;
            const AVIFile file(now.c_str(), kRead);
            EXPECT_EQ(i + 1, file.CountFrames(0));
            EXPECT_LT(0u, file.FramesSalvaged(0));
            MediaFormat sound_format;
            file.StreamFormat(1, sound_format);
            if (output.HasSound()) {
                EXPECT_EQ(32000, sound_format.raw_audio.srate);
            }
        }
    }
}

struct Numbers {
    const char* type;
    bool pal;
    uint32_t media, first_frame;                    // positions of their heads
    uint32_t bytes_per_second, granularity, flags;  // "avih"
    uint32_t scale, rate, sample_size;              // "strh"
    uint32_t compressed_size;                       // biSizeImage; 0: no bitmap
};

TEST_F(AVIWriterTest, PutsTheHeadersOfEachTypeWhereTheyBelong)
{
    constexpr uint32_t kP = 144000, kN = 120000;
    const Numbers cases[] = {
        {"Type1", true, 32768, 32780, 3600200, 1, 0x810, 400000, 10000000, kP, 0},
        {"Type1OpenDML", false, 32768, 32780, 3596650, 1, 0x800, 333666, 10000000, kN, 0},
        {"Type2", false, 32768, 32780, 3596639, 1, 0x910, 10000, 299700, kN, kN},
        {"Type2OpenDML", true, 65120, 65132, 3600200, 1, 0x900, 10000, 250000, kP, kP},
        {"Type1Reference", true, 32768, 32780, 3600200, 1, 0x800, 400000, 10000000, kP, 0},
        {"Canopus1", true, 32768, 32780, 3600200, 0, 0x10, 400000, 10000000, kP, kP},
        {"Canopus2", false, 32768, 32780, 3596639, 0, 0x10, 10000, 299700, 1036800, kN},
        {"Matrox", true, 65524, 131072, 3609600, 512, 0x10030, 1, 25, kP, kP},
        {"Matrox", false, 65524, 131072, 3609600, 512, 0x10030, 1001, 30000, kN, kN},
    };
    for (const Numbers& c : cases) {
        SCOPED_TRACE(std::string(c.type) + (c.pal ? " PAL" : " NTSC"));
        const AVIOutput& output = OutputNamed(c.type);
        const bool canopus = output.flags & kAVICanopus, matrox = output.flags & kAVIMatrox;
        const uint32_t height = c.pal ? 576 : 480, interval = c.pal ? 40000 : 33366;
        const uint32_t size = c.pal ? kP : kN, streams = output.HasSound() ? 2 : 1;
        const uint32_t largest = matrox ? (c.pal ? 144384 : 120832) : size + 8;
        const RiffFilm film = Film(c.type, 3, {}, size, c.pal);
        EXPECT_EQ(c.media, film.Find("movi").head);
        EXPECT_EQ(c.first_frame, film.Find(matrox ? "00dc" : "00db").head);
        EXPECT_EQ((Words{interval, c.bytes_per_second, c.granularity, c.flags, 3, 0, streams,
                         largest, 720, height}),
                  film.Words("avih", 0, 10));
        EXPECT_EQ(canopus ? Words({c.scale, c.rate, 0, 3}) : Words(4), film.Words("avih", 40, 4));
        EXPECT_EQ((Words{0, 0, 0, c.scale, c.rate, 0, 3, largest, matrox ? ~0u : 0, c.sample_size,
                         0, 720 | height << 16}),
                  film.Words("strh", 8, 12));
        EXPECT_EQ((c.compressed_size ? "vids" : "iavs") + FourCCText(output.handler),
                  film.Text("strh", 0, 8));
        if (c.compressed_size == 0) continue;
        const uint32_t compression = __builtin_bswap32(output.handler);  // as a number of the file
        EXPECT_EQ(
            (Words{40, 720, height, 1 | 24 << 16, compression, c.compressed_size, 0, 0, 0, 0}),
            film.Words("strf", 0, 10));
    }
}

TEST_F(AVIWriterTest, OrdersTheChunks)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Type1", "AVI  hdrl avih strl strh strf JUNK movi 00db idx1"},
        {"Type2",
         "AVI  hdrl avih strl strh strf strl strh strf JUNK movi 00db 01wb 00db 01wb idx1"},
        {"Type1OpenDML", "AVI  hdrl avih strl strh strf indx odml dmlh JUNK movi 00db ix00"},
        {"Type2OpenDML",
         "AVI  hdrl avih strl strh strf indx strl strh strf indx odml dmlh JUNK movi 00db 01wb "
         "00db 01wb ix00 ix01"},
        {"Matrox",
         "AVI  hdrl avih strl strh strf indx vprp odml dmlh INFO ISFT JUNK movi ix00 00dc JUNK "
         "00dc JUNK idx1"},
    };
    for (const auto& [name, shape] : cases)
        EXPECT_EQ(shape, Film(name, 2).Shape()) << name;
}

TEST_F(AVIWriterTest, WritesTheFixedBlocks)
{
    const RiffFilm ntsc = Film("Type1", 1, {}, 120000, false);
    EXPECT_EQ(32u, ntsc.Find("strf").size);
    EXPECT_EQ((Words{0xC0C000C0, 0xFFA0CF3F, 0xC0C001C0, 0xFFA0CF3F, 0xFF80FFFF, 0xFFFCC83F, 0, 0}),
              ntsc.Words("strf", 0, 8));

    const RiffFilm sound = Film("Type2", 1);
    EXPECT_EQ((Words{1 | 2 << 16, 48000, 192000, 4 | 16 << 16}), sound.Words("strf", 0, 4, 1));
    EXPECT_EQ("auds", sound.Text("strh", 0, 4, 1));
    EXPECT_EQ((Words{1, 48000, 0, 6400 / 4, 6408}), sound.Words("strh", 20, 5, 1))
        << "length in sample frames";

    const RiffFilm matrox = Film("Matrox", 1, {}, 120000, false);
    EXPECT_EQ(72u, matrox.Find("strf").size);
    EXPECT_EQ(51192u, matrox.Find("indx").size);
    EXPECT_EQ(248u, matrox.Find("dmlh").size);
    EXPECT_EQ(1u, matrox.At("dmlh", 0, 4));
    EXPECT_EQ(std::string("Matrox MQSink Filter . Format: 4. Build: 2.0.0.271 \0", 52),
              matrox.Text("ISFT", 0, 52));
    EXPECT_EQ((Words{4, 2, 60, 858, 525, 0x00040003, 720, 485, 1, 0}), matrox.Words("vprp", 0, 10));
}

TEST_F(AVIWriterTest, IndexesByTheDialectsRules)
{
    const RiffFilm old = Film("Type2", 2);
    const auto first = static_cast<uint32_t>(old.Find("00db").head);
    EXPECT_EQ(TinyAVI::IndexEntry("00db", first, 144000) +
                  TinyAVI::IndexEntry("01wb", first + 144008, 6400),
              old.Text("idx1", 0, 32))
        << "from the file's start, in the order of the places";
    EXPECT_EQ(4u, Film("Canopus2", 2).At("idx1", 8, 4)) << "from the name movi";

    const RiffFilm matrox = Film("Matrox", 2);
    constexpr uint32_t k00dc = 0x63643030;  // as a number of the file
    EXPECT_EQ(65540u, matrox.At("idx1", 8, 4));
    EXPECT_EQ(65536u, matrox.Find("ix00").head);
    EXPECT_EQ(65528u, matrox.Find("ix00").size);
    EXPECT_EQ((Words{2 | 0x100 << 16, 2, k00dc, 131072, 0, 0, 8, 144000, 8 + 144384, 144000, 0, 0}),
              matrox.Words("ix00", 0, 12));
    EXPECT_EQ((Words{4, 1, k00dc, 0, 0, 0, 65536, 0, 65536, 2, 0, 0, 0, 0}),
              matrox.Words("indx", 0, 14));
    EXPECT_EQ(368u, matrox.Find("JUNK", 1).size);

    const RiffFilm film = Film("Type1OpenDML", 403, {}, 100);
    EXPECT_EQ("movi 00db ix00 00db ix00 00db ix00", film.Shape().substr(film.Shape().find("movi")));
    const RiffNode second = film.Find("ix00", 1);
    EXPECT_EQ(32780u, film.At("ix00", 12, 8)) << "qwBaseOffset: the head of the first frame";
    EXPECT_EQ(201u, film.At("ix00", 4, 4, 1));
    EXPECT_EQ(8u, film.At("ix00", 24, 4, 1));
    EXPECT_EQ(Little(second.head, 8) + Little(second.size + 8, 4) + Little(201, 4),
              film.Text("indx", 24 + 16, 16));
    EXPECT_EQ(1u, film.At("ix00", 4, 4, 2)) << "the last index takes what is left";
    EXPECT_EQ(403u, film.At("dmlh", 0, 4));
    EXPECT_EQ("!", Film("Type1OpenDML", 201, {}, 100).Find("ix00", 1).id) << "no empty index";
}

TEST_F(AVIWriterTest, AddsSegmentsAtTheLimits)
{
    const AVILimits limits{.first_riff = 60000, .later_riff = 20000, .chunks_per_index = 4};
    for (const char* name : {"Type1OpenDML", "Type2OpenDML", "Matrox"}) {
        const RiffFilm film = Film(name, 60, limits, 1000);
        EXPECT_EQ("AVIX", film.Find("AVIX", 1).name) << name;
        if (std::string_view(name) != "Matrox") continue;
        EXPECT_EQ("idx1", film.nodes.back().id) << "its old index stands in the last segment";
        EXPECT_EQ(60u * 16, film.nodes.back().size);
    }
    // Media without heads, the first RIFF with its reserved headers: 65536 is above the limit.
    const RiffFilm exact = Film("Type1OpenDML", 60, limits, 1000);
    EXPECT_EQ(28, std::ranges::count_if(exact.nodes, [&](const RiffNode& node) {
                  return node.id == "00db" && node.head < exact.Find("AVIX").head;
              }));
    EXPECT_EQ("!", exact.Find("idx1").id);
}

TEST_F(AVIWriterTest, BeginsAFurtherMatroxIndexWhenOneIsFull)
{
    const RiffFilm film = Film("Matrox", 8, {.matrox_index_entries = 3}, 600);
    EXPECT_EQ(4u, film.At("ix00", 4, 4));
    EXPECT_EQ(4u, film.At("ix00", 4, 4, 1));
    EXPECT_EQ("!", film.Find("ix00", 2).id) << "none without frames";
    EXPECT_EQ(film.Find("ix00", 1).head + 65536, film.At("ix00", 12, 8, 1));
    EXPECT_EQ(2u, film.At("indx", 4, 4));
    EXPECT_EQ(4u, film.At("indx", 24 + 16 + 12, 4));
}

TEST_F(AVIWriterTest, NeverOverflowsTheSuperIndex)
{
    const AVILimits limits{.chunks_per_index = 2, .super_index_entries = 8};
    const uint32_t kRoom = 6 * 3 + 5 + 9;  // six as usual, then twice as many, and so on
    const RiffFilm film = Film("Type1OpenDML", kRoom, limits, 100);
    EXPECT_EQ(8u, film.At("indx", 4, 4));
    EXPECT_EQ(3u, film.At("indx", 24 + 5 * 16 + 12, 4));
    EXPECT_EQ(5u, film.At("indx", 24 + 6 * 16 + 12, 4));
    EXPECT_EQ(9u, film.At("indx", 24 + 7 * 16 + 12, 4));
    EXPECT_EQ(kRoom, WriteFilm(Path(), OutputNamed("Type1OpenDML"), true, 100, limits, 100))
        << "then no more frames are taken";
    EXPECT_EQ(kRoom, ReadFilm(Path()).size());
}

TEST_F(AVIWriterTest, RefusesMoreThanOneRiffHolds)
{
    EXPECT_EQ(4u,
              WriteFilm(Path(), OutputNamed("Type1"), true, 9, {.only_riff = 32780 + 3000}, 1000))
        << "exactly at the limit one more is taken";
    EXPECT_TRUE(RiffFilm(Path()).IsWhole());
    EXPECT_EQ(4u, ReadFilm(Path()).size());
}

TEST_F(AVIWriterTest, NumbersReferenceFiles)
{
    const AVILimits limits{.reference_file = 300000};
    ASSERT_EQ(7u, WriteFilm(Path(), OutputNamed("Type2Reference"), true, 7, limits));
    const RiffFilm film(Path());
    EXPECT_EQ(4u * 144008, ReadWhole(Path("film.000")).size()) << "the fourth begins above it";
    EXPECT_EQ(3u * 144008, ReadWhole(Path("film.001")).size());
    const std::string name = Path("film.000");
    EXPECT_EQ((name.size() + 18) & ~size_t{1}, film.Find("00db", 1).size);
    EXPECT_EQ("REF " + Little(144008, 4) + Little(1, 4) + Little(name.size() + 1, 4) + name + '\0',
              film.Text("00db", 0, 17 + name.size(), 1));
    EXPECT_EQ(Path("film.001"), film.Text("00db", 16, name.size(), 3))
        << "the frame that crosses the limit names the next file";
    EXPECT_EQ(6400u, film.Find("01wb").size) << "sound stays";
    EXPECT_EQ(144008u, film.At("strh", 36, 4)) << "the size of a frame, not of a reference";

    std::filesystem::create_directories(Path("dot.in"));
    for (const std::string bare : {"bare", "dot.in/bare"}) {
        WriteFilm(Path(bare), OutputNamed("Type1Reference"), true, 1);
        EXPECT_EQ(144008u, ReadWhole(Path(bare + ".000")).size());
    }
}

// The file is left behind a frame whose head lies above the limit.
TEST_F(AVIWriterTest, LeavesAReferenceFileAtItsLimitToTheByte)
{
    const std::tuple<uint64_t, size_t> rows[] = {
        {2 * 144008 - 1, 3}, {2 * 144008, 4}, {2 * 144008 + 1, 4}, {0, 2}, {1, 2}};
    for (const auto& [limit, frames] : rows) {
        SCOPED_TRACE(limit);
        ASSERT_EQ(6u, WriteFilm(Path(), OutputNamed("Type1Reference"), true, 6,
                                {.reference_file = limit}));
        EXPECT_EQ(frames * 144008, ReadWhole(Path("film.000")).size());
        const RiffFilm film(Path());
        for (int i = 0; i < int(frames); i++) {
            const bool crosses = i + 1 == int(frames);
            EXPECT_EQ(uint64_t(i) * 144008, film.At("00db", 4, 4, i));
            EXPECT_EQ(Path(crosses ? "film.001" : "film.000"),
                      film.Text("00db", 16, Path("film.000").size(), i));
        }
        EXPECT_EQ(0u, film.At("00db", 4, 4, int(frames))) << "the first of the next file";
    }
}

// A frame and its padding fill sectors of 512 bytes, where a head of padding and a byte fit.
TEST_F(AVIWriterTest, FillsSectorsBehindMatroxFrames)
{
    const std::pair<size_t, uint32_t> rows[] = {{512, 496}, {514, 494}, {1006, 2},
                                                {1008, 0},  {1022, 0},  {1024, 496}};
    for (const auto& [size, padding] : rows) {
        SCOPED_TRACE(size);
        const RiffFilm film = Film("Matrox", 2, {}, size);
        const uint64_t end = film.Find("00dc").head + 8 + size;
        EXPECT_EQ(padding > 0 ? end + 8 + padding : end, film.Find("00dc", 1).head);
        const RiffNode junk = film.Find("JUNK", 1);
        EXPECT_EQ(padding, junk.size);
        EXPECT_EQ(padding > 0 ? end : 0, junk.head);
    }
}

TEST_F(AVIWriterTest, WritesPicturesThatAreNotDV)
{
    const uint8_t tables[] = {2, 24, 0, 0, 9};
    const MediaFormat huffyuv(EncodedVideoFormat{kBGR24, 64, 48, 29.97f, 0, 0, kEncodingHuffYUV, 0,
                                                 0, -1, sizeof tables, tables});
    const MediaFormat mono(RawAudioFormat{kSamplePCM, 1, 8, 32000});
    {
        AVIFile file(Path().c_str(), kCreate);
        ASSERT_EQ(0, file.BeginAVI(0x0108));
        ASSERT_EQ(0, file.AddEncodedVideoStream(huffyuv));
        ASSERT_EQ(0, file.AddAudioStream(mono));
        for (int32_t size : {501, 700, 33})
            ASSERT_EQ(0, file.WriteFrame(0, Bytes(1000).data(), size));
        ASSERT_EQ(0, file.WriteFrame(1, Bytes(77).data(), 77));
        EXPECT_EQ(kError, file.AddAudioStream(mono)) << "too late";
    }
    const RiffFilm film(Path());
    EXPECT_TRUE(film.IsWhole()) << "odd frames are padded";
    EXPECT_EQ("HFYU", film.Text("strh", 4));
    EXPECT_EQ(299700u, film.At("strh", 24, 4));
    EXPECT_EQ(46u, film.Find("strf").size);
    EXPECT_EQ(45u, film.At("strf", 0, 4));
    EXPECT_EQ(700u, film.At("strf", 20, 4));
    EXPECT_EQ(77u, film.At("strh", 32, 4, 1));
    EXPECT_EQ(0x910u, film.At("avih", 12, 4));
    EXPECT_EQ(64u, film.At("avih", 32, 4));

    AVIFile file(Path().c_str(), kRead);
    MediaFormat format;
    file.StreamFormat(0, format);
    EXPECT_EQ(kEncodingHuffYUV, format.encoded_video.encoding);
    EXPECT_EQ(48, format.Height());
    EXPECT_FLOAT_EQ(29.97f, format.FrameRate());
    EXPECT_EQ(0, memcmp(tables, format.encoded_video.private_data, sizeof tables));
    file.StreamFormat(1, format);
    EXPECT_EQ(kRawAudio, format.kind);
    EXPECT_EQ(32000, format.raw_audio.srate);
    EXPECT_EQ(8, format.raw_audio.bitspersample);
    EXPECT_EQ(33u, ReadFilm(Path())[2].size());
}

TEST_F(AVIWriterTest, PlansRawPicturesAndDVByFormat)
{
    const MediaFormat raw = Raw(kUYVY, 720, 486);
    AVIFile file(Path().c_str(), kCreate);
    ASSERT_EQ(0, file.BeginAVI(0x0108));
    EXPECT_EQ(kError, file.BeginAVI(0x0108)) << "once";
    ASSERT_EQ(0, file.AddVideoStream(raw));
    ASSERT_EQ(0, file.AddEncodedVideoStream(DVFormat(false)));
    MediaFormat format;
    file.StreamFormat(0, format);
    EXPECT_EQ(kUYVY, format.Space());
    EXPECT_EQ(486, format.Height());
    EXPECT_EQ("CDVC"_4cc, file.StreamHandler(1));
    EXPECT_TRUE(file.StreamAt(1)->IsInterleaved());
    EXPECT_FALSE(file.StreamAt(1)->IsPAL());

    AVIFile reference(Path("other").c_str(), kCreate);
    ASSERT_EQ(0, reference.BeginAVI(kAVIReference));
    EXPECT_EQ(kFormatNotSupported, reference.AddVideoStream(raw));
}

TEST_F(AVIWriterTest, TakesTheFormatsThatAreKnownLate)
{
    {
        AVIFile file(Path().c_str(), kCreate);
        ASSERT_EQ(0, file.BeginDVAVI(0x0002, "dsvd"_4cc, 2));
        EXPECT_EQ(kError, file.SetAudioFormat(0, 48000, 2, 16)) << "no sound in stream 0";
        EXPECT_EQ(0, file.SetAudioFormat(1, 44100, 4, -1));
        std::string block = Little(44, 4) + Little(720, 4) + Little(576, 4) + Little(1, 2) +
                            Little(24, 2) + "xxxx" + std::string(20, '\0') + "more and more";
        const std::span bytes = AsBytes(block);
        EXPECT_EQ(0, file.SetVideoFormat(0, bytes));
        EXPECT_EQ(kError, file.SetVideoFormat(0, bytes.first(43))) << "shorter than it says";
        EXPECT_EQ(kError, file.SetVideoFormat(1, bytes));
        ASSERT_EQ(0, file.WriteFrame(0, block.data(), 50));
        ASSERT_EQ(0, file.WriteFrame(1, block.data(), 60));
        block[0] = 40;
        EXPECT_EQ(kError, file.SetVideoFormat(0, bytes)) << "the headers have their place";
    }
    const RiffFilm film(Path());
    EXPECT_EQ("dvsd", film.Text("strh", 4));
    EXPECT_EQ("more", film.Text("strf", 40));
    EXPECT_EQ(32768u, film.Find("movi").head);
    EXPECT_EQ((Words{1 | 4 << 16, 44100, 352800, 8 | 16 << 16}), film.Words("strf", 0, 4, 1))
        << "whatever plays it goes by the block";
    EXPECT_EQ((Words{44100, 0, 7}), film.Words("strh", 24, 3, 1));
    EXPECT_EQ(8u, film.At("strh", 44, 4, 1)) << "bytes of a sample";
}

TEST_F(AVIWriterTest, RefusesWhatMakesNoSense)
{
    AVIFile nowhere("/nowhere/at all.avi", kCreate);
    EXPECT_EQ(kError, nowhere.InitCheck());
    EXPECT_EQ(kError, nowhere.BeginAVI(0));
    const Bytes frame(1000);
    {
        AVIFile film(Path().c_str(), kCreate);
        EXPECT_EQ(kError, film.WriteFrame(0, frame.data(), 1000)) << "not begun";
        ASSERT_EQ(0, film.BeginDVAVI(0x0101, 0, 0));
        EXPECT_EQ(kError, film.WriteFrame(0, frame.data(), 0));
        EXPECT_EQ(kError, film.WriteFrame(0, nullptr, 10));
        EXPECT_EQ(kError, film.WriteFrame(1, frame.data(), 10));
    }
    ASSERT_EQ(1u, WriteFilm(Path(), OutputNamed("Type1"), true, 1));
    AVIFile source(Path().c_str(), kRead);
    EXPECT_EQ(kError, source.WriteFrame(0, frame.data(), 1000));
    EXPECT_EQ(kError, source.BeginAVI(0));
}

}  // namespace
}  // namespace kelvane
