#include "media/quicktime/reader/qt_references.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "media/media_files.h"
#include "media/quicktime/qt_file.h"
#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

// The record that edit systems leave in "code", with this data reference number and path.
Bytes CodeRecord(uint32_t number, const std::string& path)
{
    return Join({Big(16 + path.size() + 4, 2), Text("RU*A"), Bytes(2), Big(number, 2), Bytes(8),
                 Text(path), Bytes(4)});
}

Bytes Alias(const std::string& path)
{
    return QTAtom("alis", {Big(0), Bytes(20), Text(path)});
}

// A movie that holds a header only; its frames lie where the track says.
Bytes ReferenceMovie(const Bytes& data_reference, const Bytes& code = {})
{
    return QTMoov({{.stco = QTTable({0, 8}), .data_reference = data_reference, .code = code}});
}

TEST(QTReferences, FollowsAliasesAndCodeAtomsToOtherFiles)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder.Path("reel 1"));
    folder.Write("reel 1/tape.dv", QTTinyMedia());
    const VolumeTable volumes({{"MEDIA DISK", folder.Root().string()}});
    const std::string mac = "Media Disk:reel 1:tape.dv";
    const auto read = [&](const Bytes& movie) {
        QTFile file(folder.Write("movie.mov", movie).c_str(), kRead, volumes);
        EXPECT_EQ(0, file.InitCheck()) << "what is missing shows at the first read";
        return NextFrame(file);
    };
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(mac))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(folder.Path("reel 1/tape.dv")))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(""), CodeRecord(1, mac))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias("No Disk:nothing"), CodeRecord(1, mac))))
        << "the names in \"code\" go before those in aliases";
    ASSERT_EQ(0, mkfifo(folder.Path("reel 1/fifo").c_str(), 0600));
    for (const std::string& bad :
         {std::string("Other Disk:reel 1:tape.dv"), std::string("/dev/zero/of/all"),
          folder.Path("missing.dv"), folder.Path("reel 1"), folder.Path("reel 1/fifo")})
        EXPECT_EQ("(-5)", read(ReferenceMovie(Alias(bad)))) << bad;
    EXPECT_EQ("(-201)", read(ReferenceMovie(Alias(folder.Write("reel 1/short", Text("AAA"))))))
        << "it is there, and too short";
    EXPECT_EQ("(-202)", read(ReferenceMovie(Alias("/proc/self/mem")))) << "nothing lies at place 0";

    const Bytes circular = ReferenceMovie(Alias(folder.Path("movie.mov")));
    EXPECT_EQ(std::string(circular.begin(), circular.begin() + 4), read(circular))
        << "a movie that refers to itself is read like any other file";
    const Bytes own = ReferenceMovie(QTAtom("alis", {Big(1), Text(folder.Path("no such file"))}));
    EXPECT_EQ(std::string(own.begin(), own.begin() + 4), read(own)) << "self-contained";
}

TEST(QTReferences, FindsPathsInAliases)
{
    EXPECT_EQ("Disk:folder:file", FindPathInAlias(Join({Bytes(9), Text("Disk:folder:file")})));
    EXPECT_EQ(
        "Disk:b:last file",
        FindPathInAlias(Join({Text("Disk:a:first"), Bytes(3), Text("Disk:b:last file"), Bytes(3),
                              Text("no separator here"), Bytes(2), Text("C:\\short")})));
    const std::string path = "/" + std::string(48, 'x');  // 49 is '1', a path character itself
    EXPECT_EQ(path, FindPathInAlias(Join({Bytes(5), Text("1" + path)})));
    EXPECT_EQ("", FindPathInAlias(Text("D:\\a:\\b:\\c/d"))) << "shorter than an alias can be";
    EXPECT_EQ("", FindPathInAlias(Join({Bytes(30), Text("a/b/c/d/")})))
        << "no more than 8 characters";
}

TEST(QTReferences, TakesNamesFromCodeAtomsByTheirNumber)
{
    using Names = std::vector<std::string>;
    const auto find = [](const Bytes& code) {
        Names names;
        FindNamesInCode(code, names);
        return names;
    };
    EXPECT_EQ((Names{"first", "", "third"}),
              find(Join({Bytes(3), CodeRecord(3, "third"), CodeRecord(1, "first")})));
    const Bytes record = CodeRecord(1, "first");
    for (ptrdiff_t length = 0; length < 2 + 16; length++)
        EXPECT_EQ(Names{}, find(Bytes(record.begin(), record.begin() + length)));
    EXPECT_EQ(Names{}, find(Text("RU*ARU*ARU*ARU*ARU*ARU*A")));
    EXPECT_EQ(Names{}, find(CodeRecord(0, "none")));
    EXPECT_EQ(Names{}, find(CodeRecord(21, "beyond the list")));
    EXPECT_EQ(Names{}, find(Join({record, Bytes(4000)}))) << "too large to be looked at";
}

TEST(QTReferences, PutsPathsInTheFormOfThisSystem)
{
    const VolumeTable volumes({{"Disk", "/media/one"}, {"disk", "/media/two"}});
    const std::pair<const char*, const char*> rows[] = {
        {"Disk:a b:c", "/media/one/a b/c"}, {"DISK:c", "/media/one/c"},
        {"Other:a:b", "Other:a:b"},         {"\\\\SERVERLS\\share\\x", "//SERVER/share/x"},
        {"\\\\SERVERLS", "//SERVER"},       {"\\\\S\\LS\\x", "//S/LS/x"},  // only the server's name
        {"/plain/path", "/plain/path"},     {"", ""},
    };
    for (const auto& [reference, path] : rows)
        EXPECT_EQ(path, ResolveReference(reference, volumes));
}

TEST(VolumeTable, KnowsVolumesByLabelAndByMountPoint)
{
    const TempFolder folder;
    const std::string device = folder.Write("device", {});
    std::filesystem::create_directory(folder.Path("labels"));
    std::filesystem::create_symlink(device, folder.Path("labels/My\\x20Disk"));
    const std::string mounts =
        device + " /mnt/backup\\0401 ext4 rw 0 0\n" +
        "proc /proc proc rw 0 0\nbroken\n//server/x /mnt/share cifs rw 0 0\n";
    folder.Write("mounts", Text(mounts));
    const VolumeTable table(ReadVolumes(folder.Path("mounts"), folder.Path("labels")));
    ASSERT_TRUE(table.Find("my disk"));
    EXPECT_EQ("/mnt/backup 1", *table.Find("my disk"));
    EXPECT_EQ("/mnt/backup 1", *table.Find("backup 1"));
    EXPECT_EQ("/mnt/share", *table.Find("share"));
    EXPECT_FALSE(table.Find("proc"));
    EXPECT_TRUE(ReadVolumes("/nowhere", "/nowhere").empty());
}

}  // namespace
}  // namespace kelvane
