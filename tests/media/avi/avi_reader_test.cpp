#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/avi/avi_reader_case.h"
#include "platform/files/file_handle.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using namespace std::string_literals;

const std::string kAll = "frame 0!frame 1.frame 2?";
const auto Entry = TinyAVI::IndexEntry;

// The number that the file that is opened next gets.
int NextHandle()
{
    return FileHolder(dup(STDIN_FILENO)).Handle();
}

TEST_F(AVIReader, TakesAnyOldIndex)
{
    for (const uint32_t first : {4u, 0u, 20u})
        EXPECT_EQ(kAll, Frames({.first_offset = first})) << "from movi, first entry " << first;
    EXPECT_EQ(kAll, Frames({.from_movi = false})) << "from the start of the file";
    EXPECT_EQ("frame 0!frame 2?",
              Frames({.index = Entry("7Fxx", 0, 0) + Entry("00dc", 4, 8) + Entry("00dc", 36, 8)}))
        << "as dvgrab begins an index";
    const std::string repeating = Entry("00db", 4, 0) + Entry("00db", 4, 8) + Entry("01wb", 20, 8) +
                                  Entry("00dc", 0, 0) + Entry("00db", 36, 8);
    EXPECT_EQ("frame 0!frame 0!frame 0!frame 2?", Frames({.index = repeating}))
        << "an empty entry repeats the frame before";
}

TEST_F(AVIReader, ReadsStandardIndexesOfAllSegments)
{
    EXPECT_EQ(kAll, Frames(TinyAVI::OpenDML({8, 0x80000008, 8})));
    TinyAVI film = TinyAVI::OpenDML({8, 0x80000000, 8});
    EXPECT_EQ("frame 0!frame 2?", Frames(film)) << "an entry without data";
    const AVIFile file = Open(film.Build());
    uint32_t size = 0;
    EXPECT_LT(0, file.FrameOffset(0, 2, size));
    EXPECT_EQ(8u, size);
    EXPECT_EQ(-1, file.FrameOffset(0, 3, size));
    EXPECT_EQ(-1, file.FrameOffset(0, -1, size));
    EXPECT_EQ(-1, file.FrameOffset(1, 0, size));
    EXPECT_EQ(0u, size);

    film.super_index = SuperIndex({0, 0}, 3);
    const uint64_t second = film.Build().size() + 24 + 16;
    film.super_index = SuperIndex({film.FrameHead(3), second}, 3);
    film.media_end = StandardIndex(film.FrameHead(0), {8, 8, 8});
    const std::string segment = RiffList(
        "AVIX",
        {RiffList("movi", {RiffChunk("00dc", "frame 3,"), StandardIndex(second - 16, {8})})},
        "RIFF");
    EXPECT_EQ(kAll + "frame 3,", FramesOf(Put(film.Build() + segment)));
}

TEST_F(AVIReader, KeepsTheTimeOfFramesThatHaveNoData)
{
    const uint32_t held = 0x80000000;
    const std::string a = "frame 0!", c = "frame 2?", end = " " + Failed(kEnd);
    const struct {
        std::vector<uint32_t> sizes;
        std::string pictures, sound;  // "" for a frame that is held
    } rows[] = {
        {{8, 0, 8}, a + " " + a + " " + c, a + " " + c}, {{0, 0, 8}, c + " " + c + " " + c, c},
        {{8, held, 8}, a + "  " + c, a + " " + c},       {{held, held, 8}, "  " + c, c},
        {{8, held, 0}, a + "  " + end, a + end},         {{0, held, 8}, " " + c + " " + c, c},
    };
    for (const auto& row : rows) {
        TinyAVI film = TinyAVI::OpenDML(row.sizes);
        AVIFile pictures = Open(film.Build());
        const std::string all = NextFrames(pictures);
        EXPECT_TRUE(all.starts_with(row.pictures)) << all;
        EXPECT_EQ(int64_t(row.sizes.size()), pictures.CountFrames(0)) << all;
        EXPECT_FALSE(pictures.WasWalked());
        film.type = "auds";
        AVIFile sound = Open(film.Build());
        EXPECT_TRUE(NextFrames(sound).starts_with(row.sound)) << row.sound;
    }
    const std::string empty = Entry("00wb", 4, 8) + Entry("00wb", 20, 0) + Entry("00wb", 36, 8);
    EXPECT_EQ(a + c, Frames({.type = "auds", .index = empty}));
}

