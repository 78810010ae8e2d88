#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>

#include "media/avi/avi_file.h"
#include "media/media_files.h"
#include "support/avi_films.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

Bytes Sound(uint32_t number)
{
    return NumberedFrame(60 + 2 * (number % 3), number + 1000);
}

// What a destination says that it holds.
struct Outcome {
    Status status = kOK;  // of the first failure
    int64_t taken = 0;    // frames of video
    int64_t frames = 0, sounds = 0;
};

// Films of each type on a disk that is full at some byte.
class AVIDiskFull : public testing::Test {
protected:
    std::string Path(const std::string& name = "film.avi") const { return fFolder.Path(name); }
    uint64_t Size(const std::string& name = "film.avi") const
    {
        return std::filesystem::file_size(Path(name));
    }

    // Small frames but where references stand for them. `at_end`: only Finish finds the disk full.
    Outcome Write(const AVIOutput& output, uint64_t room, bool at_end = false) const
    {
        const bool reference = output.flags & kAVIReference;
        // Anew: some file systems write out at once what replaces a file.
        std::filesystem::remove(Path());
        std::filesystem::remove(Path("film.000"));
        std::optional<FullDisk> full;
        if (!at_end) full.emplace(room);
        AVIFile file(Path().c_str(), kCreate);
        file.SetLimits({.chunks_per_index = 15});
        EXPECT_EQ(0, file.BeginDVAVI(output.flags | kAVIPAL, output.handler, 0));
        Outcome outcome;
        for (uint32_t i = 0; i < (reference ? 3 : 40) && outcome.status == 0; i++) {
            // Sound in front: the last chunk is none of it.
            const Bytes sound = Sound(i), frame = NumberedFrame(reference ? 144000 : 100, i);
            if (output.HasSound())
                outcome.status = file.WriteFrame(1, sound.data(), int32_t(sound.size()));
            if (outcome.status == 0)
                outcome.status = file.WriteFrame(0, frame.data(), int32_t(frame.size()));
            outcome.taken += outcome.status == 0;
        }
        if (at_end) full.emplace(room);
        outcome.status = FirstFailure(outcome.status, file.Finish());
        outcome.frames = file.FramesWritten(0);
        outcome.sounds = file.FramesWritten(1);
        return outcome;
    }
    RiffFilm Whole(const AVIOutput& output) const
    {
        const Outcome all = Write(output, 1 << 30);
        EXPECT_EQ(0, all.status);
        EXPECT_EQ(all.taken, all.frames);
        return RiffFilm(Path());
    }
    // Sizes below that of the film: around the borders of its chunks, and every so many bytes.
    static std::set<uint64_t> Rooms(const RiffFilm& film, uint64_t from, uint64_t step)
    {
        std::set<uint64_t> rooms;
        for (uint64_t room = from; room < film.bytes.size(); room += step)
            rooms.insert(room);
        for (const RiffNode& node : film.nodes)
            for (const uint64_t room : {node.head - 1, node.head, node.head + 1, node.head + 8})
                if (room >= from) rooms.insert(room);
        rooms.insert(film.bytes.size() - 1);
        rooms.erase(rooms.lower_bound(film.bytes.size()), rooms.end());
        return rooms;
    }
    // All that was counted is in the file and comes back.
    void Check(const AVIOutput& output, const Outcome& outcome) const
    {
        EXPECT_TRUE(RiffFilm(Path()).IsWhole());
        EXPECT_LE(outcome.taken, outcome.frames);
        const std::vector<Bytes> frames = ReadFilm(Path()), sounds = ReadFilm(Path(), 1);
        EXPECT_EQ(outcome.frames, int64_t(frames.size()));
        EXPECT_EQ(outcome.sounds, int64_t(sounds.size()));
        const size_t bytes = output.flags & kAVIReference ? 144000 : 100;
        for (uint32_t i = 0; i < frames.size(); i++)
            EXPECT_TRUE(frames[i] == NumberedFrame(bytes, i));
        for (uint32_t i = 0; i < sounds.size(); i++)
            EXPECT_TRUE(sounds[i] == Sound(i));
    }

