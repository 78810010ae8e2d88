#include "quality/camera.h"

#include <algorithm>

namespace kelvane {

Camera::Camera(bool pal, double tempo)
    : fSystem(SystemFor(pal)),
      fTempo(tempo),
      fScene(fSystem.width, kRowsALine * fSystem.height, {.counter = false, .cut_seconds = 0}),
      fDrawn(size_t(fSystem.width) * size_t(kRowsALine * fSystem.height) * 4 * kMoments),
      fLight(size_t(fSystem.width) * 4)
{
}

void Camera::GatherLine(uint8_t* line, int32_t y)
{
    const size_t row = size_t(fSystem.width) * 4;
    const int32_t rows = kRowsALine * fSystem.height, first = kRowsALine * y - kRowsALine / 2;
    std::ranges::fill(fLight, uint16_t{0});
    for (int moment = 0; moment < kMoments; moment++) {
        const int drawn = moment % 2;
        for (int32_t i = drawn; i < 2 * kRowsALine; i += 2) {
            const int32_t from = std::clamp(first + i, drawn, rows - 2 + drawn);
            const uint8_t* light = fDrawn.data() + size_t(moment * rows + from) * row;
            for (size_t x = 0; x < row; x++)
                fLight[x] = static_cast<uint16_t>(fLight[x] + light[x]);
        }
    }
    constexpr int kSamples = kMoments * kRowsALine;
    for (size_t x = 0; x < row; x++)
        line[x] = static_cast<uint8_t>((fLight[x] + kSamples / 2) / kSamples);
}

void Camera::ShootField(uint8_t* picture, int parity, double seconds)
{
    const size_t row = size_t(fSystem.width) * 4;
    const size_t drawn = row * size_t(kRowsALine * fSystem.height);
    for (int moment = 0; moment < kMoments; moment++)
        fScene.DrawField(fDrawn.data() + size_t(moment) * drawn, moment % 2,
                         fTempo * (seconds + kExposure * ((moment + 0.5) / kMoments - 0.5)));
    for (int32_t y = parity; y < fSystem.height; y += 2)
        GatherLine(picture + size_t(y) * row, y);
}

void Camera::ShootFrame(uint8_t* picture, int64_t number)
{
    for (int field = 0; field < 2; field++)
        ShootField(picture, 1 - field, (double(number) + 0.5 * field) / double(fSystem.rate));
}

}  // namespace kelvane
