#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "media/avi/avi_file.h"
#include "media/avi/reader/avi_index.h"
#include "media/avi/reader/avi_parser.h"
#include "media/media_files.h"
#include "platform/files/file_handle.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

const auto Entry = TinyAVI::IndexEntry;

// What a film reads as, frame by frame up to the status that ends it, and how many it promises.
class AVIWalkTest : public testing::Test {
protected:
    struct Reading {
        std::string frames;
        int64_t count;
        bool walked;
        bool operator==(const Reading&) const = default;
        friend std::ostream& operator<<(std::ostream& out, const Reading& reading)
        {
            return out << reading.frames << ", " << reading.count
                       << (reading.walked ? " walked" : "");
        }
    };
    Reading Read(const std::string& bytes, int32_t stream = 0) const
    {
        AVIFile file(fFolder.Write("film.avi", AsBytes(bytes)).c_str(), kRead);
        EXPECT_EQ(0, file.InitCheck());
        const std::string frames = NextFrames(file, stream);
        return {frames, file.CountFrames(stream), file.WasWalked()};
    }
    Reading Read(const TinyAVI& film) const { return Read(film.Build()); }

    const TempFolder fFolder;
};

std::string WithEnd(const std::string& frames, int status = kEnd)
{
    return frames + " (" + std::to_string(status) + ")";
}

// Six frames "AAAAAAAA" to "FFFFFFFF", with three standard indexes of two each, of
// which the middle one can be changed.
struct ThreeIndexes {
    std::string middle = {};    // in place of the index
    uint64_t middle_place = 0;  // that the super index tells; 0: the true one
    uint32_t duration = 2;

    static std::string Frame(char name) { return RiffChunk("00db", std::string(8, name)); }
    static std::string Whole(uint64_t base) { return StandardIndex(base, {8, 8}); }
    TinyAVI Film() const
    {
        TinyAVI film{.frames = {}, .super_index = SuperIndex({0, 0, 0}, 2), .has_index = false};
        uint64_t at = film.FrameHead(0);
        std::vector<uint64_t> places;
        for (const char* names : {"AB", "CD", "EF"}) {
            const uint64_t base = at;
            film.media_end += Frame(names[0]) + Frame(names[1]);
            at += 32;
            const bool changed = names[0] == 'C';
            places.push_back(changed && middle_place ? middle_place : at);
            const std::string index = changed && !middle.empty() ? middle : Whole(base);
            film.media_end += index;
            at += index.size();
        }
        film.super_index = SuperIndex(places, duration);
        return film;
    }
};
const std::string kSix = "AAAAAAAA BBBBBBBB CCCCCCCC DDDDDDDD EEEEEEEE FFFFFFFF";

TEST_F(AVIWalkTest, TakesTheChunksThatNoIndexNames)
{
    const std::string three = "frame 0! frame 1. frame 2?", more = three + " more";
    const std::string chunk = RiffChunk("00db", "more");
    const struct {
        std::string behind, frames;
        int64_t count;
    } cases[] = {
        {chunk, more, 4},
        {RiffChunk("00dc", "more"), more, 4},
        {RiffChunk("00iv", "more"), more, 4},
        {RiffChunk("00__", "more"), more, 4},
        {RiffChunk("00wb", "none") + RiffChunk("01db", "none") + RiffChunk("00pc", "none"), three,
         3},
        {RiffChunk("0xdb", "none") + RiffChunk("JUNK", "junk") + chunk, more, 4},
        {RiffChunk("ix00", "") + RiffChunk("00ix", "12345") + chunk, more, 4},
        {RiffChunk("00db", "odd") + chunk, three + " odd more", 5},
        {RiffChunk("00db", "") + chunk + RiffChunk("00db", "") + RiffChunk("00dc", ""),
         three + " frame 2? more more more", 7},
        {RiffList("rec ", {chunk, RiffList("REC ", {chunk})}) + chunk, more + " more more", 6},
        {RiffList("else", {chunk}) + "LIST", three, 3},
        {chunk + "00db" + Little(9, 4) + "too long", more, 4},
        {chunk + "00db" + Little(0xFFFFFFFF, 4) + "too long", more, 4},
        {chunk + "00db\x04", more, 4},
    };
    for (const auto& [behind, frames, count] : cases) {
        const Reading found{WithEnd(frames), count, true};
        EXPECT_EQ(found, Read(TinyAVI{.media_end = behind, .has_index = false})) << behind;
        const Reading appended{found.frames, count, count > 3};
        EXPECT_EQ(appended, Read(TinyAVI{.media_end = behind})) << "with idx1; " << behind;
        EXPECT_EQ(appended, Read(TinyAVI{.from_movi = false, .media_end = behind})) << behind;
        TinyAVI film = TinyAVI::OpenDML({8, 8, 8});
        film.media_end += behind;
        EXPECT_EQ(appended, Read(film)) << "with indx; " << behind;
    }
}