TEST_F(AVIReader, RefusesFramesThatAreHeldForDays)
{
    const uint32_t day = 24 * 60 * 60;
    for (const uint32_t seconds : {day, day + 1}) {
        std::vector<uint32_t> sizes(seconds + 1, 0x80000000);
        sizes[0] = 8;
        TinyAVI film = TinyAVI::OpenDML(sizes);
        film.rate = 1;
        const AVIFile file = Open(film.Build());
        EXPECT_EQ(seconds == day ? kOK : kCorrupted, file.InitCheck());
        EXPECT_EQ(seconds + 1, file.CountFrames(0));
    }
}

TEST_F(AVIReader, ReadsAllWholeFramesOfATruncatedFile)
{
    TinyAVI film = TinyAVI::OpenDML({8, 8, 8});
    film.more_header = RiffList("odml", {RiffChunk("dmlh", Little(3, 4))});
    for (const TinyAVI& cut : {TinyAVI(), film}) {
        const std::string whole = cut.Build();
        for (size_t length = 0; length < whole.size(); length++) {
            const std::string path = Put(whole.substr(0, length));
            Described(path, length >= 12);
            if (length < 12) continue;
            size_t frames = 0;
            while (frames < 3 && length >= cut.FrameHead(frames) + 16)
                frames++;
            AVIFile file(path.c_str(), kRead);
            std::string all;
            for (size_t i = 0; i < frames; i++)
                all += NextFrame(file);
            EXPECT_EQ(kAll.substr(0, all.size()), all) << length;
            EXPECT_EQ(frames * 8, all.size()) << length;
            // A super index in front tells of frames that are gone.
            const bool promised = !cut.has_index && length >= cut.FrameHead(0) - 12;
            if (file.CountStreams() == 0) continue;
            if (promised) {
                EXPECT_EQ(3, file.CountFrames(0)) << length;
            }
            EXPECT_EQ(Failed(file.CountFrames(0) > int64_t(frames) ? kMissing : kEnd),
                      NextFrame(file))
                << length;
        }
    }
}

TEST_F(AVIReader, StaysInStepWithOddSizes)
{
    const TinyAVI film{
        .frames = {"abc", "defgh"},
        .more_header = RiffChunk("oddl", "abc") + RiffList("INFO", {RiffChunk("INAM", "x")})};
    EXPECT_EQ("abcdefgh", Frames(film));
    const AVIFile file = Open(film.Build());
    bool seen = false;
    for (size_t i = 0; const Chunk* chunk = file.Chunks().ChunkAt(i); i++)
        if (chunk->id == "oddl"_4cc) seen = chunk->length == 4 && chunk->data->size() == 4;
    EXPECT_TRUE(seen) << "kept with its size rounded up";
}

TEST_F(AVIReader, TellsWhatIsNoAVIFromWhatIsCorrupt)
{
    const std::string whole = TinyAVI().Build();
    const std::pair<std::string, int> cases[] = {
        {"", kNotThisClass},
        {whole.substr(0, 11), kNotThisClass},
        {RiffList("WAVE", {RiffChunk("fmt ", "0123456789abcdef")}, "RIFF"), kNotThisClass},
        {RiffList("AVI ", {}), kNotThisClass},
        {"RIFF" + Little(0, 4) + whole.substr(8), kOK},
        {RiffList("AVI ", {RiffList("hdrl", {"LIST" + Little(0, 4) + "strl"})}, "RIFF"),
         kCorrupted},
    };
    for (const auto& [bytes, status] : cases) {
        EXPECT_EQ(status, Open(bytes).InitCheck());
        EXPECT_EQ(status != kNotThisClass, IsAVIFile(fFolder.Path("film.avi").c_str()));
    }
    EXPECT_EQ(kError, AVIFile(fFolder.Path("none").c_str(), kRead).InitCheck());
    EXPECT_FALSE(IsAVIFile(fFolder.Path("none").c_str()));
}

