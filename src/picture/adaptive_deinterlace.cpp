#include "picture/adaptive_deinterlace.h"

#include <atomic>
#include <cstdlib>
#include <utility>

#include "picture/pixels.h"

namespace kelvane {

namespace {

constexpr uint32_t kWithoutLowBits = 0x00FEFEFE;

// The lines that one run works on. All of them lie in the picture, and the run writes only odd
// ones, from lines that stay: it needs no second picture.
struct Lines {
    uint8_t* At(size_t y) const { return first + y * pitch; }
    uint32_t* Previous(size_t y) const { return state.previous.data() + y * width; }
    uint8_t* Moving(size_t y) const { return state.moving.data() + y * width; }

    DeinterlaceState& state;
    uint8_t* first;
    size_t pitch, width, height;
};

// False when there is nothing to do. Makes the state fit.
bool Prepare(DeinterlaceState& state, int32_t width, int32_t height)
{
    if (PixelCount(width, height) == 0 || height < 2) return false;
    if (state.width != width || state.height != height || state.previous.empty())
        AdaptiveDeinterlaceInit(state, width, height);
    return true;
}

Lines LinesOf(DeinterlaceState& state, uint8_t* picture, size_t pitch, bool keep_even)
{
    const auto width = static_cast<size_t>(state.width), height = static_cast<size_t>(state.height);
    if (keep_even) return {state, picture, pitch, width, height};
    return {state, picture + pitch, pitch, width, height - 2};
}

bool IsScene(const DeinterlaceState& state, const Lines& lines, size_t moving)
{
    return static_cast<int64_t>(moving * 100 / (lines.height * lines.width)) >=
           state.scene_threshold;
}

}  // namespace

void AdaptiveDeinterlaceInit(DeinterlaceState& state, int32_t width, int32_t height)
{
    state = {};
    DeinterlaceState made;  // whole before it counts, for memory can run out
    made.width = width;
    made.height = height;
    made.previous.resize(PixelCount(width, height));
    made.moving.resize(made.previous.size());
    state = std::move(made);
}

void AdaptiveDeinterlaceEnd(DeinterlaceState& state)
{
    state = {};
}

namespace plain {

namespace {

uint32_t Luma(uint32_t pixel)
{
    return (30 * (pixel & 255) + 150 * (pixel >> 8 & 255) + 76 * (pixel >> 16 & 255)) >> 8;
}

// Whether two pixels, or two lumas, differ by more than the threshold.
bool Differ(const DeinterlaceState& state, uint32_t a, uint32_t b)
{
    const auto above = [&](uint32_t p, uint32_t q) {
        return std::abs(static_cast<int32_t>(p) - static_cast<int32_t>(q)) > state.threshold;
    };
    if (!state.compare_colours) return above(a, b);
    for (int shift = 0; shift < 24; shift += 8)
        if (above(a >> shift & 255, b >> shift & 255)) return true;
    return false;
}

uint32_t Compared(const DeinterlaceState& state, const uint8_t* pixel)
{
    return state.compare_colours ? Load32(pixel) : Luma(Load32(pixel));
}

// Marks the moving pixels of a line and gives their number.
size_t CompareLine(const Lines& lines, size_t y)
{
    const DeinterlaceState& state = lines.state;
    size_t count = 0;
    for (size_t x = 0; x < lines.width; x++) {
        const uint32_t current = Compared(state, lines.At(y) + 4 * x);
        uint32_t& previous = lines.Previous(y)[x];
        bool moving = Differ(state, current, previous);
        if (state.motion_mode == kMovedAndCombed)
            moving = moving && Differ(state, current,
                                      y % 2 ? Compared(state, lines.At(y - 1) + 4 * x)
                                            : lines.Previous(y + 1)[x]);
        lines.Moving(y)[x] = moving;
        previous = current;
        count += moving;
    }
    return count;
}

void RebuildLine(const Lines& lines, size_t y, bool all)
{
    for (size_t x = 0; x < lines.width; x++) {
        if (!all && !lines.Moving(y - 1)[x] && !lines.Moving(y)[x] && !lines.Moving(y + 1)[x])
            continue;
        const uint32_t above = Load32(lines.At(y - 1) + 4 * x);
        const uint32_t below = Load32(lines.At(y + 1) + 4 * x);
        Store32(lines.At(y) + 4 * x,
                ((above & kWithoutLowBits) >> 1) + ((below & kWithoutLowBits) >> 1));
    }
}

}  // namespace

void AdaptiveDeinterlace(DeinterlaceState& state, uint8_t* picture, size_t pitch, int32_t width,
                         int32_t height, bool keep_even)
{
    if (!Prepare(state, width, height)) return;
    const Lines lines = LinesOf(state, picture, pitch, keep_even);
    bool all = state.motion_mode == kRebuildAll;
    if (!all) {
        size_t moving = 0;
        for (size_t y = 1; y + 1 < lines.height; y++)
            moving += CompareLine(lines, y);
        all = lines.height > 0 && IsScene(state, lines, moving);
    }
    for (size_t y = 1; y + 1 < lines.height; y += 2)
        RebuildLine(lines, y, all);
}

}  // namespace plain

namespace {

size_t CompareBlock(const uint8_t* current, uint8_t* previous, uint8_t* moving, size_t pixels,
                    uint8_t threshold)
{
    uint8_t over[kBlockPixels * kPixelBytes] = {};
    for (size_t i = 0; i < 4 * pixels; i++) {
        const uint8_t a = current[i], b = previous[i];
        const auto difference = static_cast<uint8_t>(a > b ? a - b : b - a);
        over[i] = difference > threshold ? 0xFF : 0;
    }
    memcpy(previous, current, 4 * pixels);
    uint32_t words[kBlockPixels];
    memcpy(words, over, sizeof words);
    size_t count = 0;
    for (size_t i = 0; i < pixels; i++) {
        moving[i] = (words[i] & kColourBytes) != 0;
        count += moving[i];
    }
    return count;
}

size_t CompareLine(const Lines& lines, size_t y, uint8_t threshold)
{
    auto* previous = reinterpret_cast<uint8_t*>(lines.Previous(y));
    size_t count = 0;
    for (size_t x = 0; x < lines.width; x += kBlockPixels)
        count += CompareBlock(lines.At(y) + 4 * x, previous + 4 * x, lines.Moving(y) + x,
                              std::min(kBlockPixels, lines.width - x), threshold);
    return count;
}

// `moving` has the marks of three lines; `all` is 0 or 1.
void RebuildBlock(const uint8_t* const (&moving)[3], const uint8_t* above, const uint8_t* below,
                  uint8_t* line, size_t pixels, uint8_t all)
{
    for (size_t i = 0; i < pixels; i++) {
        const uint8_t any = moving[0][i] | moving[1][i] | moving[2][i] | all;
        const uint32_t rebuilt = 0 - uint32_t{any};
        const uint32_t mean = ((Load32(above + 4 * i) & kWithoutLowBits) >> 1) +
                              ((Load32(below + 4 * i) & kWithoutLowBits) >> 1);
        Store32(line + 4 * i, (Load32(line + 4 * i) & ~rebuilt) | (mean & rebuilt));
    }
}

// The test that is in use; the others are left to the plain form.
bool HasFastTest(const DeinterlaceState& state)
{
    return state.motion_mode == kMovedSinceLastFrame && state.compare_colours &&
           state.threshold >= 0 && state.threshold <= 255;
}

}  // namespace

void AdaptiveDeinterlace(DeinterlaceState& state, uint8_t* picture, size_t pitch, int32_t width,
                         int32_t height, bool keep_even, WorkerPool* pool)
{
    if (!Prepare(state, width, height)) return;
    if (!HasFastTest(state))
        return plain::AdaptiveDeinterlace(state, picture, pitch, width, height, keep_even);
    const Lines lines = LinesOf(state, picture, pitch, keep_even);
    if (lines.height < 3) return;
    const auto threshold = static_cast<uint8_t>(state.threshold);
    std::atomic<size_t> moving = 0;
    ForBands(pool, lines.height - 2, [&](size_t first, size_t end) {
        size_t count = 0;
        for (size_t y = first + 1; y < end + 1; y++)
            count += CompareLine(lines, y, threshold);
        moving += count;
    });
    const bool all = IsScene(state, lines, moving);
    ForBands(pool, (lines.height - 1) / 2, [&](size_t first, size_t end) {
        for (size_t y = 2 * first + 1; y < 2 * end + 1; y += 2)
            RebuildBlock({lines.Moving(y - 1), lines.Moving(y), lines.Moving(y + 1)},
                         lines.At(y - 1), lines.At(y + 1), lines.At(y), lines.width, all);
    });
}

}  // namespace kelvane
