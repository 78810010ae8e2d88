#include "picture/worker_pool.h"

#include <gtest/gtest.h>

#include "picture/blend.h"
#include "picture/random_picture.h"
#include "picture/rgb_to_yuv.h"
#include "picture/yuv_to_rgb.h"

namespace kelvane {
namespace {

TEST(WorkerPool, RunsEachPartOnceHoweverOftenItIsUsed)
{
    for (int threads = 0; threads <= 8; threads++) {
        WorkerPool pool(threads);
        for (size_t parts = 0; parts < 40; parts++) {
            std::vector<int> runs(parts);
            pool.ForEach(parts, [&](size_t i) { runs[i]++; });
            ASSERT_EQ(std::vector<int>(parts, 1), runs) << threads << " threads";
        }
    }
}

TEST(WorkerPool, AnswersOnlyWhenAllPartsAreDone)
{
    WorkerPool pool(4);
    for (int round = 0; round < 20; round++) {
        std::atomic<int> done = 0;
        pool.ForEach(8, [&](size_t) {
            std::this_thread::sleep_for(std::chrono::microseconds(300));
            done++;
        });
        ASSERT_EQ(8, done);
    }
}

TEST(WorkerPool, ColourKernelsGiveTheSameBytesOnAnyNumberOfThreads)
{
    std::mt19937 random(40);
    constexpr int32_t kWidth = 35, kHeight = 41;
    constexpr size_t kPixels = kWidth * kHeight;
    const ExactBytes source = RandomBytes(4 * kPixels, random);
    ExactBytes yuv(2 * kPixels), rgb(4 * kPixels), mixed = RandomBytes(4 * kPixels, random);
    const ExactBytes target = mixed;
    const PictureView view{source.data(), 4 * kWidth, kWidth, kHeight};
    plain::RgbToYuv(source.data(), kBGRX32, yuv.data(), kYUY2, kWidth, kHeight);
    plain::YuvToRgb(yuv.data(), kYUY2, rgb.data(), kBGRX32, kWidth, kHeight);
    plain::BlendPictures(BlendMode::kWeight, 99, view, {mixed.data(), 4 * kWidth, kWidth, kHeight});
    const uint32_t difference = plain::PictureDifference(source.data(), target.data(), kPixels);
    for (int threads = 1; threads <= 8; threads++) {
        WorkerPool pool(threads);
        ExactBytes yuv2(2 * kPixels), rgb2(4 * kPixels), mixed2 = target;
        RgbToYuy2(source.data(), kBGRX32, yuv2.data(), kWidth, kHeight, &pool);
        EXPECT_EQ(yuv, yuv2);
        YuvToRgb(yuv.data(), kYUY2, rgb2.data(), kBGRX32, kWidth, kHeight, &pool);
        EXPECT_EQ(rgb, rgb2);
        BlendPictures(BlendMode::kWeight, 99, view, {mixed2.data(), 4 * kWidth, kWidth, kHeight},
                      &pool);
        EXPECT_EQ(mixed, mixed2);
        EXPECT_EQ(difference, PictureDifference(source.data(), target.data(), kPixels, &pool));
        YuvSignedToRgb(yuv.data(), rgb2.data(), kBGRX32, kWidth, kHeight, &pool);
        plain::YuvSignedToRgb(yuv.data(), rgb.data(), kBGRX32, kWidth, kHeight);
        EXPECT_EQ(rgb, rgb2);
        plain::YuvToRgb(yuv.data(), kYUY2, rgb.data(), kBGRX32, kWidth, kHeight);
    }
}

}  // namespace
}  // namespace kelvane