TEST_F(AVIReader, ChoosesAmongTheFirstFourStreams)
{
    const auto stream = [](const std::string& type) {
        return RiffList("strl", {RiffChunk("strh", (type + "dvsd").append(48, '\0'))});
    };
    const auto open = [&](const std::string& streams) {
        return Open(TinyAVI{.type = "auds", .more_header = streams}.Build());
    };
    const AVIFile file = open(stream("txts") + stream("iavs") + stream("vids") + stream("vids"));
    EXPECT_EQ(5, file.CountStreams());
    EXPECT_EQ(0, file.AudioStream());
    EXPECT_EQ(2, file.VideoStream());
    EXPECT_EQ(0u, file.StreamAt(1)->type);
    const std::string texts = stream("txts") + stream("txts") + stream("txts");
    EXPECT_EQ(-1, open(texts + stream("vids")).VideoStream());
}

TEST_F(AVIReader, TellsWhyAFrameDoesNotCome)
{
    const TinyAVI film{.index = Entry("00db", 4, 8) + Entry("00db", 0x7FFFFFF0, 8) +
                                Entry("00db", 20, 0x7FFFFFFF)};
    AVIFile file = Open(film.Build());
    AVIStream& stream = *file.StreamAt(0);
    EXPECT_EQ(3, file.CountFrames(0));
    EXPECT_EQ(144000, stream.largest_frame) << "nobody needs room for them";
    EXPECT_EQ("frame 0!", NextFrame(file));
    for (const int32_t bad : {1, 2}) {
        EXPECT_EQ(0, file.SeekFrame(0, bad));
        EXPECT_EQ(Failed(kMissing), NextFrame(file));
        EXPECT_EQ(Failed(kMissing), NextFrame(file, 0, 4)) << "not too large first";
        EXPECT_EQ(bad, stream.position);
    }
    EXPECT_EQ(0x7FFFFFFFu, file.FrameBytes(0, 2));
    EXPECT_EQ(0u, file.FrameBytes(0, 3));
    EXPECT_EQ(0, file.SeekFrame(0, 3));
    EXPECT_EQ(Failed(kEnd), NextFrame(file));
    for (const int64_t nowhere : {int64_t{-1}, int64_t{4}, int64_t{1} << 32})
        EXPECT_EQ(kError, file.SeekFrame(0, nowhere));
    EXPECT_EQ(kError, file.SeekFrame(1, 0));
    EXPECT_EQ(3, stream.position);

    EXPECT_EQ(0, file.SeekFrame(0, 0));
    EXPECT_EQ(Failed(kError), NextFrame(file, 0, 0));
    Bytes buffer(7);
    uint32_t size = 0;
    EXPECT_EQ(kTooLarge, file.ReadFrame(0, buffer, size));
    EXPECT_EQ("frame 0", AsText(buffer));
    EXPECT_EQ(7u, size);
    EXPECT_EQ("frame 0!", NextFrame(file)) << "the place stays";
}

TEST_F(AVIReader, TellsAFileThatGotShorterFromOneThatIsUnreadable)
{
    const std::string path = Put(TinyAVI().Build());
    const int handle = NextHandle();
    AVIFile file(path.c_str(), kRead);
    const FileHolder whole(dup(handle)), unreadable(open("/dev/null", O_WRONLY));
    EXPECT_EQ("frame 0!", NextFrame(file));
    ASSERT_EQ(handle, dup2(unreadable.Handle(), handle));
    Bytes buffer(144000);
    uint32_t size = 0;
    const Status status = file.ReadFrame(0, buffer, size);
    EXPECT_EQ(kUnread, status);
    EXPECT_EQ(EBADF, status.SystemError());
    ASSERT_EQ(handle, dup2(whole.Handle(), handle));
    EXPECT_EQ(0, file.SeekFrame(0, 2));
    EXPECT_EQ("frame 2?", NextFrame(file)) << "it goes on behind";
    ASSERT_EQ(0, truncate(path.c_str(), static_cast<off_t>(TinyAVI().FrameHead(2) + 15)));
    EXPECT_EQ(0, file.SeekFrame(0, 1));
    EXPECT_EQ("frame 1.", NextFrame(file));
    EXPECT_EQ(Failed(kMissing), NextFrame(file));
    buffer.resize(4);
    EXPECT_EQ(kMissing, file.ReadFrame(0, buffer, size)) << "also when only its head is wanted";
    EXPECT_EQ(3, file.CountFrames(0)) << "promised is promised";
}

