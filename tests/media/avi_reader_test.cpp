#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/avi_description.h"
#include "media/avi_file.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

class AVIReader : public testing::Test {
protected:
    std::string Write(std::string_view bytes, const std::string& name = "film.avi") const
    {
        return fFolder.Write(name, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    }
    // What all frames of a stream hold, in a row; a failure to read ends it.
    std::string Frames(const std::string& path, int32_t stream = 0) const
    {
        AVIFile file(path.c_str(), kRead);
        EXPECT_EQ(0, file.InitCheck());
        std::string all;
        Bytes buffer(200000);
        for (uint32_t size = 0; file.ReadFrame(stream, buffer, size) == 0;)
            all.append(buffer.begin(), buffer.begin() + size);
        return all;
    }
    std::string Described(const TinyAVI& film) const
    {
        std::string text;
        EXPECT_TRUE(DescribeAVI(Write(film.Build()).c_str(), text));
        return text;
    }

    const TempFolder fFolder;
    const std::string kAll = "frame 0!frame 1.frame 2?";
};

std::string StandardIndex(uint64_t base, const std::vector<uint32_t>& sizes)
{
    std::string body = Little(2, 2) + Little(0x100, 2) + Little(sizes.size(), 4) + "00dc" +
                       Little(base, 8) + Little(0, 4);
    for (size_t i = 0; i < sizes.size(); i++)
        body += Little(8 + 16 * i, 4) + Little(sizes[i], 4);
    return RiffChunk("ix00", body);
}

std::string SuperIndex(const std::vector<uint64_t>& places, uint32_t duration)
{
    std::string body = Little(4, 4) + Little(places.size(), 4) + "00dc" + Little(0, 12);
    for (const uint64_t at : places)
        body += Little(at, 8) + Little(0, 4) + Little(duration, 4);
    return RiffChunk("indx", body);
}

// A film whose only index is a standard index with these sizes behind three frames of 8 bytes.
TinyAVI OpenDMLFilm(const std::vector<uint32_t>& sizes)
{
    TinyAVI film;
    film.has_index = false;
    film.super_index = SuperIndex({0}, static_cast<uint32_t>(sizes.size()));
    film.super_index = SuperIndex({film.FrameHead(3)}, static_cast<uint32_t>(sizes.size()));
    film.media_end = StandardIndex(film.FrameHead(0), sizes);
    return film;
}

TEST_F(AVIReader, TakesAnyBaseOfTheOldIndex)
{
    TinyAVI film;
    for (const uint32_t first : {4u, 0u, 20u}) {
        film.first_offset = first;
        EXPECT_EQ(kAll, Frames(Write(film.Build()))) << "from movi, first entry " << first;
    }
    film.from_movi = false;
    EXPECT_EQ(kAll, Frames(Write(film.Build()))) << "from the start of the file";
    film.index = TinyAVI::IndexEntry("7Fxx", 0, 0) + TinyAVI::IndexEntry("00dc", 4, 8);
    EXPECT_EQ("frame 0!", Frames(Write(film.Build()))) << "as dvgrab begins an index";
}

TEST_F(AVIReader, RepeatsTheFrameBeforeAnEmptyEntry)
{
    TinyAVI film;
    film.index = TinyAVI::IndexEntry("00db", 4, 0) + TinyAVI::IndexEntry("00db", 4, 8) +
                 TinyAVI::IndexEntry("01wb", 20, 8) + TinyAVI::IndexEntry("00dc", 0, 0) +
                 TinyAVI::IndexEntry("00db", 36, 8);
    EXPECT_EQ("frame 0!frame 0!frame 0!frame 2?", Frames(Write(film.Build())));
}

TEST_F(AVIReader, ReadsStandardIndexesOfAllSegments)
{
    EXPECT_EQ(kAll, Frames(Write(OpenDMLFilm({8, 0x80000008, 8}).Build())));
    TinyAVI film = OpenDMLFilm({8, 0x80000000, 8});
    EXPECT_EQ("frame 0!frame 2?", Frames(Write(film.Build()))) << "an entry that gives no frame";

    film.super_index = SuperIndex({0, 0}, 3);
    const uint64_t second = film.Build().size() + 24 + 16;
    film.super_index = SuperIndex({film.FrameHead(3), second}, 3);
    film.media_end = StandardIndex(film.FrameHead(0), {8, 8, 8});
    const std::string segment = RiffList(
        "AVIX",
        {RiffList("movi", {RiffChunk("00dc", "frame 3,"), StandardIndex(second - 16, {8})})},
        "RIFF");
    EXPECT_EQ(kAll + "frame 3,", Frames(Write(film.Build() + segment)));
}

TEST_F(AVIReader, FindsFramesByTheIndexesBeyondTheTable)
{
    const AVIFile film(Write(OpenDMLFilm({8, 0x80000000, 8}).Build()).c_str(), kRead);
    uint32_t size = 0;
    EXPECT_LT(0, film.FrameOffset(0, 1, size));
    EXPECT_EQ(8u, size);
    EXPECT_EQ(-1, film.FrameOffset(0, 2, size)) << "a dropped entry does not count";
    EXPECT_EQ(-1, film.FrameOffset(0, -1, size));
    EXPECT_EQ(-1, film.FrameOffset(1, 0, size));
    EXPECT_EQ(0u, size);
}

TEST_F(AVIReader, SurvivesEveryTruncation)
{
    TinyAVI film = OpenDMLFilm({8, 8, 8});
    film.more_header = RiffList("odml", {RiffChunk("dmlh", Little(3, 4))});
    for (const std::string& whole : {TinyAVI().Build(), film.Build()}) {
        for (size_t length = 0; length < whole.size(); length++) {
            const std::string path = Write(whole.substr(0, length));
            AVIFile file(path.c_str(), kRead);
            EXPECT_EQ(length < 12 ? kNotThisClass : 0, file.InitCheck()) << length;
            if (file.InitCheck() == 0) {
                EXPECT_EQ(0u, kAll.find(Frames(path))) << length;
            }
            std::string text;
            EXPECT_EQ(length >= 12, DescribeAVI(path.c_str(), text)) << length;
        }
    }
}

TEST_F(AVIReader, OpensWhatHasNoIndexWithoutFrames)
{
    TinyAVI film;
    film.has_index = false;
    AVIFile file(Write(film.Build()).c_str(), kRead);
    EXPECT_EQ(0, file.InitCheck());
    EXPECT_EQ(1, file.CountStreams());
    EXPECT_EQ(0u, file.StreamAt(0)->frames.Count());
    EXPECT_EQ(144000, file.StreamAt(0)->largest_frame);
}

TEST_F(AVIReader, StaysInStepWithOddSizes)
{
    TinyAVI film;
    film.more_header = RiffChunk("oddl", "abc") + RiffList("INFO", {RiffChunk("INAM", "x")});
    film.frames = {"abc", "defgh"};
    EXPECT_EQ("abcdefgh", Frames(Write(film.Build())));
    const AVIFile file(Write(film.Build()).c_str(), kRead);
    bool seen = false;
    for (size_t i = 0; const Chunk* chunk = file.Chunks().ChunkAt(i); i++)
        if (chunk->id == FourCC("oddl")) seen = chunk->length == 4 && chunk->data->size() == 4;
    EXPECT_TRUE(seen) << "kept with its size rounded up";
}

TEST_F(AVIReader, TellsWhatIsNoAVIFromWhatIsCorrupt)
{
    const std::string whole = TinyAVI().Build();
    struct {
        std::string bytes;
        int status;
    } const cases[] = {
        {"", kNotThisClass},
        {RiffList("WAVE", {RiffChunk("fmt ", "0123456789abcdef")}, "RIFF"), kNotThisClass},
        {RiffList("AVI ", {}), kNotThisClass},
        {"RIFF" + Little(0, 4) + whole.substr(8), kCorrupted},
        {RiffList("AVI ", {RiffList("hdrl", {"LIST" + Little(0, 4) + "strl"})}, "RIFF"),
         kCorrupted},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.status, AVIFile(Write(c.bytes).c_str(), kRead).InitCheck());
    EXPECT_EQ(kError, AVIFile(fFolder.Path("none").c_str(), kRead).InitCheck());
    EXPECT_TRUE(IsAVIFile(Write(whole).c_str()));
    EXPECT_FALSE(IsAVIFile(Write(cases[1].bytes).c_str()));
    EXPECT_FALSE(IsAVIFile(fFolder.Path("none").c_str()));
}

TEST_F(AVIReader, ChoosesAmongTheFirstFourStreams)
{
    const auto stream = [](const std::string& type) {
        return RiffList("strl", {RiffChunk("strh", (type + "dvsd").append(48, '\0'))});
    };
    TinyAVI film;
    film.type = "auds";
    film.more_header = stream("txts") + stream("iavs") + stream("vids") + stream("vids");
    AVIFile file(Write(film.Build()).c_str(), kRead);
    EXPECT_EQ(5, file.CountStreams());
    EXPECT_EQ(0, file.AudioStream());
    EXPECT_EQ(2, file.VideoStream());
    EXPECT_EQ(0u, file.StreamAt(1)->type);
    film.more_header = stream("txts") + stream("txts") + stream("txts") + stream("vids");
    EXPECT_EQ(-1, AVIFile(Write(film.Build()).c_str(), kRead).VideoStream());
}

TEST_F(AVIReader, FollowsReferencesIntoOtherFiles)
{
    const std::string frame(144000, 'v');
    const std::string media = Write("padding." + RiffChunk("00db", frame), "film.000");
    const auto reference = [](const std::string& path) {
        return "REF " + Little(8, 4) + Little(0, 4) + Little(path.size() + 1, 4) + path + '\0';
    };
    TinyAVI film;
    film.frames = {reference(media), reference(media), reference(fFolder.Path("film.001"))};
    AVIFile file(Write(film.Build()).c_str(), kRead);
    Bytes buffer(144000), small(100000);
    uint32_t size = 0;
    EXPECT_EQ(kError, file.ReadFrame(0, small, size)) << "no room for what it refers to";
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(0, file.ReadFrame(0, buffer, size));
        EXPECT_EQ(144000u, size);
        EXPECT_EQ(frame, std::string(buffer.begin(), buffer.end()));
    }
    EXPECT_EQ(kReferenceMissing, file.ReadFrame(0, buffer, size));
    EXPECT_EQ(0u, size);

