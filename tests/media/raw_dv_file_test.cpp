#include "media/raw_dv_file.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(-1, ReadRecords(file, 1, buffer)) << "five bytes are no record";
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
    EXPECT_EQ(-1, ReadRecords(missing, 1, &byte));
    EXPECT_EQ(-1, RawDVFile("/nowhere/at all", kCreate).InitCheck());
    EXPECT_EQ(0, RawDVFile(nullptr, kRead).InitCheck());

    RawDVFile full("/dev/full", kCreate);
    EXPECT_EQ(0, full.InitCheck());
    EXPECT_EQ(-1, full.Write(&byte, 1));
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
