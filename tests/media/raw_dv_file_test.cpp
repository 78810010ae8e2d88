#include "media/raw_dv_file.h"

#include <gtest/gtest.h>

#include <numeric>

#include "media/media_files.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

Bytes Counting(size_t bytes)
{
    Bytes data(bytes);
    std::iota(data.begin(), data.end(), uint8_t{0});
    return data;
}

TEST(RawDVFile, ReadsWholeRecordsAndLeavesTheBytesOfAPartialOne)
{
    const TempFolder folder;
    RawDVFile file(folder.Write("25 bytes", Counting(25)).c_str(), kRead);
    file.SetRecordSize(10);
    EXPECT_EQ(2, file.CountRecords());
    uint8_t buffer[40] = {};
    EXPECT_EQ(2, ReadRecords(file, 3, buffer));
    EXPECT_EQ(19, buffer[19]);
    EXPECT_EQ(-1, ReadRecords(file, 1, buffer)) << "five bytes are no record";
    EXPECT_EQ(24, buffer[4]);
    EXPECT_EQ(0, file.Seek(2));
    EXPECT_EQ(-1, file.Seek(3));
    EXPECT_EQ(-1, file.Seek(-1));
    EXPECT_EQ(0, file.Seek(1));
    EXPECT_EQ(1, ReadRecords(file, 1, buffer));
    EXPECT_EQ(10, buffer[0]);
    EXPECT_EQ(-1, ReadRecords(file, -1, buffer));
}

TEST(RawDVFile, WritesWithoutMovingAndCountsByTheFilePointer)
{
    const TempFolder folder;
    const std::string path = folder.Write("old", Counting(100));
    {
        RawDVFile file(path.c_str(), kCreate);
        ASSERT_EQ(0, file.InitCheck());
        file.SetRecordSize(10);
        EXPECT_EQ(0, file.Write(Counting(20).data(), 2));
        EXPECT_EQ(2, file.CountRecords());
        EXPECT_EQ(-1, file.Write(Counting(20).data(), 0));
        uint8_t buffer[10];
        EXPECT_EQ(-1, ReadRecords(file, 1, buffer)) << "a file being created is not read";
    }
    EXPECT_EQ(Counting(20), ReadWhole(path));
    RawDVFile update(path.c_str(), kUpdate);
    EXPECT_EQ(0, update.InitCheck());
    EXPECT_EQ(-1, update.Write(Counting(1).data(), 1)) << "opened for update is read-only";
    EXPECT_EQ(0, update.DeleteFile());
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
