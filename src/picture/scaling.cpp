#include "picture/scaling.h"

#include <algorithm>

#include "picture/pixels.h"

namespace kelvane {

namespace {

// Source pixels or lines for each destination pixel or line, 16.16. The quotient of the sizes is a
// single: its rounding is part of the contract.
int32_t StepFor(int32_t source, int32_t destination)
{
    const float ratio = static_cast<float>(destination) / static_cast<float>(source);
    return static_cast<int32_t>(std::min(65536.0 / ratio, 2147483647.0));
}

// Where the output lines lie in the source.
struct LineWalk {
    LineWalk(const PictureView& source, int32_t lines)
        : step(StepFor(source.height, lines)),
          last(source.height - 1),
          pitch(source.pitch),
          next(source.pitch & ~ptrdiff_t{3})  // deliberate: the distance drops the low two bits
    {
    }
    int64_t Position(int64_t line) const { return line * step; }
    ptrdiff_t Row(int64_t line) const
    {
        return static_cast<ptrdiff_t>(std::min<int64_t>(Position(line) >> 16, last));
    }
    uint32_t Fraction(int64_t line) const { return Position(line) & 0xFFFF; }
    // Distance to the row below; the last row is its own.
    ptrdiff_t Next(ptrdiff_t row) const { return row < last ? next : 0; }

    int32_t step, last;
    ptrdiff_t pitch, next;
};

bool NothingToScale(const PictureView& source, const PictureTarget& destination)
{
    return PixelCount(source.width, source.height) == 0 ||
           PixelCount(destination.width, destination.height) == 0;
}

}  // namespace

namespace plain {

namespace {

// (a * f) >> 16 of signed 16-bit numbers.
int32_t Mul(int32_t a, int32_t f)
{
    return (a * f) >> 16;
}

}  // namespace

void ScaleRow(const uint8_t* source, int32_t pixels, ptrdiff_t next, uint32_t fraction,
              uint8_t* destination, int32_t count, int32_t step)
{
    const auto v = static_cast<int32_t>(fraction >> 1);
    int64_t x = 0;
    for (int32_t i = 0; i < count; i++, x += step) {
        const int64_t left = std::min<int64_t>(x >> 16, pixels - 1);
        const int64_t right = std::min<int64_t>(left + 1, pixels - 1);
        const auto f = static_cast<int32_t>((x & 0xFFFF) >> 1);
        for (int byte = 0; byte < 4; byte++) {
            const uint8_t* p0 = source + 4 * left + byte;
            const uint8_t* p1 = source + 4 * right + byte;
            const int32_t h0 = *p0 + Mul(2 * (*p1 - *p0), f);
            int32_t value = h0;
            if (fraction != 0) {
                const int32_t h1 = p0[next] + Mul(2 * (p1[next] - p0[next]), f);
                value = h0 + Mul(2 * (h1 - h0), v);
            }
            *destination++ = LimitToByte(value);
        }
    }
}

void ScalePicture(const PictureView& source, const PictureTarget& destination, int32_t weight,
                  int32_t beyond)
{
    if (source.width == destination.width && source.height == destination.height)
        return plain::BlendPictures(BlendMode::kWeight, weight, source, destination);
    if (NothingToScale(source, destination)) return;
    const LineWalk walk(source, destination.height);
    const int32_t step = StepFor(source.width, destination.width);
    for (int32_t y = 0; y < destination.height; y++) {
        const ptrdiff_t row = walk.Row(y);
        ScaleRow(source.pixels + row * source.pitch, source.width + beyond, walk.Next(row),
                 walk.Fraction(y), destination.pixels + y * destination.pitch, destination.width,
                 step);
    }
}

}  // namespace plain

namespace {

// Output pixels made at a time: their places are worked out once for all lines.
constexpr int32_t kStripPixels = 256;

// a + (2 (b - a) * f >> 16), which lies between a and b: it needs no limit, and fits a byte.
uint8_t Between(int32_t a, int32_t b, int16_t f)
{
    const auto twice = static_cast<int16_t>(2 * (b - a));
    return static_cast<uint8_t>(a + static_cast<int16_t>((int32_t{twice} * f) >> 16));
}

// out = the mix of two runs of bytes at a 15-bit fraction. Out of line: where the compiler knows
// more of the fraction it multiplies in 32 bits, at a quarter of the speed.
[[gnu::noinline]] void MixRuns(const uint8_t* a, const uint8_t* b, int16_t f, uint8_t* out,
                               size_t bytes)
{
    for (size_t i = 0; i < bytes; i++)
        out[i] = Between(a[i], b[i], f);
}

// Scales strips of lines horizontally.
class Strip {
public:
    // Output pixels from `first` on.
    Strip(int32_t first, int32_t count, int32_t step, int32_t pixels) : fCount(count)
    {
        constexpr uint64_t kFourTimes = 0x0001000100010001;
        uint64_t fractions[kStripPixels] = {};
        for (int32_t i = 0; i < count; i++) {
            const int64_t x = int64_t{first + i} * step;
            fLeft[i] = static_cast<int32_t>(std::min<int64_t>(x >> 16, pixels - 1));
            fRight[i] = std::min(fLeft[i] + 1, pixels - 1);
            fractions[i] = kFourTimes * static_cast<uint64_t>((x & 0xFFFF) >> 1);
        }
        memcpy(fFractions, fractions, sizeof fFractions);
    }