    Write("too short", "film.000");
    ASSERT_EQ(0, mkfifo(fFolder.Path("film.001").c_str(), 0600));
    AVIFile again(Write(film.Build()).c_str(), kRead);
    EXPECT_EQ(kReferenceMissing, again.ReadFrame(0, buffer, size)) << "short";
    again.StreamAt(0)->position = 2;
    EXPECT_EQ(kReferenceMissing, again.ReadFrame(0, buffer, size)) << "no regular file";
}

TEST_F(AVIReader, TakesOnlySmallChunksForReferences)
{
    TinyAVI film;
    std::string large = "REF ";
    large.resize(120000, 'x');
    film.frames = {large, "REF "};
    EXPECT_EQ(large + "REF ", Frames(Write(film.Build()))) << "a head of four bytes names nothing";
    film.frames = {"REF " + Little(0, 8) + Little(0xFFFFFFFF, 4) + "not terminated"};
    AVIFile file(Write(film.Build()).c_str(), kRead);
    Bytes buffer(144000);
    uint32_t size = 0;
    EXPECT_EQ(kReferenceMissing, file.ReadFrame(0, buffer, size));
}

TEST_F(AVIReader, RefusesFramesThatAreNotInTheFile)
{
    TinyAVI film;
    film.index = TinyAVI::IndexEntry("00db", 4, 8) + TinyAVI::IndexEntry("00db", 0x7FFFFFF0, 8) +
                 TinyAVI::IndexEntry("00db", 20, 0x7FFFFFFF);
    AVIFile file(Write(film.Build()).c_str(), kRead);
    AVIStream& stream = *file.StreamAt(0);
    EXPECT_EQ(3u, stream.frames.Count());
    EXPECT_EQ(144000, stream.largest_frame) << "nobody needs room for them";
    Bytes buffer(144000);
    uint32_t size = 0;
    EXPECT_EQ(0, file.ReadFrame(0, buffer, size));
    for (const int32_t bad : {1, 2}) {
        stream.position = bad;
        EXPECT_EQ(kError, file.ReadFrame(0, buffer, size));
        EXPECT_EQ(bad, stream.position);
    }
    EXPECT_EQ(kError, file.ReadFrame(0, {}, size));
    EXPECT_EQ(kError, file.ReadFrame(7, buffer, size));
}