    const TempFolder fFolder;
};

TEST_F(AVIDiskFull, KeepsEveryFrameThatWasWrittenWhole)
{
    for (const AVIOutput& output : kAVIOutputs) {
        if (output.flags & kAVIReference) continue;
        const RiffFilm film = Whole(output);
        const uint64_t headers = film.Find("movi").head + 12;
        for (const uint64_t room : Rooms(film, film.bytes.size() - 10240, 97)) {
            SCOPED_TRACE(std::string(output.name) + " " + std::to_string(room));
            const Outcome outcome = Write(output, room);
            EXPECT_EQ(EFBIG, outcome.status.SystemError());
            EXPECT_GE(room, Size());
            if (room >= headers) {
                Check(output, outcome);
            } else {
                EXPECT_EQ(0, outcome.frames + outcome.sounds);
            }
        }
    }
}

TEST_F(AVIDiskFull, DoesWithoutTheIndexesThatFindNoRoom)
{
    for (const AVIOutput& output : kAVIOutputs) {
        const RiffFilm film = Whole(output);
        // What the media alone take: the chunk behind the last frame is an index, if anything.
        const auto last = std::find_if(
            film.nodes.rbegin(), film.nodes.rend(),
            [](const RiffNode& node) { return node.id.starts_with("00d") || node.id == "JUNK"; });
        for (const uint64_t room : Rooms(film, last->head + 8 + last->size, 13)) {
            SCOPED_TRACE(std::string(output.name) + " " + std::to_string(room));
            const Outcome outcome = Write(output, room, true);
            EXPECT_EQ(EFBIG, outcome.status.SystemError());
            EXPECT_EQ(output.flags & kAVIReference ? 3 : 40, outcome.frames);
            EXPECT_GE(room, Size());
            Check(output, outcome);
        }
    }
}

TEST_F(AVIDiskFull, CutsReferenceFilesBackToWholeChunks)
{
    const AVIOutput& output = OutputNamed("Type2Reference");
    for (uint64_t room = 288016; room < 3 * 144008; room += room == 288016 ? 1 : 35999) {
        const Outcome outcome = Write(output, room);
        EXPECT_EQ(EFBIG, outcome.status.SystemError());
        EXPECT_EQ(2, outcome.frames);
        EXPECT_EQ(3, outcome.sounds);
        EXPECT_EQ(288016u, Size("film.000")) << room;
        Check(output, outcome);
    }
}

TEST_F(AVIDiskFull, AnswersTheSameFromThenOn)
{
    const Bytes frame(1000);
    AVIFile full("/dev/full", kCreate);
    ASSERT_EQ(0, full.BeginDVAVI(0x0101, 0, 0));
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(ENOSPC, full.WriteFrame(0, frame.data(), 1000).SystemError());
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(kError, full.Finish());
        EXPECT_EQ(ENOSPC, full.Finish().SystemError());
    }
    EXPECT_EQ(0, full.WriteFrame(0, frame.data(), 1000).SystemError()) << "it is over";
    EXPECT_EQ(0, full.FramesWritten(0));

    // A step to the next reference file that fails; the one before is closed all the same.
    std::filesystem::create_directories(Path("film.001"));
    AVIFile file(Path().c_str(), kCreate);
    file.SetLimits({.reference_file = 500});
    ASSERT_EQ(0, file.BeginDVAVI(OutputNamed("Type1Reference").flags | kAVIPAL, 0, 0));
    ASSERT_EQ(0, file.WriteFrame(0, frame.data(), 1000));
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(EISDIR, file.WriteFrame(0, frame.data(), 1000).SystemError());
    EXPECT_EQ(0, file.Finish());
    EXPECT_EQ(1, file.FramesWritten(0));
    EXPECT_EQ(0, file.FramesWritten(1));
    EXPECT_EQ(2016u, Size("film.000"));
    std::error_code error;
    EXPECT_EQ(ENOENT, AVIFile(Path("no/film.avi").c_str(), kCreate).InitCheck().SystemError());
}

}  // namespace
}  // namespace kelvane