    void Scale(const uint8_t* row, uint8_t* out) const
    {
        uint32_t words[2][kStripPixels];
        for (int32_t i = 0; i < fCount; i++) {
            words[0][i] = Load32(row + kPixelBytes * static_cast<size_t>(fLeft[i]));
            words[1][i] = Load32(row + kPixelBytes * static_cast<size_t>(fRight[i]));
        }
        uint8_t left[kStripPixels * kPixelBytes], right[kStripPixels * kPixelBytes];
        const size_t bytes = Bytes();
        memcpy(left, words[0], bytes);
        memcpy(right, words[1], bytes);
        for (size_t i = 0; i < bytes; i++)
            out[i] = Between(left[i], right[i], fFractions[i]);
    }

    size_t Bytes() const { return kPixelBytes * static_cast<size_t>(fCount); }

private:
    int32_t fCount;
    int32_t fLeft[kStripPixels], fRight[kStripPixels];
    int16_t fFractions[kStripPixels * kPixelBytes];  // one for each byte
};

// The two lines of a strip that were scaled last: output lines between the same two share them.
class LineCache {
public:
    explicit LineCache(const Strip& strip) : fStrip(strip) {}

    const uint8_t* Line(const uint8_t* row)
    {
        for (int i = 0; i < 2; i++)
            if (fRows[i] == row) {
                fOlder = 1 - i;
                return fLines[i];
            }
        const int slot = fOlder;
        fRows[slot] = row;
        fStrip.Scale(row, fLines[slot]);
        fOlder = 1 - slot;
        return fLines[slot];
    }

private:
    const Strip& fStrip;
    const uint8_t* fRows[2] = {};
    int fOlder = 0;
    uint8_t fLines[2][kStripPixels * kPixelBytes];
};

// A view of lines that are scaled in both directions.
void ScaleLines(const PictureView& source, const PictureTarget& destination, int32_t pixels,
                const LineWalk& walk, int64_t first, int64_t end)
{
    const int32_t step = StepFor(source.width, destination.width);
    for (int32_t x = 0; x < destination.width; x += kStripPixels) {
        const Strip strip(x, std::min(kStripPixels, destination.width - x), step, pixels);
        LineCache cache(strip);
        for (int64_t y = first; y < end; y++) {
            const ptrdiff_t row = walk.Row(y);
            const uint8_t* line = source.pixels + row * source.pitch;
            uint8_t* out = destination.pixels + y * destination.pitch + 4 * ptrdiff_t{x};
            const uint8_t* upper = cache.Line(line);
            const auto v = static_cast<int16_t>(walk.Fraction(y) >> 1);
            if (walk.Fraction(y) == 0 || walk.Next(row) == 0)
                memcpy(out, upper, strip.Bytes());
            else
                MixRuns(upper, cache.Line(line + walk.Next(row)), v, out, strip.Bytes());
        }
    }
}

// The same where a row keeps its width: nothing happens along the row.
void MixLines(const PictureView& source, const PictureTarget& destination, const LineWalk& walk,
              int64_t first, int64_t end)
{
    const size_t bytes = kPixelBytes * static_cast<size_t>(destination.width);
    for (int64_t y = first; y < end; y++) {
        const ptrdiff_t row = walk.Row(y);
        const uint8_t* line = source.pixels + row * source.pitch;
        uint8_t* out = destination.pixels + y * destination.pitch;
        if (walk.Fraction(y) == 0 || walk.Next(row) == 0)
            memcpy(out, line, bytes);
        else
            MixRuns(line, line + walk.Next(row), static_cast<int16_t>(walk.Fraction(y) >> 1), out,
                    bytes);
    }
}

}  // namespace

void ScaleRow(const uint8_t* source, int32_t pixels, ptrdiff_t next, uint32_t fraction,
              uint8_t* destination, int32_t count, int32_t step)
{
    for (int32_t x = 0; x < count; x += kStripPixels) {
        const Strip strip(x, std::min(kStripPixels, count - x), step, pixels);
        uint8_t* out = destination + 4 * ptrdiff_t{x};
        strip.Scale(source, out);
        if (fraction == 0) continue;
        uint8_t below[kStripPixels * kPixelBytes];
        strip.Scale(source + next, below);
        MixRuns(out, below, static_cast<int16_t>(fraction >> 1), out, strip.Bytes());
    }
}

void ScalePicture(const PictureView& source, const PictureTarget& destination, int32_t weight,
                  int32_t beyond, WorkerPool* pool)
{
    if (source.width == destination.width && source.height == destination.height)
        return BlendPictures(BlendMode::kWeight, weight, source, destination, pool);
    if (NothingToScale(source, destination)) return;
    const LineWalk walk(source, destination.height);
    ForBands(pool, static_cast<size_t>(destination.height), [&](size_t first, size_t end) {
        const auto from = static_cast<int64_t>(first), to = static_cast<int64_t>(end);
        if (source.width == destination.width)
            MixLines(source, destination, walk, from, to);
        else
            ScaleLines(source, destination, source.width + beyond, walk, from, to);
    });
}

}  // namespace kelvane