TEST_F(AVIWalkTest, HoldsFramesInFrontOfTheFirst)
{
    EXPECT_EQ((Reading{WithEnd("first first first"), 3, true}),
              Read(TinyAVI{.frames = {"", "", "first"}, .has_index = false}));
    EXPECT_EQ((Reading{"(" + std::to_string(kEnd) + ")", 0, false}),
              Read(TinyAVI{.frames = {"", ""}, .has_index = false}));
    const std::string held = Entry("00db", 4, 8) + Entry("00db", 20, 0) + Entry("00db", 28, 0);
    EXPECT_EQ((Reading{WithEnd("first... first... first..."), 3, false}),
              Read(TinyAVI{.frames = {"first...", "", ""}, .index = held}))
        << "empty chunks that an index names are not taken again";
}

TEST_F(AVIWalkTest, FillsTheGapOfALostIndex)
{
    EXPECT_EQ((Reading{WithEnd(kSix), 6, false}), Read(ThreeIndexes{}.Film()));
    const uint64_t most = ~uint64_t{0};
    std::string fields = ThreeIndexes::Whole(0), empty = fields, cut = fields;
    fields[8 + 2] = 1;
    empty.replace(8, empty.size() - 8, empty.size() - 8, '\0');
    cut[8 + 4] = 3;
    const ThreeIndexes lost[] = {
        {.middle_place = most},
        {.middle_place = most / 2 - 8},
        {.middle_place = 1 << 20},
        {.middle_place = 40},
        {.middle_place = TinyAVI{.super_index = SuperIndex({0, 0, 0}, 2)}.FrameHead(0)},
        {.middle = fields},
        {.middle = empty},
        {.middle = RiffChunk("ix00", "too short for a head")},
        {.middle = RiffChunk("strf", std::string(100, '\1'))},
    };
    for (size_t i = 0; i < std::size(lost); i++)
        EXPECT_EQ((Reading{WithEnd(kSix), 6, true}), Read(lost[i].Film())) << i;

    // An index with one entry, that says it has two, leaves a gap behind the first.
    const uint64_t middle =
        TinyAVI{.frames = {}, .super_index = SuperIndex({0, 0, 0}, 2)}.FrameHead(0) + 32 +
        fields.size();
    std::string half = StandardIndex(middle, {8});
    half[8 + 4] = 2;
    EXPECT_EQ((Reading{WithEnd(kSix), 6, true}), Read(ThreeIndexes{.middle = half}.Film()));
}

TEST_F(AVIWalkTest, CountsPromisedFramesThatAreNowhere)
{
    EXPECT_EQ((Reading{WithEnd(kSix, kMissing), 9, true}),
              Read(ThreeIndexes{.middle_place = 1 << 20, .duration = 5}.Film()))
        << "those of the lost index, less the two that were found";
    EXPECT_EQ((Reading{WithEnd(kSix), 6, false}), Read(ThreeIndexes{.duration = 5}.Film()))
        << "an index that can be had is believed before its duration";
    TinyAVI sound = ThreeIndexes{.middle_place = 1 << 20, .duration = 1000}.Film();
    sound.type = "auds";
    EXPECT_EQ(4, Read(sound).count) << "durations of sound count no chunks";
    const std::string whole = ThreeIndexes{}.Film().Build();
    const uint64_t third = whole.find("EEEE") - 8;
    EXPECT_EQ((Reading{WithEnd(kSix.substr(0, 35), kMissing), 6, false}),
              Read(whole.substr(0, third + 15)));
    EXPECT_EQ((Reading{WithEnd(kSix.substr(0, 44), kMissing), 6, true}),
              Read(whole.substr(0, third + 16)));
}

TEST_F(AVIWalkTest, GoesIntoFurtherSegments)
{
    const std::string segment = RiffList(
        "AVIX", {RiffChunk("JUNK", "1"), RiffList("movi", {RiffChunk("00db", "more")})}, "RIFF");
    const std::string all = "frame 0! frame 1. frame 2? more more";
    for (const TinyAVI& film :
         {TinyAVI{.has_index = false}, TinyAVI{}, TinyAVI::OpenDML({8, 8, 8})}) {
        EXPECT_EQ((Reading{WithEnd(all), 5, true}), Read(film.Build() + segment + segment));
        // The last list is cut off, or its size reaches beyond the file.
        const std::string cut = film.Build() + segment + segment.substr(0, segment.size() - 1);
        EXPECT_EQ((Reading{WithEnd(all.substr(0, 31)), 4, true}), Read(cut));
        std::string open = film.Build() + segment;
        open.replace(open.rfind("movi") - 4, 4, Little(0x7FFFFFF0, 4));
        EXPECT_EQ((Reading{WithEnd(all.substr(0, 31)), 4, true}), Read(open));
    }
}

