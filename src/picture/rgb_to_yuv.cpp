#include "picture/rgb_to_yuv.h"

#include <algorithm>

#include "picture/packing.h"
#include "picture/pixels.h"

namespace kelvane {

namespace {

size_t BytesOf(ColourSpace from)
{
    return from == kBGR24 ? 3 : 4;
}

}  // namespace

namespace plain {

namespace {

struct YUV {
    int32_t y, u, v;
};

YUV FromPixel(const uint8_t* pixel)
{
    const int32_t b = pixel[0], g = pixel[1], r = pixel[2];
    return {((8432 * r + 16425 * g + 3176 * b) >> 15) + 16,
            ((-4818 * r - 9527 * g + 14345 * b) >> 15) + 128,
            ((14345 * r - 12045 * g - 2300 * b) >> 15) + 128};
}

// Lays out a pair and gives its size.
size_t LayOut(const YUV& p0, const YUV& p1, ColourSpace to, uint8_t* pair)
{
    const int32_t u = (p0.u + p1.u) >> 1, v = (p0.v + p1.v) >> 1;
    const auto put = [pair](std::initializer_list<int32_t> values) {
        std::transform(values.begin(), values.end(), pair,
                       [](int32_t value) { return static_cast<uint8_t>(value); });
        return values.size();
    };
    if (to == kUYVY) return put({u, p0.y, v, p1.y});
    if (to == kYUVSigned) return put({p0.y, u - 128, p1.y, v - 128});
    if (to == kVYU24) return put({p0.v, p0.y, p0.u, v, p1.y, u});
    return put({p0.y, u, p1.y, v});
}

}  // namespace

void RgbToYuv(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height)
{
    const uint8_t black[4] = {};
    const size_t pixels = PixelCount(width, height), step = BytesOf(from);
    for (size_t i = 0; i < pixels; i += 2) {
        const bool whole = i + 1 < pixels;
        const uint8_t* p = source + i * step;
        uint8_t pair[6];
        const size_t bytes = LayOut(FromPixel(p), FromPixel(whole ? p + step : black), to, pair);
        destination = std::copy_n(pair, whole ? bytes : bytes / 2, destination);
    }
}

}  // namespace plain

namespace {

// The components of a block of pixels.
struct YUVBlock {
    int32_t y[kBlockPixels], u[kBlockPixels], v[kBlockPixels];
};

// `count` pixels, and black ones up to a whole block.
void LoadBlock(const uint8_t* source, ColourSpace from, size_t count, uint32_t* words)
{
    uint8_t widened[kBlockPixels * kPixelBytes];
    if (from == kBGR24) {
        Rgb24ToRgb32(source, widened, count, 0);
        source = widened;
    }
    memcpy(words, source, count * kPixelBytes);
    std::fill(words + count, words + kBlockPixels, 0);
}

// In single precision: products and sums stay below 2^24 and are exact.
void FromBlock(const uint32_t* words, YUVBlock& yuv)
{
    for (size_t i = 0; i < kBlockPixels; i++) {
        const auto b = static_cast<float>(static_cast<int32_t>(words[i] & 255));
        const auto g = static_cast<float>(static_cast<int32_t>(words[i] >> 8 & 255));
        const auto r = static_cast<float>(static_cast<int32_t>(words[i] >> 16 & 255));
        yuv.y[i] = (static_cast<int32_t>(8432 * r + 16425 * g + 3176 * b) >> 15) + 16;
        yuv.u[i] = (static_cast<int32_t>(-4818 * r - 9527 * g + 14345 * b) >> 15) + 128;
        yuv.v[i] = (static_cast<int32_t>(14345 * r - 12045 * g - 2300 * b) >> 15) + 128;
    }
}

template <ColourSpace kTo>
void LayOutBlock(const YUVBlock& yuv, uint8_t* out)
{
    for (size_t i = 0; i < kBlockPixels; i += 2) {
        const auto y0 = static_cast<uint32_t>(yuv.y[i]), y1 = static_cast<uint32_t>(yuv.y[i + 1]);
        const auto u = static_cast<uint32_t>((yuv.u[i] + yuv.u[i + 1]) >> 1);
        const auto v = static_cast<uint32_t>((yuv.v[i] + yuv.v[i + 1]) >> 1);
        if constexpr (kTo == kVYU24) {
            const auto u0 = static_cast<uint32_t>(yuv.u[i]), v0 = static_cast<uint32_t>(yuv.v[i]);
            Store32(out + 3 * i, v0 | y0 << 8 | u0 << 16 | v << 24);
            out[3 * i + 4] = static_cast<uint8_t>(y1);
            out[3 * i + 5] = static_cast<uint8_t>(u);
        } else {
            uint32_t pair = y0 | u << 8 | y1 << 16 | v << 24;
            if constexpr (kTo == kUYVY) pair = u | y0 << 8 | v << 16 | y1 << 24;
            if constexpr (kTo == kYUVSigned) pair ^= 0x80008000;
            Store32(out + 2 * i, pair);
        }
    }
}

template <ColourSpace kTo>
void Convert(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
             int32_t height, WorkerPool* pool)
{
    constexpr size_t kOut = kTo == kVYU24 ? 3 : 2;
    const size_t pixels = PixelCount(width, height), step = BytesOf(from);
    const auto convert = [=](size_t first, size_t end) {
        for (size_t at = first * kBlockPixels; at < std::min(pixels, end * kBlockPixels);
             at += kBlockPixels) {
            const size_t count = std::min(kBlockPixels, pixels - at);
            uint32_t words[kBlockPixels];
            LoadBlock(source + at * step, from, count, words);
            YUVBlock yuv;
            FromBlock(words, yuv);
            if (count == kBlockPixels) {
                LayOutBlock<kTo>(yuv, destination + at * kOut);
                continue;
            }
            uint8_t out[kBlockPixels * kOut];
            LayOutBlock<kTo>(yuv, out);
            memcpy(destination + at * kOut, out, count * kOut);
        }
    };
    ForBands(pool, (pixels + kBlockPixels - 1) / kBlockPixels, convert);
}

}  // namespace

void RgbToYuy2(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
               int32_t height, WorkerPool* pool)
{
    Convert<kYUY2>(source, from, destination, width, height, pool);
}

void RgbToUyvy(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
               int32_t height, WorkerPool* pool)
{
    Convert<kUYVY>(source, from, destination, width, height, pool);
}

void RgbToYuvSigned(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
                    int32_t height, WorkerPool* pool)
{
    Convert<kYUVSigned>(source, from, destination, width, height, pool);
}

void RgbToVyu(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
              int32_t height, WorkerPool* pool)
{
    Convert<kVYU24>(source, from, destination, width, height, pool);
}

}  // namespace kelvane
