#include "media/raw_dv/raw_dv_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "media/file_detour.h"
#include "media/media_files.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

// Ten bytes a record.
const std::string kRecords = "record 0, record 1, recor";

TEST(RawDVFile, ReadsWholeRecordsAndLeavesTheBytesOfAPartialOne)
{
    const TempFolder folder;
    RawDVFile file(folder.Write("two and a half", AsBytes(kRecords)).c_str(), kRead);
    file.SetRecordSize(10);
    EXPECT_EQ(2, file.CountRecords());
    char buffer[40] = {};
    EXPECT_EQ(2, ReadRecords(file, 3, buffer));
    EXPECT_EQ("record 0, record 1, ", std::string(buffer, 20));
    EXPECT_EQ(kMissing, ReadRecords(file, 1, buffer)) << "five bytes are no record";
    EXPECT_EQ("recor", std::string(buffer, 5));
    EXPECT_EQ(0, file.Seek(2));
    EXPECT_EQ(-1, file.Seek(3));
    EXPECT_EQ(-1, file.Seek(-1));
    EXPECT_EQ(0, file.Seek(1));
    EXPECT_EQ(1, ReadRecords(file, 1, buffer));
    EXPECT_EQ("record 1, ", std::string(buffer, 10));
    EXPECT_EQ(-1, ReadRecords(file, -1, buffer));
}

TEST(RawDVFile, WritesWithoutMovingAndCountsByTheFilePointer)
{
    const TempFolder folder;
    const std::string path = folder.Write("old", Bytes(100));
    {
        RawDVFile file(path.c_str(), kCreate);
        ASSERT_EQ(0, file.InitCheck());
        file.SetRecordSize(10);
        EXPECT_EQ(0, file.Write(kRecords.data(), 2));
        EXPECT_EQ(2, file.CountRecords());
        EXPECT_EQ(-1, file.Write(kRecords.data(), 0));
        uint8_t buffer[10];
        EXPECT_EQ(-1, ReadRecords(file, 1, buffer)) << "a file being created is not read";
    }
    EXPECT_EQ(kRecords.substr(0, 20), AsText(ReadWhole(path)));
    RawDVFile update(path.c_str(), kUpdate);
    EXPECT_EQ(0, update.InitCheck());
    EXPECT_EQ(-1, update.Write(kRecords.data(), 1)) << "opened for update is read-only";
    update.DeleteFile();
    EXPECT_EQ(-1, update.InitCheck());
    EXPECT_TRUE(ReadWhole(path).empty());
}

TEST(RawDVFile, FailsQuietlyOnWhatCannotBeOpened)
{
    RawDVFile missing("/nowhere/at all", kRead);
    uint8_t byte;
    EXPECT_EQ(0, missing.InitCheck());
    int32_t count = 1;
    EXPECT_EQ(ENOENT, missing.Read(&byte, count).SystemError()) << "it remembers why";
    EXPECT_EQ(-1, RawDVFile("/nowhere/at all", kCreate).InitCheck());
    EXPECT_EQ(0, RawDVFile(nullptr, kRead).InitCheck());

    RawDVFile full("/dev/full", kCreate);
    EXPECT_EQ(0, full.InitCheck());
    EXPECT_EQ(-1, full.Write(&byte, 1));
}