TEST_F(AVIWalkTest, SalvagesWhatBrokeOff)
{
    const std::string kThree = "frame 0! frame 1. frame 2?";
    const std::string chunk = RiffChunk("00db", "more");
    const TinyAVI film{.has_index = false};
    const auto sized = [&](uint32_t riff, uint32_t movi, const std::string& behind = "") {
        std::string bytes = film.Build();
        bytes.replace(4, 4, Little(riff, 4));
        bytes.replace(bytes.find("movi") - 4, 4, Little(movi, 4));
        return bytes + behind;
    };
    const auto riff = uint32_t(film.Build().size()) - 8, movi = uint32_t(3 * 16 + 4);
    const struct {
        std::string bytes, frames;
        uint64_t salvaged;
    } rows[] = {
        {film.Build(), kThree, 0},  // made without an index
        {sized(0, 0), kThree, 3},
        {sized(0, movi), kThree, 3},
        {sized(riff, 0), kThree, 3},
        {sized(0xFFFFFFFF, 0x7FFFFFFF), kThree, 3},
        {sized(riff + 100, movi + 100), kThree, 3},
        {sized(0, 0, chunk + chunk), kThree + " more more", 5},
        {sized(0, 0, chunk + "00db" + Little(4, 4) + "cut"), kThree + " more", 4},
        // Segments of which none, or not the last, got their sizes.
        {sized(0, 0, "RIFF" + Little(0, 4) + "AVIXLIST" + Little(0, 4) + "movi" + chunk),
         kThree + " more", 4},
        {sized(riff, movi, "RIFF" + Little(0, 4) + "AVIXLIST" + Little(0, 4) + "movi" + chunk),
         kThree + " more", 4},
    };
    for (const auto& row : rows) {
        AVIFile file(fFolder.Write("film.avi", AsBytes(row.bytes)).c_str(), kRead);
        EXPECT_EQ(kOK, file.InitCheck());
        EXPECT_EQ(WithEnd(row.frames), NextFrames(file));
        EXPECT_EQ(row.salvaged, file.FramesSalvaged(0)) << row.bytes.size();
        EXPECT_TRUE(file.WasWalked());
    }
    // An index that does not name all.
    const AVIFile partly(
        fFolder.Write("film.avi", AsBytes(TinyAVI{.media_end = chunk}.Build())).c_str(), kRead);
    EXPECT_EQ(1u, partly.FramesSalvaged(0));
}

// Sound in stream 1 whose index ends before that of the picture.
TEST_F(AVIWalkTest, LooksBehindTheIndexOfEachStream)
{
    const std::string stream =
        RiffList("strl", {RiffChunk("strh", std::string("auds").append(28, '\0') + Little(9, 4) +
                                                std::string(20, '\0'))});
    std::string media;
    for (int i = 0; i < 3; i++)
        media += RiffChunk("00db", "picture" + std::to_string(i)) +
                 RiffChunk("01wb", "sounds " + std::to_string(i));
    const auto film = [&](int sounds) {
        std::string index;
        for (uint32_t i = 0; i < 3; i++) {
            index += Entry("00db", 4 + 32 * i, 8);
            if (int(i) < sounds) index += Entry("01wb", 20 + 32 * i, 8);
        }
        return TinyAVI{.frames = {}, .more_header = stream, .media_end = media, .index = index}
            .Build();
    };
    for (int sounds = 0; sounds < 4; sounds++) {
        EXPECT_EQ((Reading{WithEnd("sounds 0 sounds 1 sounds 2"), 3, sounds < 3}),
                  Read(film(sounds), 1))
            << sounds;
        EXPECT_EQ((Reading{WithEnd("picture0 picture1 picture2"), 3, sounds < 3}),
                  Read(film(sounds)));
    }
}

TEST_F(AVIWalkTest, KnowsNothingBehindAHeadThatItCannotRead)
{
    const std::string path =
        fFolder.Write("film.avi", AsBytes(TinyAVI{.has_index = false}.Build()));
    const FileHolder file(FileOpen(path.c_str(), kOpenRead));
    const FileHolder unreadable(open("/dev/null", O_WRONLY));
    AVIStructure structure;
    ASSERT_EQ(0, AVIParser(file.Handle(), false, structure).Run());
    AVIIndex index(structure, file.Handle());
    AVIStructure nothing;
    AVIParser parser(file.Handle(), false, nothing);
    ASSERT_EQ(file.Handle(), dup2(unreadable.Handle(), file.Handle()));
    EXPECT_EQ(0, index.BuildTables());
    EXPECT_EQ(0u, structure.streams[0].frames.Count());
    EXPECT_EQ(3u, structure.streams[0].missing) << "as many as the header tells";
    const Status status = parser.Run();
    EXPECT_EQ(kError, status);
    EXPECT_EQ(EBADF, status.SystemError());
}

}  // namespace
}  // namespace kelvane
