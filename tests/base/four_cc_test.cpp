#include "base/four_cc.h"

#include <gtest/gtest.h>

#include <cstring>

namespace kelvane {
namespace {

TEST(FourCC, SpellsItsTextInEitherOrder)
{
    EXPECT_EQ(0x3250414Cu, "2PAL"_4cc);
    const uint32_t code = FourCC("dvsd");
    char text[5] = {};
    memcpy(text, &code, 4);  // this machine is little-endian, as the files are
    EXPECT_STREQ("dvsd", text);
    EXPECT_EQ("dvsd", FourCCText(code, true));
    EXPECT_EQ("2PAL", FourCCText("2PAL"_4cc, false));
    EXPECT_EQ("...a", FourCCText(0x00017F61, false));
}

}  // namespace
}  // namespace kelvane
