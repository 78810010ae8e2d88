#include "picture/blend.h"

#include <gmock/gmock.h>

#include "picture/random_picture.h"

namespace kelvane {
namespace {

using testing::ElementsAre;

Bytes Blended(BlendMode mode, int32_t weight, const Bytes& source, Bytes destination)
{
    const auto width = static_cast<int32_t>(source.size() / 4);
    BlendPictures(mode, weight, {source.data(), 0, width, 1}, {destination.data(), 0, width, 1});
    return destination;
}

TEST(BlendPictures, RoundsDownAndMixesTheFourthByte)
{
    const Bytes source = {0, 255, 3, 10}, target = {255, 0, 0, 20};
    EXPECT_EQ(target, Blended(BlendMode::kWeight, 0, source, target));
    EXPECT_EQ(source, Blended(BlendMode::kWeight, 255, source, target)) << "a plain copy";
    EXPECT_THAT(Blended(BlendMode::kWeight, 128, source, target), ElementsAre(127, 127, 1, 15));
    // 255 + (-255 * 254 >> 8), 255 * 254 >> 8, 3 * 254 >> 8, 20 + (-10 * 254 >> 8)
    EXPECT_THAT(Blended(BlendMode::kWeight, 254, source, target), ElementsAre(1, 253, 2, 10));
}

TEST(BlendPictures, TakesTheWeightFromTheSourcesFourthByte)
{
    const Bytes source = {200, 200, 200, 128, 200, 200, 200, 255}, target(8, 100);
    EXPECT_THAT(Blended(BlendMode::kSourceAlpha, 255, source, target),
                ElementsAre(150, 150, 150, 114, 199, 199, 199, 254));
    EXPECT_THAT(Blended(BlendMode::kSourceAlpha, 128, source, target),
                ElementsAre(125, 125, 125, 107, 149, 149, 149, 176));
}

TEST(BlendPictures, CoversTheSmallerSizeRowByRow)
{
    const Bytes source(3 * 4 * 2, 9);
    Bytes target(2 * 4 * 3, 1);
    BlendPictures(BlendMode::kWeight, 255, {source.data(), 12, 3, 2}, {target.data(), 8, 2, 3});
    for (size_t i = 0; i < target.size(); i++)
        EXPECT_EQ(i < 2 * 4 * 2 ? 9 : 1, target[i]) << i;
}

TEST(BlendPictures, FastFormGivesThePlainBytes)
{
    std::mt19937 random(35);
    WorkerPool pool(4);
    for (const BlendMode mode : {BlendMode::kWeight, BlendMode::kSourceAlpha})
        for (const int32_t weight : {-5, 0, 1, 23, 127, 128, 200, 254, 255, 300})
            for (const int32_t width : {1, 3, 15, 16, 33, 70}) {
                const ptrdiff_t pitch = width * 4 + 5;
                const auto bytes = static_cast<size_t>(9 * pitch - 5);  // the last without a gap
                const ExactBytes source = RandomBytes(bytes, random, 1);
                ExactBytes fast = RandomBytes(bytes, random, 3), slow = fast;
                const PictureView view{source.data(), pitch, width, 9};
                BlendPictures(mode, weight, view, {fast.data(), pitch, width, 9}, &pool);
                plain::BlendPictures(mode, weight, view, {slow.data(), pitch, width, 9});
                ASSERT_EQ(slow, fast) << "weight " << weight << ", width " << width;
            }
}

TEST(PictureDifference, LeavesTheFourthByteOut)
{
    const Bytes a = {1, 2, 3, 0, 255, 0, 7, 9}, b = {2, 0, 3, 255, 0, 255, 7, 9};
    EXPECT_EQ(3u + 510u, PictureDifference(a.data(), b.data(), 2));
}

TEST(PictureDifference, FastFormGivesThePlainSum)
{
    std::mt19937 random(36);
    WorkerPool pool(4);
    for (size_t words = 0; words < 200; words++) {
        const ExactBytes a = RandomBytes(4 * words, random, words % 4);
        const ExactBytes b = RandomBytes(4 * words, random, words % 3);
        ASSERT_EQ(plain::PictureDifference(a.data(), b.data(), words),
                  PictureDifference(a.data(), b.data(), words, &pool))
            << words;
    }
}

}  // namespace
}  // namespace kelvane
