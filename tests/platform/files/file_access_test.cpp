#include "platform/files/file_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_folder.h"

namespace kelvane {
namespace {

class FileAccess : public testing::Test {
protected:
    const TempFolder fFolder;
    const std::string fPath = fFolder.Path("file");
};

TEST_F(FileAccess, KeepsAFileThatSomebodyReads)
{
    fFolder.Write("file", std::vector<uint8_t>(7, 1));
    const FileHolder reader(FileOpen(fPath.c_str(), kOpenRead));
    const FileHolder second(FileOpen(fPath.c_str(), kOpenRead));
    ASSERT_TRUE(reader.IsOpen() && second.IsOpen());
    EXPECT_EQ(kNoFile, FileOpen(fPath.c_str(), kOpenCreate));
    EXPECT_EQ(7u, ReadWhole(fPath).size()) << "the refused create must not truncate";
}

TEST_F(FileAccess, ReadsOnlyRegularFiles)
{
    ASSERT_EQ(0, mkfifo(fPath.c_str(), 0600));
    for (const std::string& path :
         {fPath, fFolder.Root().string(), fFolder.Path("missing"), std::string("/dev/zero")})
        EXPECT_EQ(kNoFile, FileOpen(path.c_str(), kOpenRead)) << path;
    uint8_t byte;
    EXPECT_EQ(-1, FileReadHead(fPath.c_str(), &byte, 1));
}

TEST_F(FileAccess, SeeksBeyondFourGigabytes)
{
    const FileHolder file(FileOpen(fPath.c_str(), kOpenCreate));
    ASSERT_EQ(0, truncate(fPath.c_str(), 0x100000010));
    EXPECT_EQ(0xFFFFFFFF, FileSeek(file.Handle(), 0xFFFFFFFF, kFromStart));
    uint8_t buffer[32];
    EXPECT_EQ(17, FileRead(file.Handle(), buffer, 32));
    EXPECT_EQ(0x100000010, FileSeek(file.Handle(), 0, kFromEnd));
    EXPECT_EQ(-1, FileSeek(file.Handle(), -1, kFromStart));
}

TEST_F(FileAccess, WritesPartsAtAnOffsetInOneGo)
{
    const FileHolder file(FileOpen(fPath.c_str(), kOpenCreate));
    const FilePart parts[] = {{"", 0}, {"head", 4}, {"", 0}, {"body", 4}, {"", 0}};
    EXPECT_EQ(8, FileWriteAt(file.Handle(), 2, parts));
    EXPECT_EQ(0, FileWriteAt(file.Handle(), 2, {}));
    EXPECT_EQ(0, FileSeek(file.Handle(), 0, kFromCurrent)) << "the file pointer stays";
    char buffer[8] = {};
    EXPECT_EQ(5, FileReadAt(file.Handle(), 5, buffer, 8));
    EXPECT_STREQ("dbody", buffer);
    EXPECT_EQ(0, FileReadAt(file.Handle(), 500, buffer, 8));
    EXPECT_EQ(-1, FileReadAt(kNoFile, 0, buffer, 8));
    EXPECT_EQ(-1, FileRead(kNoFile, buffer, 8));
    EXPECT_EQ(-1, FileWrite(kNoFile, buffer, 8));
    const FileHolder full(FileOpen("/dev/full", kOpenCreate));
    EXPECT_EQ(-1, FileWriteAt(full.Handle(), 0, parts));
}

}  // namespace
}  // namespace kelvane