TEST(RawDVFile, TellsAnEndFromWhatIsMissingAndWhatIsUnread)
{
    const TempFolder folder;
    const std::string path = folder.Write("three", AsBytes(kRecords + "d 2, "));
    char buffer[40];
    for (uint64_t length = 31; length-- > 0;) {
        SCOPED_TRACE(length);
        folder.Write("three", AsBytes(kRecords + "d 2, "));
        RawDVFile file(path.c_str(), kRead);
        file.SetRecordSize(10);
        std::filesystem::resize_file(path, length);
        for (uint64_t record = 0; record < 3; record++) {
            ASSERT_EQ(0, file.Seek(static_cast<int64_t>(record)));
            EXPECT_EQ(10 * record + 10 <= length ? 1 : int{kMissing}, ReadRecords(file, 1, buffer));
        }
        ASSERT_EQ(0, file.Seek(3));
        EXPECT_EQ(kEnd, ReadRecords(file, 1, buffer));
        EXPECT_EQ(3, file.CountRecords()) << "as it was opened";
        EXPECT_FALSE(file.EndsInPiece());
        RawDVFile now(path.c_str(), kRead);
        now.SetRecordSize(10);
        EXPECT_EQ(length % 10 != 0, now.EndsInPiece());
    }
    folder.Write("three", AsBytes(kRecords));
    RawDVFile file(path.c_str(), kRead);
    file.SetRecordSize(10);
    EXPECT_EQ(1, ReadRecords(file, 1, buffer));
    {
        const FileDetour bad(path, folder.Root());
        ASSERT_TRUE(bad.Found());
        int32_t count = 1;
        const Status status = file.Read(buffer, count);
        EXPECT_EQ(kUnread, status.Code());
        EXPECT_EQ(EISDIR, status.SystemError());
        EXPECT_EQ(0, count);
    }
    EXPECT_EQ(1, ReadRecords(file, 1, buffer));
    EXPECT_EQ("record 1, ", std::string(buffer, 10)) << "a failure does not move";
}

TEST(RawDVFile, EndsInWholeRecordsWhenTheDiskFillsUp)
{
    const FileInMemory film;
    const std::string path = film.Path(), records(2000, 'r');
    for (int32_t at_once : {1, 3}) {
        for (int64_t limit = 0; limit < 1200; limit++) {
            SCOPED_TRACE(std::to_string(limit) + " by " + std::to_string(at_once));
            RawDVFile file(path.c_str(), kCreate);
            file.SetRecordSize(100);
            std::optional<FullDisk> full(static_cast<uint64_t>(limit));
            int32_t good = 0;
            Status status = kOK;
            while (good < 20 && (status = file.Write(records.data(), at_once)) == 0)
                good += at_once;
            EXPECT_EQ(limit / 100 / at_once * at_once, good);
            EXPECT_EQ(EFBIG, status.SystemError());
            full.reset();
            EXPECT_EQ(EFBIG, file.Write(records.data(), 1).SystemError())
                << "nothing goes behind a piece, even if there is room again";
            EXPECT_EQ(0, file.Finish()) << "that the write failed has been told";
            EXPECT_EQ(limit / 100, file.CountRecords());
            EXPECT_EQ(static_cast<uint64_t>(limit / 100 * 100), std::filesystem::file_size(path));
        }
    }
    RawDVFile device("/dev/full", kCreate);
    EXPECT_EQ(ENOSPC, device.Write(records.data(), 1).SystemError());
    EXPECT_EQ(0, device.Finish()) << "nothing to cut off";
    EXPECT_EQ(0, device.CountRecords());

    const TempFolder folder;
    RawDVFile lost(folder.Path("film").c_str(), kCreate);
    EXPECT_EQ(0, lost.Write(records.data(), 20));
    FileDetour(folder.Path("film"), "/dev/null").Lose();
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(EBADF, lost.Finish().SystemError()) << "close counts, and is remembered";
    EXPECT_EQ(20, lost.CountRecords());
}

TEST(IsRawDV, TakesAnyOfThreePatternsOfBlockIds)
{
    using Id = std::array<uint8_t, 3>;
    const std::vector<std::pair<size_t, std::vector<Id>>> patterns = {
        {80, {{0x3F, 7, 0}, {0x31, 7, 1}}},
        {240, {{0x5A, 7, 0}, {0x50, 7, 1}}},
        {560, {{0x90, 7, 0}, {0x9C, 7, 1}, {0x90, 7, 2}}},
    };
    for (const auto& [first, ids] : patterns) {
        Bytes head(1000);
        for (size_t i = 0; i < ids.size(); i++) {
            EXPECT_FALSE(IsRawDV(head.data(), head.size())) << "a pattern needs all its rows";
            std::ranges::copy(ids[i], &head[first + 80 * i]);
        }
        EXPECT_TRUE(IsRawDV(head.data(), head.size()));
        EXPECT_FALSE(IsRawDV(head.data(), 999));
        head[first + 1] = 0x17;
        EXPECT_FALSE(IsRawDV(head.data(), head.size())) << "not the first sequence";
    }
}

}  // namespace
}  // namespace kelvane
