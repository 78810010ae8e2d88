#include "platform/codec_drivers.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include "support/temp_folder.h"

namespace kelvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(CodecDrivers, ModulesThatCannotBeUsedAreNamed)
{
    const TempFolder folder;
    EXPECT_THAT(LoadCodecDrivers(folder.Root().string()).problems, IsEmpty());
    EXPECT_THAT(LoadCodecDrivers(folder.Path("missing")).codecs, IsEmpty());
    folder.Write("kelvane-codec-broken.so", std::vector<uint8_t>(100, 1));
    folder.Write("other.so", std::vector<uint8_t>(100, 1));
    const CodecDrivers broken = LoadCodecDrivers(folder.Root().string());
    EXPECT_THAT(broken.codecs, IsEmpty());
    EXPECT_THAT(broken.problems,
                ElementsAre(HasSubstr("kelvane-codec-broken.so cannot be loaded.")));

    const CodecDrivers other =
        LoadCodecDrivers(std::string(TEST_MODULES) + "/kelvane-codec-test-version");
    EXPECT_THAT(other.codecs, IsEmpty());
    EXPECT_THAT(other.problems,
                ElementsAre(HasSubstr("is of version 3, but version 2 is needed.")));
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
