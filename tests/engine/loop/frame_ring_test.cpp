#include "engine/loop/frame_ring.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

using enum Neighbour;

// Frames are told apart by their first byte.
void Read(FrameRing& ring, int64_t number)
{
    ring.Room()[0] = uint8_t(number);
    ring.Filled(1, number);
}

TEST(FrameRing, NeighboursThatAreNotThereGiveWay)
{
    FrameRing ring(8);
    EXPECT_TRUE(ring.IsFresh());
    for (int64_t number = 0; number < 3; number++)
        Read(ring, number);
    EXPECT_FALSE(ring.IsFresh());
    const auto around = [&] {
        const NeighbourFrames frames = ring.Neighbours();
        std::string numbers;
        for (const Neighbour which : {kPrevious, kCurrent, kNext, kNewest})
            numbers += char('0' + frames[which]->bytes[0]);
        return numbers;
    };
    EXPECT_EQ("0012", around()) << "at the beginning";
    Read(ring, 3);
    EXPECT_EQ("0123", around());
    ring.MarkEmpty(4);
    EXPECT_EQ("1233", around());
    ring.MarkEmpty(5);
    EXPECT_EQ("2333", around()) << "at the end";
    EXPECT_EQ(3, ring.CurrentNumber());
    EXPECT_FALSE(ring.IsDry());
    ring.MarkEmpty(6);
    EXPECT_FALSE(ring.Current());
    EXPECT_TRUE(ring.IsDry());
}

TEST(FrameRing, ARepeatIsTheFrameBeforeWithItsPicture)
{
    FrameRing ring(8);
    Read(ring, 0);
    Read(ring, 1);
    ring.Repeat(2);
    Read(ring, 3);
    const NeighbourFrames frames = ring.Neighbours();
    EXPECT_EQ(frames[kCurrent], frames[kNext]);
    EXPECT_NE(frames[kNext], frames[kNewest]);
    EXPECT_EQ(1, ring.CurrentNumber());
}

TEST(FrameRing, AFrameThatIsHeldKeepsItsBytesAndOthersGiveTheirRoom)
{
    FrameRing ring(8);
    for (int64_t number = 0; number < 4; number++)
        Read(ring, number);
    const FrameRef held = ring.Current();
    const SourceFrame* free = ring.Neighbours()[kPrevious].get();
    held->has_picture = ring.Neighbours()[kPrevious]->has_picture = true;
    bool again = false;
    for (int64_t number = 4; number < 20; number++) {
        Read(ring, number);
        const FrameRef newest = ring.Neighbours()[kNewest];
        EXPECT_FALSE(newest->has_picture) << "of the frame that had the room before";
        EXPECT_NE(held, newest);
        again = again || newest.get() == free;
    }
    EXPECT_EQ(1, held->bytes[0]);
    EXPECT_TRUE(again);
}

}  // namespace
}  // namespace kelvane
