#include "moving_picture.h"

#include <cstddef>

#include "sample/moving_picture.h"

namespace kelvane {

namespace {

constexpr double kStart = 0.8;  // seconds into the scene: disc and bar are near each other
constexpr double kFrameRate = 25.0;

}  // namespace

std::vector<uint8_t> DrawMovingPicture(int32_t width, int32_t height, double even, double odd)
{
    const MovingPicture scene(width, height);
    std::vector<uint8_t> picture(size_t(width) * size_t(height) * 4);
    scene.DrawField(picture.data(), 0, kStart + even / kFrameRate);
    scene.DrawField(picture.data(), 1, kStart + odd / kFrameRate);
    return picture;
}

}  // namespace kelvane
