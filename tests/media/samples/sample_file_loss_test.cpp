// WAVE and AIFF files that are not all to be had, and those that find no room.

#include <gtest/gtest.h>

#include <filesystem>

#include "media/file_detour.h"
#include "media/media_files.h"
#include "media/samples/audio_file.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

constexpr RawAudioFormat kStereo = {kSamplePCM, 2, 16, 48000};
constexpr size_t kFrame = 4;
const std::string kSamples(100 * kFrame, 's');

class SampleLoss : public ::testing::TestWithParam<int32_t> {
protected:
    uint64_t HeaderBytes() const { return GetParam() == kWAVFileType ? 44 : 54; }
    // A file of ten frames.
    Bytes TenFrames()
    {
        AudioFile file(fPath.c_str(), kCreate, GetParam());
        EXPECT_EQ(0, file.SetFormat(kStereo));
        EXPECT_EQ(0, file.Write(kSamples.data(), 10));
        EXPECT_EQ(0, file.Finish());
        EXPECT_EQ(0, file.Finish());
        return ReadWhole(fPath);
    }

    TempFolder fFolder;
    const std::string fPath = fFolder.Path("sound");
};

TEST_P(SampleLoss, WhatTheHeaderPromisesAndTheFileLacksIsMissing)
{
    const Bytes whole = TenFrames();
    char buffer[100 * kFrame];
    for (uint64_t left = 0; left <= 10 * kFrame; left++) {
        SCOPED_TRACE(left);
        fFolder.Write("sound", whole);
        AudioFile shrinking(fPath.c_str(), kRead, GetParam());
        std::filesystem::resize_file(fPath, HeaderBytes() + left);
        AudioFile cut(fPath.c_str(), kRead, GetParam());
        const auto frames = static_cast<int32_t>(left / kFrame);
        for (AudioFile* file : {&shrinking, &cut}) {
            EXPECT_EQ(frames, file->CountFrames());
            EXPECT_EQ(10, file->PromisedFrames());
            if (frames > 0) {
                EXPECT_EQ(frames, ReadRecords(*file, 100, buffer));
            }
            EXPECT_EQ(frames < 10 ? kMissing : kEnd, ReadRecords(*file, 100, buffer));
            EXPECT_EQ(0, file->SetPosition(10));
            EXPECT_EQ(kEnd, ReadRecords(*file, 100, buffer));
        }
    }
}

TEST_P(SampleLoss, AFailureOfTheSystemIsToldWithItsReasonAndDoesNotMove)
{
    TenFrames();
    AudioFile file(fPath.c_str(), kRead, GetParam());
    char buffer[100 * kFrame];
    EXPECT_EQ(4, ReadRecords(file, 4, buffer));
    {
        const FileDetour bad(fPath, fFolder.Root());
        ASSERT_TRUE(bad.Found());
        int32_t count = 4;
        const Status status = file.Read(buffer, count);
        EXPECT_EQ(kUnread, status.Code());
        EXPECT_EQ(EISDIR, status.SystemError());
        EXPECT_EQ(0, count);
    }
    EXPECT_EQ(6, ReadRecords(file, 100, buffer));
    EXPECT_EQ(ENOENT, AudioFile("/nowhere/at all", kRead, GetParam()).InitCheck().SystemError());
}

TEST_P(SampleLoss, AByteOfPaddingIsNoPromise)
{
    for (const int32_t frames : {3, 4}) {
        {
            AudioFile file(fPath.c_str(), kCreate, GetParam());
            ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 8, 48000}));
            ASSERT_EQ(0, file.Write(kSamples.data(), frames));
        }
        AudioFile file(fPath.c_str(), kRead, GetParam());
        char buffer[100];
        EXPECT_EQ(frames, file.CountFrames());
        EXPECT_EQ(frames, file.PromisedFrames());
        EXPECT_EQ(frames, ReadRecords(file, 100, buffer));
        EXPECT_EQ(kEnd, ReadRecords(file, 100, buffer));
    }
}

TEST_P(SampleLoss, HoldsWhatWasWrittenWhenTheDiskFillsUp)
{
    for (uint64_t limit = HeaderBytes(); limit < HeaderBytes() + 10 * kFrame; limit++) {
        SCOPED_TRACE(limit);
        AudioFile file(fPath.c_str(), kCreate, GetParam());
        ASSERT_EQ(0, file.SetFormat(kStereo));
        const FullDisk full(limit);
        int32_t written = 0;
        Status status = kOK;
        while (written < 10 && (status = file.Write(kSamples.data(), 1)) == 0)
            written++;
        EXPECT_EQ(EFBIG, status.SystemError());
        EXPECT_EQ(0, file.Finish()) << "that the write failed has been told";
        EXPECT_EQ((limit - HeaderBytes()) / kFrame, static_cast<uint64_t>(written));
        EXPECT_EQ(HeaderBytes() + static_cast<size_t>(written) * kFrame, ReadWhole(fPath).size());
        const AudioFile now(fPath.c_str(), kRead, GetParam());
        EXPECT_EQ(written, now.CountFrames());
        EXPECT_EQ(written, now.PromisedFrames());
    }
}

TEST_P(SampleLoss, HeadersThatCannotBeWrittenAreTold)
{
    AudioFile file(fPath.c_str(), kCreate, GetParam());
    ASSERT_EQ(0, file.SetFormat(kStereo));
    ASSERT_EQ(0, file.Write(kSamples.data(), 10));
    const FileDetour full(fPath, "/dev/full");
    ASSERT_TRUE(full.Found());
    EXPECT_EQ(-1, file.Finish());
    EXPECT_EQ(-1, file.Finish());
    EXPECT_EQ(-1, file.Write(kSamples.data(), 1));

    AudioFile empty(fFolder.Path("empty").c_str(), kCreate, GetParam());
    FileDetour(fFolder.Path("empty"), "/dev/null").Lose();
    EXPECT_EQ(EBADF, empty.Finish().SystemError()) << "close counts";
}

INSTANTIATE_TEST_SUITE_P(, SampleLoss, ::testing::Values(kWAVFileType, kAIFFFileType));

TEST(SampleLossOfWAVE, SizesThatAreLeftOpenPromiseWhatIsThere)
{
    const TempFolder folder;
    const std::string fmt = RiffChunk("fmt ", Little(1, 2) + Little(2, 2) + Little(48000, 4) +
                                                  Little(192000, 4) + Little(4, 2) + Little(16, 2));
    for (const uint32_t size : {0u, 0xFFFFFFFFu}) {
        const std::string path =
            folder.Write("sound", AsBytes("RIFF" + Little(size, 4) + "WAVE" + fmt + "data" +
                                          Little(size, 4) + kSamples.substr(0, 40)));
        WAVFile file(path.c_str(), kRead);
        EXPECT_EQ(10, file.CountFrames());
        EXPECT_EQ(10, file.PromisedFrames());
        std::filesystem::resize_file(path, 44 + 30);
        char buffer[400];
        EXPECT_EQ(7, ReadRecords(file, 100, buffer));
        EXPECT_EQ(kMissing, ReadRecords(file, 100, buffer)) << "it got shorter";
    }
}

}  // namespace
}  // namespace kelvane
