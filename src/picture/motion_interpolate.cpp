#include "picture/motion_interpolate.h"

#include <algorithm>

#include "picture/blend.h"
#include "picture/pixels.h"

namespace kelvane {

namespace {

constexpr float kCopyA = 0.05f, kCopyB = 0.95f;

// A run of MotionInterpolate on the whole picture.
struct Run {
    MotionState& state;
    const uint8_t* a;
    const uint8_t* b;
    uint8_t* out;
    int32_t width, height;  // of the picture
    int32_t fields;         // 1, or 2 when each is interpolated by itself
    int32_t levels;
};

// One field of a run, or the whole progressive picture.
struct Field {
    FieldView View(const uint8_t* picture) const
    {
        const size_t bytes = kPixelBytes * PixelCount(run.width, run.height);
        return {picture + kPixelBytes * Row(0), picture + bytes, run.width * run.fields, run.width,
                height};
    }
    // Index of the first pixel of a row, in pixels or vectors.
    size_t Row(int32_t y) const
    {
        return static_cast<size_t>(y * run.fields + number) * static_cast<size_t>(run.width);
    }

    const Run& run;
    int32_t number;
    int32_t height;
};

Field FieldOf(const Run& run, int32_t number)
{
    return {run, number, run.height / run.fields};
}

// Weights of one direction: v of the picture that is moved, u = 256 - v along the vectors.
struct Weights {
    explicit Weights(float t) : v(static_cast<int32_t>((1 - t) * 256)), u(256 - v) {}
    int32_t Move(int32_t distance) const { return (distance * u + 128) >> 8; }
    int32_t v, u;
};

int32_t LevelsOf(MotionDetail detail)
{
    return 3 - static_cast<int32_t>(std::clamp(detail, MotionDetail::kFine, MotionDetail::kCoarse));
}

// A part of a field made of whole largest blocks, cut at its right and lower edge.
struct BlockArea {
    int32_t left, top, right, bottom;
};

// Fills the vectors of an area, from coarse to fine. Blocks of a level lie inside those of the
// level before: no block depends on what is outside its largest one.
void BuildVectors(const Field& field, const uint8_t* searched, const uint8_t* reference,
                  VectorField& vectors, const BlockArea& area, BlockCostFunction block_cost)
{
    thread_local TriedPlaces tried;
    const FieldView from = field.View(searched), block_of = field.View(reference);
    const auto at = [&](int32_t x, int32_t y) {
        return vectors.begin() + static_cast<ptrdiff_t>(field.Row(y)) + x;
    };
    for (int32_t y = area.top; y < area.bottom; y++)
        std::fill(at(area.left, y), at(area.right, y), MotionVector{});
    for (int32_t level = 0; level < field.run.levels; level++) {
        const int32_t size = kLargestBlock >> level;
        for (int32_t y = area.top; y < area.bottom; y += size)
            for (int32_t x = area.left; x < area.right; x += size) {
                const MotionVector start = *at(x, y);
                const BlockVector found = BlockMatch(from, block_of, x, y, size, x + start.dx,
                                                     y + start.dy, tried, block_cost);
                const MotionVector vector{static_cast<int16_t>(found.dx),
                                          static_cast<int16_t>(found.dy)};
                if (found.width <= 0) continue;
                for (int32_t row = 0; row < found.height; row++)
                    std::fill_n(at(found.x, found.y + row), found.width, vector);
            }
    }
}

// Copies a or b where t lies close to it; NaN counts as a.
bool CopiedNearest(const Run& run, float t)
{
    const size_t bytes = kPixelBytes * PixelCount(run.width, run.height);
    if (t > kCopyB)
        memcpy(run.out, run.b, bytes);
    else if (!(t >= kCopyA))
        memcpy(run.out, run.a, bytes);
    else
        return false;
    return true;
}

void MakeRoom(const Run& run)
{
    const size_t pixels = PixelCount(run.width, run.height);
    if (run.state.written.size() >= pixels) return;
    run.state.a.resize(pixels);
    run.state.b.resize(pixels);
    run.state.written.resize(pixels);
}

}  // namespace

namespace plain {

namespace {

// Moves each pixel of `from` that a vector names towards its partner in `to`. Later pixels
// overwrite earlier ones; with `keep` those that are already written stay.
void Warp(const Field& field, const VectorField& vectors, const uint8_t* from, const uint8_t* to,
          const Weights& weights, bool keep)
{
    const int32_t width = field.run.width;
    for (int32_t y = 0; y < field.height; y++)
        for (int32_t x = 0; x < width; x++) {
            const MotionVector vector = vectors[field.Row(y) + static_cast<size_t>(x)];
            const int32_t sx = x + vector.dx, sy = y + vector.dy;
            const uint8_t* p = from + 4 * (field.Row(sy) + static_cast<size_t>(sx));
            const uint8_t* q = to + 4 * (field.Row(y) + static_cast<size_t>(x));
            const int32_t tx = std::clamp(sx - weights.Move(vector.dx), 0, width - 1);
            const int32_t ty = std::clamp(sy - weights.Move(vector.dy), 0, field.height - 1);
            const size_t target = field.Row(ty) + static_cast<size_t>(tx);
            if (keep && field.run.state.written[target]) continue;
            for (int byte = 0; byte < 4; byte++)
                field.run.out[4 * target + static_cast<size_t>(byte)] =
                    LimitToByte(q[byte] + ((p[byte] - q[byte]) * weights.v >> 8));
            field.run.state.written[target] = 1;
        }
}

void FillHoles(const Field& field, int32_t weight)
{
    const Run& run = field.run;
    for (int32_t y = 0; y < field.height; y++)
        for (size_t i = field.Row(y); i < field.Row(y) + static_cast<size_t>(run.width); i++) {
            if (run.state.written[i]) continue;
            for (size_t byte = 4 * i; byte < 4 * i + 4; byte++)
                run.out[byte] =
                    LimitToByte(run.a[byte] + ((run.b[byte] - run.a[byte]) * weight >> 8));
        }
}

}  // namespace

void MotionInterpolate(MotionState& state, const uint8_t* a, const uint8_t* b, int32_t width,
                       int32_t height, bool interlaced, uint8_t* destination, float t,
                       MotionDetail detail)
{
    const Run run{state, a, b, destination, width, height, interlaced ? 2 : 1, LevelsOf(detail)};
    if (PixelCount(width, height) == 0 || CopiedNearest(run, t)) return;
    MakeRoom(run);
    std::fill(state.written.begin(), state.written.end(), uint8_t{0});
    const Weights forward(t), backward(1 - t);
    for (int32_t number = 0; number < run.fields; number++) {
        const Field field = FieldOf(run, number);
        const BlockArea all{0, 0, width, field.height};
        BuildVectors(field, a, b, state.a, all, plain::BlockCost);
        BuildVectors(field, b, a, state.b, all, plain::BlockCost);
        Warp(field, state.a, a, b, forward, false);
        Warp(field, state.b, b, a, backward, true);
        FillHoles(field, backward.v);
    }
}

}  // namespace plain

namespace {

// The rows of a field that one part writes. All parts walk over all vectors, in the same order, and
// each moves the pixels that land in its own rows.
struct TargetBand {
    bool Has(int32_t y) const { return y >= first && y < end; }