TEST_F(AVIReader, KeepsMemoryInProportionToTheIndex)
{
    // Thousands of entries that all name the same large index.
    for (const uint32_t size : {8u, 0x80000000u}) {
        TinyAVI film = OpenDMLFilm(std::vector<uint32_t>(100000, size));
        film.super_index = SuperIndex(std::vector<uint64_t>(20000, 0), 100000);
        film.super_index = SuperIndex(std::vector<uint64_t>(20000, film.FrameHead(3)), 100000);
        const std::string bytes = film.Build();
        const AVIFile file(Write(bytes).c_str(), kRead);
        const size_t frames = file.StreamAt(0)->frames.Count();
        EXPECT_EQ(size == 8 ? bytes.size() / 8 : 0, frames);
        uint32_t found = 0;
        EXPECT_EQ(-1, file.FrameOffset(0, 0x7FFFFFFF, found));
    }

    // A list that claims far more than there is, in a sparse file of 6 GB.
    const std::string path = Write("RIFF" + Little(0xFFFFFFF0, 4) + "AVI LIST" +
                                   Little(0xFFFFFFE0, 4) + "hdrl" + "bulk" + Little(0xF0000000, 4));
    ASSERT_EQ(0, truncate(path.c_str(), 6'000'000'000));
    EXPECT_EQ(0, AVIFile(path.c_str(), kRead).InitCheck());
}

TEST_F(AVIReader, HoldsAnyNumberOfFrames)
{
    TinyAVI film;
    for (int i = 0; i < 40000; i++)
        film.index += TinyAVI::IndexEntry("00db", 4 + 16 * (i % 3), 8);
    AVIFile file(Write(film.Build()).c_str(), kRead);
    EXPECT_EQ(40000u, file.StreamAt(0)->frames.Count());
    file.StreamAt(0)->position = 39998;
    Bytes buffer(8);
    uint32_t size = 0;
    EXPECT_EQ(0, file.ReadFrame(0, buffer, size));
    EXPECT_EQ("frame 2?", std::string(buffer.begin(), buffer.end()));
    EXPECT_EQ(0, file.ReadFrame(0, buffer, size));
    EXPECT_EQ(kError, file.ReadFrame(0, buffer, size));
}

TEST_F(AVIReader, ReadsBeyondFourGigabytes)
{
    TinyAVI film;
    film.has_index = false;
    const uint64_t far = 5'000'000'000;
    film.super_index = SuperIndex({far + 16}, 1);
    const std::string path = Write(film.Build());
    ASSERT_EQ(0, truncate(path.c_str(), far));
    std::FILE* file = std::fopen(path.c_str(), "ab");
    const std::string tail = RiffChunk("00dc", "far away") + StandardIndex(far, {8});
    std::fwrite(tail.data(), 1, tail.size(), file);
    std::fclose(file);
    EXPECT_EQ("far away", Frames(path));
}

TEST_F(AVIReader, NestsListsOnlySoFar)
{
    std::string nested;
    for (int i = 0; i < 5000; i++)
        nested = RiffList("deep", {nested});
    TinyAVI film;
    film.more_header = nested;
    EXPECT_EQ(kAll, Frames(Write(film.Build())));
}

TEST_F(AVIReader, ListsMediaChunksOnDemand)
{
    const std::string path = Write(TinyAVI().Build());
    const AVIFile plain(path.c_str(), kRead), full(path.c_str(), kRead | kAVIListMedia);
    EXPECT_EQ(plain.Chunks().CountChunks() + 3, full.Chunks().CountChunks());
    const Chunk* frame = nullptr;
    for (size_t i = 0; const Chunk* chunk = full.Chunks().ChunkAt(i); i++)
        if (chunk->id == FourCC("00db")) frame = chunk;
    ASSERT_NE(nullptr, frame);
    EXPECT_EQ(3, frame->depth);
    EXPECT_EQ(TinyAVI().FrameHead(2) + 8, frame->offset);
    EXPECT_EQ(3u, full.StreamAt(0)->frames.Count());
}

TEST_F(AVIReader, DescribesFormatsInOneLine)
{
    TinyAVI film;
    EXPECT_EQ("AVI Type-1 DV (Microsoft) PAL", Described(film));
    film.handler = "CVDC";
    film.scale = 1000;
    film.rate = 29970;
    EXPECT_EQ("AVI Type-1 DV (Canopus) 720x576 @ 29.97 fps", Described(film));
    film.handler = "HFYU";
    EXPECT_EQ("AVI Huffyuv RGB 24-bit 720x576 @ 29.97 fps", Described(film));
    film.handler = std::string(4, '\0');
    film.rate = 25000;
    EXPECT_EQ("AVI uncompressed RGB PAL", Described(film));
    film.handler = "abcd";
    EXPECT_EQ("AVI Unrecognized codec PAL", Described(film));
    film.type = "txts";
    EXPECT_EQ("AVI unknown content", Described(film));
    film.type = "auds";
    film.handler = std::string("\0\0\0\1", 4);
    film.format = Little(1, 2) + Little(2, 2) + Little(44100, 4);
    EXPECT_EQ("AVI PCM stereo 44.1kHz", Described(film));
    film.handler[3] = '\6';
    film.format = Little(1, 2) + Little(3, 2) + Little(12345, 4);
    EXPECT_EQ("AVI A-law 3-ch 12345 Hz", Described(film));
    std::string text;
    EXPECT_FALSE(DescribeAVI(nullptr, text));
    EXPECT_EQ("AVI [prg error]", text);
    EXPECT_FALSE(DescribeAVI(fFolder.Path("none").c_str(), text));
    EXPECT_EQ("AVI [open error]", text);
    EXPECT_TRUE(DescribeAVI(Write(RiffList("AVI ", {}, "RIFF")).c_str(), text));
    EXPECT_EQ("AVI unknown (no streams)", text);
}

TEST_F(AVIReader, CapturesTheFirstFrameForADescription)
{
    std::string frame(144000, '\0');
    frame[3] = '\x80';  // 625 lines
    TinyAVI film;
    film.frames = {frame};
    film.has_index = false;
    EXPECT_EQ("AVI Type-1 DV (Microsoft) PAL 4:2:0 (16:9 format)", Described(film))
        << "no pack tells the format";
    std::string text;
    const std::string whole = film.Build();
    const size_t movi = film.FrameHead(0) - 12;
    EXPECT_TRUE(
        DescribeAVI(Write(std::string(whole).insert(movi, RiffList("INFO", {}))).c_str(), text));
    EXPECT_EQ("AVI Type-1 DV (Microsoft) PAL", text) << "only when movi is the next list";
}

}  // namespace
}  // namespace kelvane
