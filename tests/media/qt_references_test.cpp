#include "media/qt_references.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "media/qt_file.h"
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
    QTTestTrack track;
    track.stco = QTTable({0, 8});
    track.data_reference = data_reference;
    track.code = code;
    return QTAtom("moov", {QTMovieHeader(), track.Build()});
}

std::string FirstFrame(const std::string& path, const VolumeTable& volumes)
{
    QTFile file(path.c_str(), kRead, volumes);
    EXPECT_EQ(0, file.InitCheck()) << "what is missing shows at the first read";
    Bytes buffer(16);
    uint32_t size;
    const int status = file.ReadFrame(0, buffer, size);
    return status ? std::to_string(status) : std::string(buffer.begin(), buffer.begin() + size);
}

TEST(QTReferences, FollowsAliasesAndCodeAtomsToOtherFiles)
{
    const TempFolder folder;
    std::filesystem::create_directory(folder.Path("reel 1"));
    folder.Write("reel 1/tape.dv", QTTinyMedia());
    const VolumeTable volumes({{"MEDIA DISK", folder.Root().string()}});
    const std::string mac = "Media Disk:reel 1:tape.dv";
    const auto read = [&](const Bytes& movie) {
        return FirstFrame(folder.Write("movie.mov", movie), volumes);
    };
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(mac))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(folder.Path("reel 1/tape.dv")))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias(""), CodeRecord(1, mac))));
    EXPECT_EQ("AAAA", read(ReferenceMovie(Alias("No Disk:nothing"), CodeRecord(1, mac))))
        << "the names in \"code\" go before those in aliases";
    EXPECT_EQ("-5", read(ReferenceMovie(Alias("Other Disk:reel 1:tape.dv"))));
    EXPECT_EQ("-5", read(ReferenceMovie(Alias(folder.Path("missing.dv")))));
    EXPECT_EQ("-5", read(ReferenceMovie(Alias(folder.Path("reel 1")))));
    EXPECT_EQ("-5", read(ReferenceMovie(Alias("/dev/zero/of/all"))));
    ASSERT_EQ(0, mkfifo(folder.Path("reel 1/fifo").c_str(), 0600));
    EXPECT_EQ("-5", read(ReferenceMovie(Alias(folder.Path("reel 1/fifo")))));
    folder.Write("reel 1/short", Text("AAA"));
    EXPECT_EQ("-5", read(ReferenceMovie(Alias(folder.Path("reel 1/short")))));

    const Bytes circular = ReferenceMovie(Alias(folder.Path("movie.mov")));
    EXPECT_EQ(std::string(circular.begin(), circular.begin() + 4), read(circular))
        << "a movie that refers to itself is read like any other file";
    const Bytes own = ReferenceMovie(QTAtom("alis", {Big(1), Text(folder.Path("no such file"))}));
    EXPECT_EQ(std::string(own.begin(), own.begin() + 4), read(own)) << "self-contained";
}

TEST(QTReferences, FindsPathsInAliases)
{
    const auto find = [](const Bytes& alias) { return FindPathInAlias(alias); };
    EXPECT_EQ("Disk:folder:file", find(Join({Bytes(9), Text("Disk:folder:file")})));
    EXPECT_EQ("Disk:b:last file",
              find(Join({Text("Disk:a:first"), Bytes(3), Text("Disk:b:last file"), Bytes(3),
                         Text("no separator here"), Bytes(2), Text("C:\\short")})));
    const std::string path(49, 'x');  // 49 is '1', a path character itself
    EXPECT_EQ("/" + path.substr(1), find(Join({Bytes(5), Text("1/" + path.substr(1))})));
    EXPECT_EQ("", find(Text("D:\\a:\\b:\\c/d"))) << "shorter than an alias can be";
    EXPECT_EQ("", find(Join({Bytes(30), Text("a/b/c/d/")}))) << "no more than 8 characters";
}

TEST(QTReferences, TakesNamesFromCodeAtomsByTheirNumber)
{
    std::vector<std::string> names;
    FindNamesInCode(Join({Bytes(3), CodeRecord(3, "third"), CodeRecord(1, "first")}), names);
    EXPECT_EQ((std::vector<std::string>{"first", "", "third"}), names);

    const auto none = [](const Bytes& code) {
        std::vector<std::string> found;
        FindNamesInCode(code, found);
        return found.empty();
    };
    const Bytes record = CodeRecord(1, "first");
    for (size_t length = 0; length < 2 + 16; length++)
        EXPECT_TRUE(none(Bytes(record.begin(), record.begin() + static_cast<ptrdiff_t>(length))));
    EXPECT_TRUE(none(Text("RU*ARU*ARU*ARU*ARU*ARU*A")));
    EXPECT_TRUE(none(CodeRecord(0, "none")));
    EXPECT_TRUE(none(CodeRecord(21, "beyond the list")));
    EXPECT_TRUE(none(Join({record, Bytes(4000)}))) << "too large to be looked at";
}

TEST(QTReferences, PutsPathsInTheFormOfThisSystem)
{
    const VolumeTable volumes({{"Disk", "/media/one"}, {"disk", "/media/two"}});
    EXPECT_EQ("/media/one/a b/c", ResolveReference("Disk:a b:c", volumes));
    EXPECT_EQ("/media/one/c", ResolveReference("DISK:c", volumes));
    EXPECT_EQ("Other:a:b", ResolveReference("Other:a:b", volumes));
    EXPECT_EQ("//SERVER/share/x", ResolveReference("\\\\SERVERLS\\share\\x", volumes));
    EXPECT_EQ("//SERVER", ResolveReference("\\\\SERVERLS", volumes));
    EXPECT_EQ("//S/LS/x", ResolveReference("\\\\S\\LS\\x", volumes)) << "only the server's name";
    EXPECT_EQ("/plain/path", ResolveReference("/plain/path", volumes));
    EXPECT_EQ("", ResolveReference("", volumes));
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
