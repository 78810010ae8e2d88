#include "picture/yuv_to_rgb.h"

#include <algorithm>

#include "picture/packing.h"
#include "picture/pixels.h"

namespace kelvane {

namespace {

constexpr size_t kPairBytes = 4;
constexpr uint32_t kSignBits = 0x80008000;  // of the chroma in Y0, U, Y1, V

// Pair `index` of a run of `bytes` bytes; what lies behind the run counts as zero.
uint32_t PairAt(const uint8_t* run, size_t bytes, size_t index)
{
    uint32_t pair = 0;
    const size_t at = index * kPairBytes;
    if (at < bytes) memcpy(&pair, run + at, std::min(kPairBytes, bytes - at));
    return pair;
}

// A pair in the order Y0, U, Y1, V.
uint32_t InOrder(uint32_t pair, ColourSpace from)
{
    return from == kUYVY ? (pair & 0x00FF00FF) << 8 | (pair >> 8 & 0x00FF00FF) : pair;
}

}  // namespace

namespace plain {

namespace {

struct Pair {
    explicit Pair(uint32_t word)
        : y0(word & 255), u(word >> 8 & 255), y1(word >> 16 & 255), v(word >> 24)
    {
    }
    int32_t y0, u, y1, v;
};

uint32_t Pixel(int32_t r, int32_t g, int32_t b, uint32_t fourth)
{
    return LimitToByte(b) | uint32_t{LimitToByte(g)} << 8 | uint32_t{LimitToByte(r)} << 16 |
           fourth << 24;
}

// y is luma less 16; u and v are twice the chroma less 128.
uint32_t FromVideo(int32_t y, int32_t u, int32_t v)
{
    return Pixel((19077 * y + 13075 * v + 8192) >> 14,
                 (19077 * y - 3209 * u - 6660 * v + 8192) >> 14,
                 (19077 * y + 16525 * u + 8192) >> 14, 0);
}

uint32_t FromSigned(int32_t y, int32_t u, int32_t v)
{
    return Pixel((298 * y + 408 * v - 56992) >> 8, (298 * y - 208 * v - 100 * u + 34656) >> 8,
                 (298 * y + 516 * u - 70816) >> 8, 0xFF);
}

void PutPixel(uint8_t* at, uint32_t pixel, size_t bytes)
{
    memcpy(at, &pixel, bytes);
}

}  // namespace

void YuvToRgb(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height)
{
    const size_t pixels = PixelCount(width, height), bytes = 2 * pixels;
    size_t counter = static_cast<size_t>(width);
    for (size_t i = 0; 2 * i < pixels; i++) {
        const bool alone = --counter == 0;
        if (alone) counter = static_cast<size_t>(width);
        const Pair pair(InOrder(PairAt(source, bytes, i), from));
        const Pair next(alone ? 0 : InOrder(PairAt(source, bytes, i + 1), from));
        const uint32_t even = FromVideo(pair.y0 - 16, 2 * (pair.u - 128), 2 * (pair.v - 128));
        const uint32_t odd =
            FromVideo(pair.y1 - 16, pair.u - 128 + next.u - 128, pair.v - 128 + next.v - 128);
        uint8_t* out = destination + 8 * i;
        Store32(out, even);
        if (2 * i + 1 == pixels) continue;
        if (to == kBGR24)
            memset(out + 3, 0, 3);
        else
            Store32(out + 4, odd);
    }
}

void YuvSignedToRgb(const uint8_t* source, uint8_t* destination, ColourSpace to, int32_t width,
                    int32_t height)
{
    const size_t step = to == kBGR24 ? 3 : 4;
    size_t left = 2 * PixelCount(width, height);  // bytes from the row on
    if (left == 0) return;
    const size_t pixels = static_cast<size_t>(width);
    for (; left > 0; left -= 2 * pixels, source += 2 * pixels, destination += step * pixels) {
        for (size_t x = 0; x < pixels; x += 2) {
            const Pair pair(PairAt(source, left, x / 2) ^ kSignBits);
            const bool last = x + 2 >= pixels;
            const Pair next(PairAt(source, left, last ? x / 2 : x / 2 + 1) ^ kSignBits);
            uint8_t* out = destination + step * x;
            PutPixel(out, FromSigned(pair.y0, pair.u, pair.v), step);
            if (x + 1 == pixels) continue;
            PutPixel(out + step,
                     FromSigned(pair.y1, (pair.u + next.u) >> 1, (pair.v + next.v) >> 1), step);
        }
    }
}

}  // namespace plain

namespace {

constexpr size_t kBlockPairs = kBlockPixels / 2;

// out = (luma * y + chroma terms + offset) >> shift, limited to a byte.
struct Matrix {
    int32_t luma, v_to_r, u_to_g, v_to_g, u_to_b;
    int32_t r_offset, g_offset, b_offset;
    int shift;
    int16_t luma_base, chroma_base;  // taken off each sample
    int mean_shift;                  // of the sum of two chroma samples
    uint16_t fourth;
};

constexpr Matrix kVideo = {19077, 13075, -3209, -6660, 16525, 8192, 8192, 8192, 14, 16, 128, 0, 0};
constexpr Matrix kSigned = {298, 408, -100, -208, 516, -56992, 34656, -70816, 8, 0, 0, 1, 0xFF00};

using Lane = int16_t[kBlockPairs];

struct ComponentBlock {
    Lane y, u, v;
};

// Splits pairs into their even and their odd pixels. `pairs` has one more than the block. 16-bit
// lanes make the products below a multiplication of eight at a time.
template <const Matrix& kMatrix>
void Separate(const uint32_t* pairs, ComponentBlock& even, ComponentBlock& odd)
{
    int16_t u[kBlockPairs + 1], v[kBlockPairs + 1];
    for (size_t i = 0; i < kBlockPairs; i++) {
        even.y[i] = static_cast<int16_t>((pairs[i] & 255) - kMatrix.luma_base);
        odd.y[i] = static_cast<int16_t>((pairs[i] >> 16 & 255) - kMatrix.luma_base);
    }
    for (size_t i = 0; i < kBlockPairs + 1; i++) {
        u[i] = static_cast<int16_t>((pairs[i] >> 8 & 255) - kMatrix.chroma_base);
        v[i] = static_cast<int16_t>((pairs[i] >> 24) - kMatrix.chroma_base);
    }
    for (size_t i = 0; i < kBlockPairs; i++) {
        even.u[i] = static_cast<int16_t>((u[i] + u[i]) >> kMatrix.mean_shift);
        even.v[i] = static_cast<int16_t>((v[i] + v[i]) >> kMatrix.mean_shift);
        odd.u[i] = static_cast<int16_t>((u[i] + u[i + 1]) >> kMatrix.mean_shift);
        odd.v[i] = static_cast<int16_t>((v[i] + v[i + 1]) >> kMatrix.mean_shift);
    }
}

int16_t Limit(int32_t value)
{
    const auto narrow = static_cast<int16_t>(value);  // within +-1024
    const int16_t positive = narrow < 0 ? int16_t{0} : narrow;
    return positive > 255 ? int16_t{255} : positive;
}

// The 16-bit words of a row of pixels: B and G, R and the fourth byte.
struct WordBlock {
    uint16_t bg[kBlockPairs], rx[kBlockPairs];
};

template <const Matrix& kMatrix>
void ToWords(const ComponentBlock& in, WordBlock& out)
{
    constexpr Matrix m = kMatrix;
    Lane g, b;
    for (size_t i = 0; i < kBlockPairs; i++)
        out.rx[i] = static_cast<uint16_t>(
            Limit((m.luma * in.y[i] + m.v_to_r * in.v[i] + m.r_offset) >> m.shift) | m.fourth);
    for (size_t i = 0; i < kBlockPairs; i++)
        g[i] = Limit((m.luma * in.y[i] + m.u_to_g * in.u[i] + m.v_to_g * in.v[i] + m.g_offset) >>
                     m.shift);
    for (size_t i = 0; i < kBlockPairs; i++)
        b[i] = Limit((m.luma * in.y[i] + m.u_to_b * in.u[i] + m.b_offset) >> m.shift);
    for (size_t i = 0; i < kBlockPairs; i++)
        out.bg[i] = static_cast<uint16_t>(b[i] | g[i] << 8);
}

// kBlockPairs pairs in the order Y0, U, Y1, V, and the one behind them, to kBlockPixels pixels.
template <const Matrix& kMatrix>
void ConvertBlock(const uint32_t* pairs, uint8_t* out)
{
    ComponentBlock even, odd;
    Separate<kMatrix>(pairs, even, odd);
    WordBlock even_words, odd_words;
    ToWords<kMatrix>(even, even_words);
    ToWords<kMatrix>(odd, odd_words);
    uint16_t words[2 * kBlockPixels];
    for (size_t i = 0; i < kBlockPairs; i++) {
        words[4 * i] = even_words.bg[i];
        words[4 * i + 1] = even_words.rx[i];
        words[4 * i + 2] = odd_words.bg[i];
        words[4 * i + 3] = odd_words.rx[i];
    }
    memcpy(out, words, sizeof words);
}

// The even pixels of a block, six bytes each at steps of eight.
void PutEvenPixels(const uint8_t* pixels, size_t count, uint8_t* out)
{
    for (size_t i = 0; i < count; i += 2) {
        memcpy(out + 4 * i, pixels + 4 * i, kPixelBytes);
        if (i + 1 < count) memset(out + 4 * i + 4, 0, 2);
    }
}

// Pairs from `at` to `end`; the last of them has no next pair.
void ConvertRun(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
                size_t pixels, size_t at, size_t end)
{
    const size_t bytes = 2 * pixels;
    for (size_t count; at < end; at += count) {
        count = std::min(kBlockPairs, end - at);
        uint32_t pairs[kBlockPairs + 1] = {};
        memcpy(pairs, source + at * kPairBytes,
               std::min(count * kPairBytes, bytes - at * kPairBytes));
        if (at + count < end) pairs[count] = PairAt(source, bytes, at + count);
        if (from == kUYVY)
            for (uint32_t& pair : pairs)
                pair = InOrder(pair, kUYVY);
        uint8_t out[kBlockPixels * kPixelBytes];
        ConvertBlock<kVideo>(pairs, out);
        const size_t made = std::min(2 * count, pixels - 2 * at);
        if (to == kBGR24)
            PutEvenPixels(out, made, destination + 8 * at);
        else
            memcpy(destination + 8 * at, out, made * kPixelBytes);
    }
}

// One row; `left` bytes of the picture from the row on.
void ConvertSignedRow(const uint8_t* row, size_t left, uint8_t* destination, ColourSpace to,
                      size_t pixels)
{
    for (size_t x = 0; x < pixels; x += kBlockPixels) {
        const size_t made = std::min(kBlockPixels, pixels - x), count = (made + 1) / 2;
        uint32_t pairs[kBlockPairs + 1] = {};
        memcpy(pairs, row + 2 * x, std::min(count * kPairBytes, left - 2 * x));
        const bool last = x + made == pixels;
        pairs[count] = last ? pairs[count - 1] : PairAt(row, left, x / 2 + count);
        for (uint32_t& pair : pairs)
            pair ^= kSignBits;
        uint8_t out[kBlockPixels * kPixelBytes];
        ConvertBlock<kSigned>(pairs, out);
        if (to != kBGR24) {
            memcpy(destination + 4 * x, out, made * kPixelBytes);
            continue;
        }
        for (size_t i = 0; i < made; i++)
            memcpy(destination + 3 * (x + i), out + 4 * i, 3);
    }
}

}  // namespace

void YuvToRgb(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height, WorkerPool* pool)
{
    const size_t pixels = PixelCount(width, height), pairs = (pixels + 1) / 2;
    if (pixels == 0) return;
    const size_t run = static_cast<size_t>(width);  // pairs up to one without a next pair
    ForBands(pool, (pairs + run - 1) / run, [=](size_t first, size_t end) {
        for (size_t i = first; i < end; i++)
            ConvertRun(source, from, destination, to, pixels, i * run,
                       std::min(pairs, (i + 1) * run));
    });
}

void YuvSignedToRgb(const uint8_t* source, uint8_t* destination, ColourSpace to, int32_t width,
                    int32_t height, WorkerPool* pool)
{
    const size_t bytes = 2 * PixelCount(width, height), step = to == kBGR24 ? 3 : 4;
    if (bytes == 0) return;
    const size_t pixels = static_cast<size_t>(width);
    ForBands(pool, static_cast<size_t>(height), [=](size_t first, size_t end) {
        for (size_t y = first; y < end; y++)
            ConvertSignedRow(source + 2 * pixels * y, bytes - 2 * pixels * y,
                             destination + step * pixels * y, to, pixels);
    });
}

}  // namespace kelvane
