// Frames that lie in other files.

#include <sys/stat.h>

#include <filesystem>

#include "base/status.h"
#include "media/avi/avi_reader_case.h"

namespace kelvane {
namespace {

using namespace std::string_literals;

const auto Entry = TinyAVI::IndexEntry;

using AVIReferences = AVIReader;

TEST_F(AVIReferences, FollowsReferencesIntoOtherFiles)
{
    const std::string frame(144000, 'v');
    const std::string media = Put("padding." + RiffChunk("00db", frame), "film.000");
    const auto reference = [](const std::string& path) {
        return "REF " + Little(8, 4) + Little(0, 4) + Little(path.size() + 1, 4) + path + '\0';
    };
    const std::string here = reference(media), there = reference(fFolder.Path("film.001"));
    const std::string film = TinyAVI{.frames = {here, here, there}}.Build();
    const std::string missing = Failed(kReferenceMissing);
    AVIFile file = Open(film);
    Bytes small(100000);
    uint32_t size = 0;
    EXPECT_EQ(kTooLarge, file.ReadFrame(0, small, size)) << "no room for what it refers to";
    EXPECT_EQ(small, Bytes(100000, 'v'));
    EXPECT_EQ(frame, NextFrame(file));
    EXPECT_EQ(frame, NextFrame(file));
    EXPECT_EQ(missing, NextFrame(file));

    Put("too short", "film.000");
    ASSERT_EQ(0, mkfifo(fFolder.Path("film.001").c_str(), 0600));
    AVIFile again = Open(film);
    EXPECT_EQ(Failed(kMissing), NextFrame(again)) << "short";
    again.StreamAt(0)->position = 2;
    EXPECT_EQ(missing, NextFrame(again)) << "no regular file";
}

TEST_F(AVIReferences, LooksForReferencesBesideTheFilm)
{
    const std::string media = "padding." + RiffChunk("00db", std::string(144000, 'v'));
    Put(media, "film.000");
    ASSERT_EQ(0, mkfifo(fFolder.Path("film.001").c_str(), 0600));
    std::filesystem::create_directories(fFolder.Path("film.002"));
    Put("no folder", "file");
    const auto read = [&](const std::string& path) {
        const std::string reference =
            "REF " + Little(8, 4) + Little(0, 4) + Little(path.size() + 1, 4) + path + '\0';
        AVIFile file = Open(TinyAVI{.frames = {reference}}.Build());
        return NextFrame(file);
    };
    for (const char* gone : {"/nowhere/film.000", "D:\\films\\film.000", "../x/film.000",
                             "film.000", "/nowhere\\film.000"})
        EXPECT_EQ(std::string(144000, 'v'), read(gone)) << gone;
    EXPECT_EQ(std::string(144000, 'v'), read(fFolder.Path("file/film.000")));
    const std::string missing = Failed(kReferenceMissing);
    for (const char* none :
         {"/nowhere/film.003", "/nowhere/film.001", "/nowhere/film.002", "/nowhere/", "D:\\"})
        EXPECT_EQ(missing, read(none)) << none;
    std::filesystem::create_directories(fFolder.Path("there/film.000"));
    EXPECT_EQ(missing, read(fFolder.Path("there/film.000"))) << "what is there is not replaced";
}

TEST_F(AVIReferences, TakesOnlyWholeReferencesForReferences)
{
    const std::string head = "REF " + Little(0, 8);
    for (const std::string& chunk :
         {"REF "s, "REF 2345"s, head, head + Little(0, 4), head + Little(0, 4) + "film.000",
          head + Little(4, 4) + "\0000"s, head + Little(9, 4) + "film.000",
          head + Little(0xFFFFFFFF, 4) + "film.000", "REF " + std::string(119996, 'x')})
        EXPECT_EQ(chunk, Frames({.frames = {chunk}})) << chunk.size();
    AVIFile file = Open(TinyAVI{.frames = {head + Little(8, 4) + "film.000"}}.Build());
    EXPECT_EQ(Failed(kReferenceMissing), NextFrame(file)) << "a path needs no zero";
    uint32_t size = 0;
    Bytes buffer(144000);
    EXPECT_EQ(" (No such file or directory)", file.ReadFrame(0, buffer, size).Reason());
    const std::string sound = TinyAVI{.type = "auds",
                                      .frames = {head + Little(8, 4) + "film.000"},
                                      .index = Entry("00wb", 4, 24)}
                                  .Build();
    AVIFile audio = Open(sound);
    EXPECT_EQ(24u, NextFrame(audio).size()) << "sound is never elsewhere";
}

}  // namespace
}  // namespace kelvane
