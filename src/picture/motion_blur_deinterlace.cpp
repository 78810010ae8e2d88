#include "picture/motion_blur_deinterlace.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "picture/pixels.h"

namespace kelvane {

namespace {

// The lines of a picture in the order of the walk.
struct Walk {
    Walk(uint8_t* picture, size_t pitch, int32_t height, bool upwards)
        : first(upwards ? picture + pitch * static_cast<size_t>(height - 1) : picture),
          step(upwards ? -static_cast<ptrdiff_t>(pitch) : static_cast<ptrdiff_t>(pitch)),
          pairs(static_cast<size_t>(height) / 2)
    {
    }
    uint8_t* Line(size_t y) const { return first + static_cast<ptrdiff_t>(y) * step; }

    uint8_t* first;
    ptrdiff_t step;
    size_t pairs;
};

}  // namespace

namespace plain {

void MotionBlurDeinterlace(uint8_t* picture, size_t pitch, int32_t width, int32_t height,
                           int32_t threshold, bool upwards)
{
    if (PixelCount(width, height) == 0) return;
    const Walk walk(picture, pitch, height, upwards);
    for (size_t i = 0; i < walk.pairs; i++) {
        const bool last = i + 1 == walk.pairs;
        for (size_t x = 0; x < 4 * static_cast<size_t>(width); x += 4) {
            uint8_t* a = walk.Line(2 * i) + x;
            uint8_t* b = walk.Line(2 * i + 1) + x;
            const uint8_t* c = last ? nullptr : walk.Line(2 * i + 2) + x;
            const int32_t difference =
                std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
            if (difference <= threshold) continue;
            for (int byte = 0; byte < 4; byte++) {
                const int32_t old_a = a[byte], old_b = b[byte];
                a[byte] = static_cast<uint8_t>((3 * old_a + old_b) >> 2);
                b[byte] =
                    c ? static_cast<uint8_t>((3 * old_a + 2 * old_b + 3 * c[byte]) >> 3) : a[byte];
            }
        }
    }
}

}  // namespace plain

namespace {

constexpr size_t kBlockBytes = kBlockPixels * kPixelBytes;

// 0xFFFFFFFF for each pixel of a block that is to change. False when there is none.
bool MarkPixels(const uint8_t* a, const uint8_t* b, uint32_t threshold, uint32_t* changed)
{
    uint8_t differences[kBlockBytes];
    for (size_t i = 0; i < kBlockBytes; i++)
        differences[i] = static_cast<uint8_t>(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
    uint32_t words[kBlockPixels];
    memcpy(words, differences, sizeof words);
    uint32_t any = 0;
    for (size_t i = 0; i < kBlockPixels; i++) {
        const uint32_t sum = (words[i] & 255) + (words[i] >> 8 & 255) + (words[i] >> 16 & 255);
        // Both are small: the sign of the difference tells which is larger.
        changed[i] = static_cast<uint32_t>(static_cast<int32_t>(threshold - sum) >> 31);
        any |= changed[i];
    }
    return any != 0;
}

uint8_t Select(uint8_t mask, uint8_t changed, uint8_t same)
{
    return static_cast<uint8_t>((changed & mask) | (same & ~mask));
}

// One block; in the last pair c is not used.
void BlurBlock(uint8_t* a, uint8_t* b, const uint8_t* c, bool last, uint32_t threshold)
{
    uint32_t changed[kBlockPixels];
    if (!MarkPixels(a, b, threshold, changed)) return;
    uint8_t mask[kBlockBytes], new_a[kBlockBytes], new_b[kBlockBytes];
    memcpy(mask, changed, sizeof mask);
    for (size_t i = 0; i < kBlockBytes; i++)
        new_a[i] = Select(mask[i],
                          static_cast<uint8_t>(static_cast<uint16_t>(3 * a[i] + b[i]) >> 2), a[i]);
    for (size_t i = 0; i < kBlockBytes; i++) {
        const auto sum = static_cast<uint16_t>(3 * (a[i] + c[i]) + 2 * b[i]);
        new_b[i] = Select(mask[i], last ? new_a[i] : static_cast<uint8_t>(sum >> 3), b[i]);
    }
    memcpy(a, new_a, sizeof new_a);
    memcpy(b, new_b, sizeof new_b);
}

// One pair of lines; `c` is the line after them, and b once more in the last pair.
void BlurPair(uint8_t* a, uint8_t* b, const uint8_t* c, size_t bytes, uint32_t threshold)
{
    const bool last = b == c;
    size_t at = 0;
    for (; at + kBlockBytes <= bytes; at += kBlockBytes)
        BlurBlock(a + at, b + at, c + at, last, threshold);
    if (at == bytes) return;
    const size_t rest = bytes - at;
    uint8_t lines[3][kBlockBytes] = {};
    memcpy(lines[0], a + at, rest);
    memcpy(lines[1], b + at, rest);
    memcpy(lines[2], c + at, rest);
    BlurBlock(lines[0], lines[1], lines[2], last, threshold);
    memcpy(a + at, lines[0], rest);
    memcpy(b + at, lines[1], rest);
}

}  // namespace

void MotionBlurDeinterlace(uint8_t* picture, size_t pitch, int32_t width, int32_t height,
                           int32_t threshold, bool upwards, WorkerPool* pool)
{
    constexpr int32_t kMostDifference = 3 * 255;
    if (PixelCount(width, height) == 0 || threshold >= kMostDifference) return;
    if (threshold < 0)
        return plain::MotionBlurDeinterlace(picture, pitch, width, height, threshold, upwards);
    const Walk walk(picture, pitch, height, upwards);
    const size_t bytes = kPixelBytes * static_cast<size_t>(width);
    const auto limit = static_cast<uint32_t>(threshold);
    // A pair reads the first line of the next one before that line changes: where another part
    // begins, the line is kept from before.
    const size_t bands = BandCount(pool, walk.pairs);
    std::vector<uint8_t> kept(bands * bytes);
    const auto first = [&](size_t band) { return walk.pairs * band / bands; };
    for (size_t band = 1; band < bands; band++)
        memcpy(kept.data() + band * bytes, walk.Line(2 * first(band)), bytes);
    ForEachPart(pool, bands, [&](size_t band) {
        const size_t end = first(band + 1);
        for (size_t pair = first(band); pair < end; pair++) {
            uint8_t* const b = walk.Line(2 * pair + 1);
            const uint8_t* next = pair + 1 == walk.pairs ? b : walk.Line(2 * pair + 2);
            if (pair + 1 == end && end != walk.pairs) next = kept.data() + (band + 1) * bytes;
            BlurPair(walk.Line(2 * pair), b, next, bytes, limit);
        }
    });
}

}  // namespace kelvane
