#include "media/raw_dv_file.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/temp_folder.h"

namespace kelvane {
namespace {

std::vector<uint8_t> Counting(size_t bytes)
{
    std::vector<uint8_t> data(bytes);
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
    int32_t count = 3;
    EXPECT_EQ(0, file.Read(buffer, count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(19, buffer[19]);
    count = 1;
    EXPECT_EQ(-1, file.Read(buffer, count)) << "five bytes are no record";
    EXPECT_EQ(0, count);
    EXPECT_EQ(24, buffer[4]);
    EXPECT_EQ(0, file.Seek(2));
    EXPECT_EQ(-1, file.Seek(3));
    EXPECT_EQ(-1, file.Seek(-1));
    EXPECT_EQ(0, file.Seek(1));
    count = 1;
    EXPECT_EQ(0, file.Read(buffer, count));
    EXPECT_EQ(10, buffer[0]);
    count = -1;
    EXPECT_EQ(-1, file.Read(buffer, count));
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
        int32_t count = 1;
        EXPECT_EQ(-1, file.Read(buffer, count)) << "a file being created is not read";
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
    int32_t count = 1;
    EXPECT_EQ(0, missing.InitCheck());
    EXPECT_EQ(-1, missing.Read(&byte, count));
    EXPECT_EQ(-1, RawDVFile("/nowhere/at all", kCreate).InitCheck());
    EXPECT_EQ(0, RawDVFile(nullptr, kRead).InitCheck());

    RawDVFile full("/dev/full", kCreate);
    EXPECT_EQ(0, full.InitCheck());
    EXPECT_EQ(-1, full.Write(&byte, 1));
}

TEST(IsRawDV, TakesAnyOfThreePatternsOfBlockIds)
{
    const std::vector<uint8_t> nothing(1000, 0);
    EXPECT_FALSE(IsRawDV(nothing.data(), nothing.size()));
    struct Id {
        size_t at;
        uint8_t section, number;
    };
    const std::vector<std::vector<Id>> patterns = {
        {{80, 0x3F, 0}, {160, 0x31, 1}},
        {{240, 0x5A, 0}, {320, 0x50, 1}},
        {{560, 0x90, 0}, {640, 0x9C, 1}, {720, 0x90, 2}},
    };
    for (const auto& pattern : patterns) {
        std::vector<uint8_t> head = nothing;
        for (const Id& id : pattern) {
            EXPECT_FALSE(IsRawDV(head.data(), head.size())) << "a pattern needs all its rows";
            head[id.at] = id.section;
            head[id.at + 1] = 7;
            head[id.at + 2] = id.number;
        }
        EXPECT_TRUE(IsRawDV(head.data(), head.size()));
        EXPECT_FALSE(IsRawDV(head.data(), 999));
        head[pattern[0].at + 1] = 0x17;
        EXPECT_FALSE(IsRawDV(head.data(), head.size())) << "not the first sequence";
    }
}

}  // namespace
}  // namespace kelvane