TEST_F(AVIReader, NeverTakesASumThatOverflowsForAPlace)
{
    const uint32_t highest = 0xFFFFFFFF;
    for (const bool from_movi : {true, false}) {
        TinyAVI film{.from_movi = from_movi};
        const uint64_t first = from_movi ? 4 : film.FrameHead(0);
        film.index = Entry("00db", static_cast<uint32_t>(first), 8);
        for (const uint32_t offset : {highest, highest - 7, highest - 8, highest - 20})
            film.index += Entry("00db", offset, 8);
        AVIFile file = Open(film.Build());
        EXPECT_EQ("frame 0!", NextFrame(file));
        for (int32_t i = 1; i < 5; i++) {
            EXPECT_EQ(0, file.SeekFrame(0, i));
            EXPECT_EQ(Failed(kMissing), NextFrame(file)) << i;
            uint32_t size = 0;
            EXPECT_LT(0xFFFFFF00, file.FrameOffset(0, i, size));
        }
    }
    const uint64_t most = ~uint64_t{0};
    for (const uint64_t base : {most, most - 7, most - 15, most / 2, most / 2 - 15, most / 2 + 1}) {
        TinyAVI film = TinyAVI::OpenDML({8, 0x80000008});
        film.media_end = StandardIndex(base, {8, 0x80000008});
        AVIFile file = Open(film.Build());
        for (int32_t i = 0; i < 2; i++) {
            EXPECT_EQ(0, file.SeekFrame(0, i));
            EXPECT_EQ(Failed(kMissing), NextFrame(file)) << base << " " << i;
        }
    }
    // A place of an index that wraps round to a header in the file.
    const TinyAVI plain = TinyAVI::OpenDML({8});
    for (const uint64_t place : {most, most - 7, most - 7 + 32, uint64_t{32} - 8, most / 2}) {
        TinyAVI film = plain;
        film.super_index = SuperIndex({place}, 3);
        EXPECT_EQ(kAll, Frames(film)) << place;
    }
}

