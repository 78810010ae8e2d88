#include "codecs/huffyuv/huffyuv_colour.h"

#include <algorithm>

namespace kelvane {

namespace {

uint8_t Limit(int value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

int Luma(const uint8_t* bgr)
{
    return (6416 * bgr[0] + 33039 * bgr[1] + 16829 * bgr[2] + 0x108000) >> 16;
}

// `sum` is that of blue or red over the pair, `grey` what the pair's luma counts on that scale.
uint8_t Chroma(int sum, int grey, int gain)
{
    return Limit((((sum * 32768 - grey) >> 10) * gain + 0x808000) >> 16);
}

}  // namespace

void BottomUpRgbToYuy2(const uint8_t* source, size_t pixelBytes, size_t width, size_t height,
                       uint8_t* destination)
{
    const size_t rowBytes = pixelBytes * width;
    for (size_t row = height; row-- > 0;) {
        const uint8_t* a = source + row * rowBytes;
        for (size_t x = 0; x < width; x += 2, a += 2 * pixelBytes, destination += 4) {
            const uint8_t* b = a + pixelBytes;
            const int ya = Luma(a);
            const int yb = Luma(b);
            const int grey = (ya + yb) * 38155 - 1220960;
            destination[0] = static_cast<uint8_t>(ya);
            destination[1] = Chroma(a[0] + b[0], grey, 507);
            destination[2] = static_cast<uint8_t>(yb);
            destination[3] = Chroma(a[2] + b[2], grey, 642);
        }
    }
}

}  // namespace kelvane
