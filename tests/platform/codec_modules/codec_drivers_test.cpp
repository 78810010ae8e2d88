#include "platform/codec_modules/codec_drivers.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_folder.h"

namespace kelvane {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

CodecDrivers LoadTestModule(const std::string& name)
{
    return LoadCodecDrivers(std::string(TEST_MODULES) + "/kelvane-codec-test-" + name);
}

TEST(CodecDrivers, ModulesThatCannotBeUsedAreNamedWithTheReason)
{
    const TempFolder folder;
    EXPECT_THAT(LoadCodecDrivers(folder.Root().string()).problems, IsEmpty());
    const std::string broken =
        folder.Write("kelvane-codec-broken.so", std::vector<uint8_t>(100, 1));
    folder.Write("other.so", std::vector<uint8_t>(100, 1));
    const CodecDrivers none = LoadCodecDrivers(folder.Root().string());
    EXPECT_THAT(none.codecs, IsEmpty());
    EXPECT_THAT(none.problems,
                ElementsAre("Codec module " + broken + " cannot be loaded. (invalid ELF header)"));

    const struct {
        std::string module, nonsense, problem;
    } rows[] = {
        {"version", "", " is of version 4, but version 3 is needed."},
        {"empty", "", " has no function kelvane_codec_module."},
        {"nonsense", "nothing", " gives no table of its functions."},
        {"nonsense", "gap", " has gaps in the table of its functions."},
        {"nonsense", "many", " claims to have 4294967295 codecs."},
    };
    for (const auto& row : rows) {
        setenv("KELVANE_TEST_NONSENSE", row.nonsense.c_str(), 1);
        const CodecDrivers found = LoadTestModule(row.module);
        EXPECT_THAT(found.codecs, IsEmpty());
        EXPECT_THAT(found.problems, ElementsAre(EndsWith("kelvane-codec-test-" + row.module +
                                                         ".so" + row.problem)));
    }
}

TEST(CodecDrivers, ACodecThatIsNotDescribedIsNamedAndTheOthersServe)
{
    setenv("KELVANE_TEST_NONSENSE", "", 1);
    const CodecDrivers found = LoadTestModule("nonsense");
    EXPECT_THAT(found.problems,
                ElementsAre(EndsWith(" does not describe its codec 2."), EndsWith(" codec 3."),
                            EndsWith(" codec 4."), EndsWith(" codec 5.")));
    ASSERT_EQ(2u, found.codecs.size());
    EXPECT_STREQ("Last", found.codecs[1].codec.long_name);
    EXPECT_EQ(5u, found.codecs[1].index);
}

TEST(CodecDrivers, AFolderThatCannotBeReadIsToldInTheSystemsWords)
{
    const TempFolder folder;
    const auto problem_of = [](const std::string& path) {
        const CodecDrivers found = LoadCodecDrivers(path);
        EXPECT_THAT(found.codecs, IsEmpty());
        return found.problems.empty() ? "" : found.problems.front();
    };
    const auto words = [](const std::string& path, const std::string& reason) {
        return "Codec folder " + path + " cannot be read. (" + reason + ")";
    };
    const std::string missing = folder.Path("missing"), file = folder.Write("file", {});
    const std::string loop = folder.Path("loop"), closed = folder.Path("closed");
    EXPECT_EQ(words(missing, "No such file or directory"), problem_of(missing));
    EXPECT_EQ(words(file, "Not a directory"), problem_of(file));
    std::filesystem::create_symlink(loop, loop);
    EXPECT_EQ(words(loop, "Too many levels of symbolic links"), problem_of(loop));

    std::filesystem::create_directory(closed);
    chmod(closed.c_str(), 0);
    const uid_t user = geteuid();
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(0, seteuid(user == 0 ? kNobody : user));  // root may read everything
    const std::string said = problem_of(closed);
    ASSERT_EQ(0, seteuid(user));
    EXPECT_EQ(words(closed, "Permission denied"), said);
}

TEST(CodecDrivers, TheFolderIsTheOneAskedForOrTheProgramsOwn)
{
    const CodecDrivers own = LoadCodecDrivers(CodecFolder());
    ASSERT_FALSE(own.codecs.empty()) << "the module stands beside the test program";
    EXPECT_STREQ("DV Video Encoder", own.codecs[0].codec.long_name);
    setenv("KELVANE_CODEC_PATH", "/some/folder", 1);
    EXPECT_EQ("/some/folder", CodecFolder());
    unsetenv("KELVANE_CODEC_PATH");
}

}  // namespace
}  // namespace kelvane