TEST_F(AVIReader, KeepsMemoryInProportionToTheIndex)
{
    // Thousands of entries that all name the same large index.
    for (const uint32_t size : {8u, 0x80000000u}) {
        TinyAVI film = TinyAVI::OpenDML(std::vector<uint32_t>(100000, size));
        film.super_index = SuperIndex(std::vector<uint64_t>(20000, 0), 100000);
        film.super_index = SuperIndex(std::vector<uint64_t>(20000, film.FrameHead(3)), 100000);
        const std::string bytes = film.Build();
        const AVIFile file = Open(bytes);
        EXPECT_EQ(bytes.size() / 8, file.StreamAt(0)->frames.Count());
        uint32_t found = 0;
        EXPECT_EQ(-1, file.FrameOffset(0, 0x7FFFFFFF, found));
    }

    // A list that claims far more than there is, in a sparse file of 6 GB.
    const std::string path = Put("RIFF" + Little(0xFFFFFFF0, 4) + "AVI LIST" +
                                 Little(0xFFFFFFE0, 4) + "hdrl" + "bulk" + Little(0xF0000000, 4));
    ASSERT_EQ(0, truncate(path.c_str(), 6'000'000'000));
    EXPECT_EQ(0, AVIFile(path.c_str(), kRead).InitCheck());
}

TEST_F(AVIReader, HoldsAnyNumberOfFrames)
{
    std::string index;
    for (int i = 0; i < 40000; i++)
        index += Entry("00db", 4 + 16 * (i % 3), 8);
    const std::string all = Frames({.index = index});
    EXPECT_EQ(40000u * 8, all.size());
    EXPECT_TRUE(all.ends_with("frame 2?frame 0!"));
}

TEST_F(AVIReader, ReadsBeyondFourGigabytes)
{
    const uint64_t far = 5'000'000'000;
    const TinyAVI film{.super_index = SuperIndex({far + 16}, 1), .has_index = false};
    const std::string path = Put(film.Build());
    ASSERT_EQ(0, truncate(path.c_str(), far));
    std::ofstream(path, std::ios::app) << RiffChunk("00dc", "far away") << StandardIndex(far, {8});
    EXPECT_EQ("far away", FramesOf(path));
}

TEST_F(AVIReader, NestsListsOnlySoFar)
{
    std::string nested;
    for (int i = 0; i < 5000; i++)
        nested = RiffList("deep", {nested});
    EXPECT_EQ(kAll, Frames({.more_header = nested}));
}

TEST_F(AVIReader, ListsMediaChunksOnDemand)
{
    const std::string path = Put(TinyAVI().Build());
    const AVIFile plain(path.c_str(), kRead), full(path.c_str(), kRead | kAVIListMedia);
    EXPECT_EQ(plain.Chunks().CountChunks() + 3, full.Chunks().CountChunks());
    const Chunk* frame = nullptr;
    for (size_t i = 0; const Chunk* chunk = full.Chunks().ChunkAt(i); i++)
        if (chunk->id == "00db"_4cc) frame = chunk;
    ASSERT_NE(nullptr, frame);
    EXPECT_EQ(3, frame->depth);
    EXPECT_EQ(TinyAVI().FrameHead(2) + 8, frame->offset);
    EXPECT_EQ(3u, full.StreamAt(0)->frames.Count());
}

TEST_F(AVIReader, DescribesFormatsInOneLine)
{
    const auto Bitmap = [](int bits, const std::string& compression) {
        return Little(40, 4) + Little(720, 4) + Little(576, 4) + Little(1, 2) + Little(bits, 2) +
               compression + std::string(20, '\0');
    };
    const std::pair<TinyAVI, const char*> rows[] = {
        {{}, "AVI Type-1 DV (Microsoft) PAL"},
        {{.handler = "CVDC", .scale = 1000, .rate = 29970},
         "AVI Type-1 DV (Canopus) 720x576 @ 29.97 fps"},
        {{.handler = "HFYU", .scale = 1001, .rate = 30000},
         "AVI Huffyuv RGB 24-bit 720x576 @ 29.97 fps"},
        {{.handler = "\0\0\0\0"s, .scale = 1000, .rate = 25000}, "AVI uncompressed RGB PAL"},
        {{.handler = "abcd"}, "AVI Unrecognized codec PAL"},
        {{.handler = "dvsl"}, "AVI Unrecognized codec PAL"},
        {{.handler = "\0\0\0\0"s, .format = Bitmap(24, "dv25")}, "AVI Type-1 DVCPRO25 PAL"},
        {{.handler = "\0\0\0\0"s, .format = Bitmap(16, "UYVY")},
         "AVI uncompressed YUV 4:2:2 ('UYVY') PAL"},
        {{.handler = "\0\0\0\0"s, .format = Bitmap(16, "\0\0\0\0"s)}, "AVI uncompressed RGB PAL"},
        {{.handler = "\0\0\0\0"s, .scale = 1, .rate = 15, .format = Bitmap(32, "\3\0\0\0"s)},
         "AVI uncompressed RGB 720x576 @ 15.00 fps"},
        {{.type = "txts"}, "AVI unknown content"},
        {{.handler = "\0\0\0\1"s,
          .type = "auds",
          .format = Little(1 | 2 << 16, 4) + Little(44100, 4)},
         "AVI PCM stereo 44.1kHz"},
        {{.handler = "\0\0\0\6"s,
          .type = "auds",
          .format = Little(1 | 3 << 16, 4) + Little(12345, 4)},
         "AVI A-law 3-ch 12345 Hz"},
    };
    for (const auto& [film, expected] : rows)
        EXPECT_EQ(expected, Described(Put(film.Build())));
    EXPECT_EQ("AVI [open error]", Described(fFolder.Path("none"), false));
    std::string text;
    EXPECT_FALSE(DescribeAVI(nullptr, text));
    EXPECT_EQ("AVI [prg error]", text);
    EXPECT_EQ("AVI unknown (no streams)", Described(Put(RiffList("AVI ", {}, "RIFF"))));
}

TEST_F(AVIReader, CapturesTheFirstFrameForADescription)
{
    std::string frame(144000, '\0');
    frame[3] = '\x80';  // 625 lines
    const TinyAVI film{.frames = {frame}, .has_index = false};
    std::string whole = film.Build();
    EXPECT_EQ("AVI Type-1 DV (Microsoft) PAL 4:2:0 (16:9 format)", Described(Put(whole)))
        << "no pack tells the format";
    frame.replace(0, 3, "\x1F\x07\0"s);
    TinyAVI other{.handler = "PDVC", .frames = {frame}, .has_index = false};
    EXPECT_EQ("AVI Type-1 DV PAL 4:2:0 (16:9 format)", Described(Put(other.Build())));
    whole.insert(film.FrameHead(0) - 12, RiffList("INFO", {}));
    EXPECT_EQ("AVI Type-1 DV (Microsoft) PAL", Described(Put(whole)))
        << "only when movi is the next list";
}

}  // namespace
}  // namespace kelvane
