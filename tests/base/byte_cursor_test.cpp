#include "base/byte_cursor.h"

#include <gtest/gtest.h>

#include "base/field_table.h"
#include "base/four_cc.h"
#include "base/status.h"

namespace kelvane {
namespace {

TEST(ByteReader, ReadsBothByteOrders)
{
    const Bytes block = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    ByteReader big(block, ByteOrder::kBig);
    EXPECT_EQ(0x01, big.Get8());
    EXPECT_EQ(0x0203, big.Get16());
    EXPECT_EQ(0x04050607u, big.Get32());
    EXPECT_EQ(0x08090A0B0C0D0E0Fu, big.Get64());
    ByteReader little(block, ByteOrder::kLittle);
    EXPECT_EQ(0x0201, little.Get16());
    EXPECT_EQ(0x050403u, little.Get(3));
    EXPECT_EQ(0x09080706u, little.Get32());
    EXPECT_FALSE(big.Failed() || little.Failed());
}

TEST(ByteCursor, SpellsCodesAlikeInBothByteOrders)
{
    static constexpr HeaderField kCode = {"code", 2, 4, true};
    for (const ByteOrder order : {ByteOrder::kBig, ByteOrder::kLittle}) {
        Bytes block;
        ByteWriter writer(block, order);
        writer.Put16(0);
        writer.PutCode("dvsd"_4cc);
        EXPECT_EQ((Bytes{0, 0, 'd', 'v', 's', 'd'}), block);
        ByteReader reader(block, order);
        reader.Skip(2);
        EXPECT_EQ("dvsd"_4cc, reader.GetCode());
        EXPECT_EQ(0u, reader.GetCode());
        EXPECT_TRUE(reader.Failed());
        EXPECT_EQ("dvsd"_4cc, GetField(block, kCode, order));
        EXPECT_EQ(kOK, SetField(block, kCode, "HFYU"_4cc, order));
        EXPECT_EQ((Bytes{0, 0, 'H', 'F', 'Y', 'U'}), block);
    }
}

TEST(ByteReader, GoingPastTheEndYieldsNothingAndIsRemembered)
{
    const Bytes block = {1, 2, 3, 4, 5};
    ByteReader reader(block, ByteOrder::kBig);
    reader.Skip(UINT64_MAX - 1);
    EXPECT_TRUE(reader.Failed());
    EXPECT_EQ(0u, reader.At()) << "a skip past the end moves nothing";
    EXPECT_EQ(0u, reader.Get8()) << "once failed, always failed";
    ByteReader other(block, ByteOrder::kBig);
    EXPECT_EQ(0x01020304u, other.Get32());
    EXPECT_EQ(0u, other.Get16());
    EXPECT_EQ(1u, other.Left());
    EXPECT_TRUE(other.Take(1).empty());
}

TEST(ByteWriter, AppendsAndSetsAgainOnlyWhatItWrote)
{
    Bytes block;
    ByteWriter writer(block, ByteOrder::kLittle);
    writer.Put32(0);
    writer.Put16(0x0102);
    writer.Set(0, 0x0A0B0C0D, 4);
    EXPECT_EQ((Bytes{0x0D, 0x0C, 0x0B, 0x0A, 0x02, 0x01}), block);
    EXPECT_FALSE(writer.Failed());
    writer.Set(4, 0, 4);
    EXPECT_TRUE(writer.Failed());
    EXPECT_EQ(6u, block.size());
}

TEST(FieldTable, KeepsToTheBodyAndToTheWidth)
{
    static constexpr HeaderField kTwo[] = {{"first", 0, 2}, {"second", 2, 4}};
    static_assert(Covers(kTwo, 6) && !Covers(kTwo, 8));
    Bytes body(6);
    EXPECT_EQ(kOK, SetField(body, kTwo[1], 0x01020304, ByteOrder::kBig));
    EXPECT_EQ((Bytes{0, 0, 1, 2, 3, 4}), body);
    EXPECT_EQ(0x04030201u, GetField(body, kTwo[1], ByteOrder::kLittle));
    EXPECT_EQ(kError, SetField(body, kTwo[0], 0x10000, ByteOrder::kBig)) << "too wide";
    EXPECT_EQ(kError, SetField(std::span(body).first(5), kTwo[1], 0, ByteOrder::kBig));
    EXPECT_EQ(0u, GetField(std::span(body).first(5), kTwo[1], ByteOrder::kBig));
}

}  // namespace
}  // namespace kelvane