    Field field;
    int32_t first, end;
};

// Pixels that move together.
struct PixelRun {
    const uint8_t* p;  // where the vectors lead
    const uint8_t* q;
    size_t target, count;
};

void PutForward(const Run& run, const PixelRun& pixels, int32_t v)
{
    BlendRun(pixels.q, pixels.p, static_cast<uint32_t>(v), run.out + 4 * pixels.target,
             4 * pixels.count);
    memset(run.state.written.data() + pixels.target, 1, pixels.count);
}

// At most kBlockPixels pixels, of which those already written stay.
void PutBlockBehind(const PixelRun& pixels, int32_t v, uint8_t* out, uint8_t* written)
{
    uint8_t mixed[kBlockPixels * kPixelBytes];
    BlendRun(pixels.q, pixels.p, static_cast<uint32_t>(v), mixed, 4 * pixels.count);
    for (size_t i = 0; i < pixels.count; i++) {
        const uint32_t stays = 0 - uint32_t{written[i]};
        Store32(out + 4 * i, (Load32(out + 4 * i) & stays) | (Load32(mixed + 4 * i) & ~stays));
    }
    memset(written, 1, pixels.count);
}

void PutBackward(const Run& run, const PixelRun& pixels, int32_t v)
{
    uint8_t* const written = run.state.written.data() + pixels.target;
    for (size_t i = 0; i < pixels.count; i += kBlockPixels) {
        const size_t count = std::min(kBlockPixels, pixels.count - i);
        if (!memchr(written + i, 0, count)) continue;  // as a rule
        PutBlockBehind({pixels.p + 4 * i, pixels.q + 4 * i, 0, count}, v,
                       run.out + 4 * (pixels.target + i), written + i);
    }
}

// Where the run of equal vectors ends that begins at x; looked at in fours, for most runs are long.
int32_t EndOfRun(const MotionVector* row, int32_t x, int32_t width)
{
    constexpr int32_t kStep = 4;
    MotionVector same[kStep];
    std::fill_n(same, kStep, row[x]);
    int32_t end = x + 1;
    while (end + kStep <= width && memcmp(row + end, same, sizeof same) == 0)
        end += kStep;
    while (end < width && row[end] == row[x])
        end++;
    return end;
}

// Vectors never lead out of the picture and targets lie between both ends: no limit is needed.
template <void (*kPut)(const Run&, const PixelRun&, int32_t)>
void WarpInto(const TargetBand& band, const VectorField& vectors, const uint8_t* from,
              const uint8_t* to, const Weights& weights)
{
    const Field& field = band.field;
    const int32_t width = field.run.width;
    for (int32_t y = 0; y < field.height; y++) {
        const MotionVector* const row = vectors.data() + field.Row(y);
        for (int32_t x = 0, next = 0; x < width; x = next) {
            const MotionVector vector = row[x];
            next = EndOfRun(row, x, width);
            const int32_t sx = x + vector.dx, sy = y + vector.dy;
            const int32_t tx = sx - weights.Move(vector.dx), ty = sy - weights.Move(vector.dy);
            if (!band.Has(ty)) continue;
            kPut(field.run,
                 {from + 4 * (field.Row(sy) + static_cast<size_t>(sx)),
                  to + 4 * (field.Row(y) + static_cast<size_t>(x)),
                  field.Row(ty) + static_cast<size_t>(tx), static_cast<size_t>(next - x)},
                 weights.v);
        }
    }
}

void FillHoles(const TargetBand& band, int32_t weight)
{
    const Run& run = band.field.run;
    const auto width = static_cast<size_t>(run.width);
    for (int32_t y = band.first; y < band.end; y++) {
        const size_t start = band.field.Row(y);
        const uint8_t* const written = run.state.written.data() + start;
        for (size_t x = 0; x < width;) {
            const auto* hole = static_cast<const uint8_t*>(memchr(written + x, 0, width - x));
            if (!hole) break;
            x = static_cast<size_t>(hole - written);
            size_t end = x + 1;
            while (end < width && !written[end])
                end++;
            const size_t at = 4 * (start + x);
            BlendRun(run.a + at, run.b + at, static_cast<uint32_t>(weight), run.out + at,
                     4 * (end - x));
            x = end;
        }
    }
}

// Some blocks take a hundred times as long as others, so the parts are small.
void BuildAllVectors(const Run& run, WorkerPool* pool)
{
    constexpr int32_t kAreaWidth = 8 * kLargestBlock, kAreaHeight = kLargestBlock;
    const int32_t height = run.height / run.fields;
    const auto columns = static_cast<size_t>((run.width + kAreaWidth - 1) / kAreaWidth);
    const auto rows = static_cast<size_t>((height + kAreaHeight - 1) / kAreaHeight);
    const size_t areas = rows * columns, parts = 2 * static_cast<size_t>(run.fields) * areas;
    MakeRoom(run);
    ForEachPart(pool, parts, [&](size_t part) {
        const auto left = static_cast<int32_t>(part % columns) * kAreaWidth;
        const auto top = static_cast<int32_t>(part / columns % rows) * kAreaHeight;
        const BlockArea area{left, top, std::min(run.width, left + kAreaWidth),
                             std::min(height, top + kAreaHeight)};
        const Field field = FieldOf(run, static_cast<int32_t>(part / areas) % run.fields);
        const bool forward = part < parts / 2;
        BuildVectors(field, forward ? run.a : run.b, forward ? run.b : run.a,
                     forward ? run.state.a : run.state.b, area, BlockCost);
    });
}

void WarpAll(const Run& run, float t, WorkerPool* pool)
{
    const Weights forward(t), backward(1 - t);
    const int32_t height = run.height / run.fields;
    const size_t threads = pool ? pool->Threads() : 1, fields = static_cast<size_t>(run.fields);
    // Each band reads all vectors of its field, so no more of them than threads.
    const auto bands = static_cast<int32_t>((threads + fields - 1) / fields);
    ForEachPart(pool, fields * static_cast<size_t>(bands), [&](size_t part) {
        const auto i = static_cast<int32_t>(part) / run.fields;
        const TargetBand band{FieldOf(run, static_cast<int32_t>(part) % run.fields),
                              height * i / bands, height * (i + 1) / bands};
        for (int32_t y = band.first; y < band.end; y++)
            memset(run.state.written.data() + band.field.Row(y), 0, static_cast<size_t>(run.width));
        WarpInto<PutForward>(band, run.state.a, run.a, run.b, forward);
        WarpInto<PutBackward>(band, run.state.b, run.b, run.a, backward);
        FillHoles(band, backward.v);
    });
}

}  // namespace

void MotionInterpolate(MotionState& state, const uint8_t* a, const uint8_t* b, int32_t width,
                       int32_t height, bool interlaced, uint8_t* destination, float t,
                       MotionDetail detail, WorkerPool* pool)
{
    const Run run{state, a, b, destination, width, height, interlaced ? 2 : 1, LevelsOf(detail)};
    if (PixelCount(width, height) == 0 || CopiedNearest(run, t)) return;
    if (height / run.fields == 0) return;
    BuildAllVectors(run, pool);
    WarpAll(run, t, pool);
}

}  // namespace kelvane
