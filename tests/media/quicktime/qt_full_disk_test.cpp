// A movie that is closed on a full disk holds what it says it holds.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "media/file_detour.h"
#include "media/media_files.h"
#include "media/quicktime/qt_file.h"
#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

constexpr size_t kFrameBytes = 3000, kSoundBytes = 400;
constexpr int kFrames = 8, kBeforeTheHole = 5;

Bytes Frame(int64_t number, size_t bytes = kFrameBytes)
{
    return Bytes(bytes, static_cast<uint8_t>('a' + number));
}

class HoledQTFile : public QTFile {
public:
    using QTFile::LeaveHole;
    using QTFile::QTFile;
};

class QTFullDisk : public ::testing::TestWithParam<std::tuple<bool, bool>> {
protected:
    struct Outcome {
        Status written = kOK, closed = kOK;  // the first failure
        int64_t frames = 0, chunks = 0;      // after it was closed
    };
    bool HasSound() const { return std::get<0>(GetParam()); }
    uint32_t Options() const { return std::get<1>(GetParam()) ? kQTWideOffsets : 0u; }

    // Writes a small film with a megabyte of nothing in it.
    void Fill(HoledQTFile& file, Status& written)
    {
        file.SetOptions(Options(), nullptr);
        ASSERT_EQ(0, file.AddDVTrack(true));
        const MediaFormat sound(RawAudioFormat{kSamplePCM, 2, 16, 48000});
        ASSERT_EQ(0, HasSound() ? file.AddPCMAudioTrack(sound) : Status(kOK));
        for (int i = 0; i < kFrames && written == kOK; i++) {
            if (i == kBeforeTheHole) file.LeaveHole(0x100000);
            written = file.WriteFrame(0, Frame(i).data(), kFrameBytes);
            if (HasSound() && written == kOK)
                written = file.WriteFrame(1, Frame(i).data(), kSoundBytes);
        }
    }

    Outcome Write(std::optional<uint64_t> limit)
    {
        Outcome outcome;
        HoledQTFile file(fPath.c_str(), kCreate);
        std::optional<FullDisk> full;
        if (limit) full.emplace(*limit);
        Fill(file, outcome.written);
        outcome.closed = file.Close();
        EXPECT_EQ(outcome.closed.SystemError(), file.Close().SystemError());
        outcome.frames = file.SampleCount(0);
        outcome.chunks = file.ChunkCount(1);
        return outcome;
    }

    // The file that there is gives exactly that many frames and chunks, and they are the right
    // ones.
    void ExpectFile(const Outcome& outcome)
    {
        QTFile file(fPath.c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        ASSERT_EQ(HasSound() ? 2 : 1, file.CountStreams());
        EXPECT_EQ(outcome.frames, file.SampleCount(0));
        EXPECT_EQ(outcome.chunks, file.ChunkCount(1));
        for (int32_t stream = 0; stream < file.CountStreams(); stream++) {
            Bytes buffer(kFrameBytes);
            uint32_t size = 0;
            int64_t count = 0;
            Status status = kOK;
            while ((status = file.ReadFrame(stream, buffer, size)) == kOK) {
                ASSERT_EQ(stream ? kSoundBytes : kFrameBytes, size);
                ASSERT_EQ(Frame(count++, size), Bytes(buffer.begin(), buffer.begin() + size));
            }
            EXPECT_EQ(kEnd, status.Code());
            EXPECT_EQ(stream ? outcome.chunks : outcome.frames, count);
        }
    }

    FileInMemory fFile;
    const std::string fPath = fFile.Path();
};

TEST_P(QTFullDisk, HoldsTheFramesThatItNamesWhateverRoomThereIs)
{
    const Outcome whole = Write({});
    ASSERT_EQ(0, whole.closed);
    ASSERT_EQ(kFrames, whole.frames);
    ExpectFile(whole);
    const uint64_t size = std::filesystem::file_size(fPath);
    int given_up = 0;
    // Every size of the header's bytes and of the last frames'.
    for (uint64_t missing = 1; missing <= 9001; missing += missing < 3000 ? 1 : 50) {
        SCOPED_TRACE("full size less " + std::to_string(missing));
        const Outcome outcome = Write(size - missing);
        const Status first = FirstFailure(outcome.written, outcome.closed);
        ASSERT_EQ(EFBIG, first.SystemError());
        if (outcome.written == kOK) {
            ASSERT_EQ(kBeforeTheHole, outcome.frames) << "a megabyte is given up";
            given_up++;
        }
        ExpectFile(outcome);
        if (HasFailure()) return;
    }
    EXPECT_LT(500, given_up);
    ASSERT_EQ(0, Write(size).closed) << "room enough to the byte";
}

TEST_P(QTFullDisk, HoldsNothingWhenThereIsNoRoomForAHeaderAtAll)
{
    for (const uint64_t limit : {16, 100, 500}) {
        const Outcome outcome = Write(limit);
        EXPECT_EQ(EFBIG, outcome.closed.SystemError());
        EXPECT_EQ(0, outcome.frames);
        EXPECT_EQ(-2, QTFile(fPath.c_str(), kRead).InitCheck());
    }
    const TempFolder folder;
    const std::string path = folder.Path("movie.mov");
    HoledQTFile file(path.c_str(), kCreate);
    Status written = kOK;
    Fill(file, written);
    ASSERT_EQ(0, written);
    const FileDetour full(path, "/dev/full");
    ASSERT_TRUE(full.Found());
    EXPECT_EQ(ENOSPC, file.WriteFrame(0, "v", 1).SystemError());
    EXPECT_EQ(kFrames, file.SampleCount(0));
    EXPECT_EQ(ENOSPC, file.Close().SystemError());
    EXPECT_EQ(0, file.SampleCount(0));
}

INSTANTIATE_TEST_SUITE_P(, QTFullDisk, ::testing::Combine(::testing::Bool(), ::testing::Bool()));

}  // namespace
}  // namespace kelvane
