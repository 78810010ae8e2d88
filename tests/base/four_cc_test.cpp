#include "base/four_cc.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(FourCC, SpellsItsText)
{
    EXPECT_EQ(0x3250414Cu, "2PAL"_4cc);
    EXPECT_EQ("2PAL", FourCCText("2PAL"_4cc));
    EXPECT_EQ("...a", FourCCText(0x00017F61));
}

}  // namespace
}  // namespace kelvane
