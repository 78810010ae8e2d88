#include "media/file_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_folder.h"

namespace kelvane {
namespace {

TEST(FileAccess, KeepsAFileThatSomebodyReads)
{
    const TempFolder folder;
    const std::string path = folder.Write("clip", std::vector<uint8_t>(7, 1));
    const FileHolder reader(FileOpen(path.c_str(), kOpenRead));
    const FileHolder second(FileOpen(path.c_str(), kOpenRead));
    ASSERT_TRUE(reader.IsOpen() && second.IsOpen());
    EXPECT_EQ(kNoFile, FileOpen(path.c_str(), kOpenCreate));
    EXPECT_EQ(7u, ReadWhole(path).size()) << "the refused create must not truncate";
}

TEST(FileAccess, ReadsOnlyRegularFiles)
{
    const TempFolder folder;
    const std::string fifo = folder.Path("fifo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    EXPECT_EQ(kNoFile, FileOpen(fifo.c_str(), kOpenRead));
    EXPECT_EQ(kNoFile, FileOpen(folder.Root().c_str(), kOpenRead));
    EXPECT_EQ(kNoFile, FileOpen("/dev/zero", kOpenRead));
    EXPECT_EQ(kNoFile, FileOpen(folder.Path("missing").c_str(), kOpenRead));
    uint8_t byte;
    EXPECT_EQ(-1, FileReadHead(fifo.c_str(), &byte, 1));
}

TEST(FileAccess, SeeksBeyondFourGigabytes)
{
    const TempFolder folder;
    const std::string path = folder.Path("sparse");
    const FileHolder file(FileOpen(path.c_str(), kOpenCreate));
    ASSERT_TRUE(file.IsOpen());
    ASSERT_EQ(0, truncate(path.c_str(), 0x100000010));
    EXPECT_EQ(0xFFFFFFFF, FileSeek(file.Handle(), 0xFFFFFFFF, kFromStart));
    uint8_t buffer[32];
    EXPECT_EQ(17, FileRead(file.Handle(), buffer, 32));
    EXPECT_EQ(0x100000010, FileSeek(file.Handle(), 0, kFromEnd));
    EXPECT_EQ(-1, FileSeek(file.Handle(), -1, kFromStart));
}

TEST(FileAccess, WritesPartsAtAnOffsetInOneGo)
{
    const TempFolder folder;
    const std::string path = folder.Path("parts");
    const FileHolder file(FileOpen(path.c_str(), kOpenCreate));
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

TEST(FileAccess, SwapsWordsInPlace)
{
    uint8_t words[] = {1, 2, 3, 4, 5};
    SwapWords(words, words, 2);
    EXPECT_EQ((std::vector<uint8_t>{2, 1, 4, 3, 5}), std::vector<uint8_t>(words, words + 5));
    EXPECT_EQ(0x04030201u, Swap32(0x01020304));
    EXPECT_EQ(0x0201, Swap16(0x0102));
}

}  // namespace
}  // namespace kelvane
