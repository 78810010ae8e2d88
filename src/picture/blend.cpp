#include "picture/blend.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "picture/pixels.h"

namespace kelvane {

namespace plain {

void BlendPictures(BlendMode mode, int32_t weight, const PictureView& source,
                   const PictureTarget& destination)
{
    const int32_t height = std::min(source.height, destination.height);
    const int32_t width = std::min(source.width, destination.width);
    weight = std::clamp(weight, 0, kFullWeight);
    for (int32_t y = 0; y < height; y++) {
        const uint8_t* s = source.pixels + y * source.pitch;
        uint8_t* d = destination.pixels + y * destination.pitch;
        for (int32_t x = 0; x < width; x++, s += 4, d += 4) {
            int32_t w = weight;
            if (mode == BlendMode::kSourceAlpha)
                w = weight == kFullWeight ? s[3] : s[3] * weight >> 8;
            const bool copy = mode == BlendMode::kWeight && weight == kFullWeight;
            for (int i = 0; i < 4; i++)
                d[i] = copy ? s[i] : LimitToByte(d[i] + ((s[i] - d[i]) * w >> 8));
        }
    }
}

uint32_t PictureDifference(const uint8_t* a, const uint8_t* b, size_t words)
{
    uint32_t sum = 0;
    for (size_t i = 0; i < 4 * words; i++)
        if (i % 4 != 3) sum += static_cast<uint32_t>(std::abs(a[i] - b[i]));
    return sum;
}

}  // namespace plain

namespace {

constexpr size_t kBlockBytes = kBlockPixels * kPixelBytes;

// Blends two bytes at a time in lanes of 16 bits: no bytes have to be spread and packed again.
constexpr size_t kAlphaPixels = 16;
constexpr size_t kHalves = 2 * kAlphaPixels;

// The pixel's weight for each of its two halves.
void WeightsOfAlpha(const uint8_t* s, uint16_t weight, uint16_t* w)
{
    uint32_t repeated[kAlphaPixels];
    for (size_t i = 0; i < kAlphaPixels; i++) {
        const uint32_t alpha = Load32(s + 4 * i) >> 24;
        repeated[i] = alpha | alpha << 16;
    }
    memcpy(w, repeated, sizeof repeated);
    if (weight == kFullWeight) return;
    for (size_t i = 0; i < kHalves; i++)
        w[i] = static_cast<uint16_t>(w[i] * weight) >> 8;
}

void BlendBlockByAlpha(const uint8_t* s, uint16_t weight, uint8_t* d)
{
    uint16_t w[kHalves], from[kHalves], to[kHalves];
    WeightsOfAlpha(s, weight, w);
    memcpy(from, s, sizeof from);
    memcpy(to, d, sizeof to);
    for (size_t i = 0; i < kHalves; i++) {
        const auto rest = static_cast<uint16_t>(256 - w[i]);
        const auto low = static_cast<uint16_t>((to[i] & 255) * rest + (from[i] & 255) * w[i]);
        const auto high = static_cast<uint16_t>((to[i] >> 8) * rest + (from[i] >> 8) * w[i]);
        to[i] = static_cast<uint16_t>(low >> 8 | (high & 0xFF00));
    }
    memcpy(d, to, sizeof to);
}

void BlendRunByAlpha(const uint8_t* s, uint16_t weight, uint8_t* d, size_t pixels)
{
    size_t i = 0;
    for (; i + kAlphaPixels <= pixels; i += kAlphaPixels)
        BlendBlockByAlpha(s + 4 * i, weight, d + 4 * i);
    const size_t rest = 4 * (pixels - i);
    if (rest == 0) return;
    uint8_t from[4 * kAlphaPixels] = {}, to[4 * kAlphaPixels] = {};
    memcpy(from, s + 4 * i, rest);
    memcpy(to, d + 4 * i, rest);
    BlendBlockByAlpha(from, weight, to);
    memcpy(d + 4 * i, to, rest);
}

uint32_t DifferenceOfBlock(const uint8_t* a, const uint8_t* b, size_t pixels)
{
    uint32_t words[2][kBlockPixels] = {};
    memcpy(words[0], a, pixels * kPixelBytes);
    memcpy(words[1], b, pixels * kPixelBytes);
    for (auto& side : words)
        for (uint32_t& word : side)
            word &= kColourBytes;
    uint8_t bytes[2][kBlockBytes];
    memcpy(bytes, words, sizeof bytes);
    int32_t sum = 0;
    for (size_t i = 0; i < kBlockBytes; i++)
        sum += std::abs(bytes[0][i] - bytes[1][i]);
    return static_cast<uint32_t>(sum);
}

}  // namespace

// d * (256 - w) + s * w is d * 256 + (s - d) * w, is never negative and fits 16 bits: the same
// result without sign or limit.
void BlendRun(const uint8_t* d, const uint8_t* s, uint32_t weight, uint8_t* out, size_t bytes)
{
    const auto w = static_cast<uint16_t>(weight), rest = static_cast<uint16_t>(256 - weight);
    for (size_t i = 0; i < bytes; i++)
        out[i] = static_cast<uint8_t>(static_cast<uint16_t>(d[i] * rest + s[i] * w) >> 8);
}

void BlendPictures(BlendMode mode, int32_t weight, const PictureView& source,
                   const PictureTarget& destination, WorkerPool* pool)
{
    const int32_t height = std::min(source.height, destination.height);
    const int32_t width = std::min(source.width, destination.width);
    if (width <= 0 || height <= 0) return;
    const auto w = static_cast<uint32_t>(std::clamp(weight, 0, kFullWeight));
    const size_t pixels = static_cast<size_t>(width);
    ForBands(pool, static_cast<size_t>(height), [&](size_t first, size_t end) {
        for (auto y = static_cast<ptrdiff_t>(first); y < static_cast<ptrdiff_t>(end); y++) {
            const uint8_t* s = source.pixels + y * source.pitch;
            uint8_t* d = destination.pixels + y * destination.pitch;
            if (mode == BlendMode::kSourceAlpha)
                BlendRunByAlpha(s, static_cast<uint16_t>(w), d, pixels);
            else if (w == kFullWeight)
                memmove(d, s, pixels * kPixelBytes);
            else
                BlendRun(d, s, w, d, pixels * kPixelBytes);
        }
    });
}

uint32_t PictureDifference(const uint8_t* a, const uint8_t* b, size_t words, WorkerPool* pool)
{
    std::atomic<uint32_t> sum = 0;
    ForBands(pool, (words + kBlockPixels - 1) / kBlockPixels, [&](size_t first, size_t end) {
        uint32_t part = 0;
        for (size_t i = first * kBlockPixels; i < std::min(words, end * kBlockPixels);
             i += kBlockPixels)
            part += DifferenceOfBlock(a + 4 * i, b + 4 * i, std::min(kBlockPixels, words - i));
        sum += part;
    });
    return sum;
}

}  // namespace kelvane
