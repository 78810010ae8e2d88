#include "picture/geometry.h"

#include <algorithm>

#include "base/television.h"
#include "picture/pixels.h"
#include "picture/scaling.h"

namespace kelvane {

namespace {

constexpr int32_t kLetterBoxBar = 48;  // rows
constexpr int32_t kHalfBar = 24;
constexpr int32_t kPanLeft = 60, kPanWidth = 600;          // pixels of the source
constexpr int32_t kHalfPanLeft = 33, kHalfPanWidth = 654;  // with half a letter box
constexpr int32_t kHalfBoxHeight = 528;
// Where the half letter box begins, field by field. Deliberate: not the 24 and 25 that would centre
// it, so that it ends below the picture and both fields share the even rows.
constexpr int32_t kHalfBoxRows[] = {96, 100};

// Pictures without gaps between their rows.
struct Source {
    const uint8_t* pixels;
    int32_t width, height;
    bool fields;
    WorkerPool* pool;
};
struct Target {
    uint8_t* pixels;
    int32_t width, height;
};

size_t RowBytes(const Target& target)
{
    return kPixelBytes * static_cast<size_t>(target.width);
}

void CopyRows(const Source& source, int32_t from, const Target& target, int32_t to, int32_t rows)
{
    const size_t row = RowBytes(target);
    memcpy(target.pixels + row * static_cast<size_t>(to),
           source.pixels + row * static_cast<size_t>(from), row * static_cast<size_t>(rows));
}

void BlackRows(const Target& target, int32_t first, int32_t end)
{
    if (first >= end) return;
    const size_t row = RowBytes(target);
    memset(target.pixels + row * static_cast<size_t>(first), 0,
           row * static_cast<size_t>(end - first));
}

// Scales `width` pixels of each source row from pixel `left` on to `height` rows of the target,
// from row `top` on, or each field by itself from its own row.
void Scale(const Source& source, int32_t left, int32_t width, const Target& target,
           const int32_t (&tops)[2], int32_t height)
{
    const auto source_pitch = static_cast<ptrdiff_t>(kPixelBytes) * source.width;
    const auto target_pitch = static_cast<ptrdiff_t>(RowBytes(target));
    const int fields = source.fields ? 2 : 1;
    for (int field = 0; field < fields; field++) {
        const PictureView view{
            source.pixels + field * source_pitch + static_cast<ptrdiff_t>(kPixelBytes) * left,
            fields * source_pitch, width, source.height >> (fields - 1)};
        const PictureTarget out{target.pixels + tops[field] * target_pitch, fields * target_pitch,
                                target.width, height >> (fields - 1)};
        ScalePicture(view, out, kFullWeight, source.width - left - width, source.pool);
    }
}

void ScaleWhole(const Source& source, const Target& target)
{
    Scale(source, 0, source.width, target, {0, 1}, target.height);
}

void LetterBox(const Source& source, const Target& target)
{
    BlackRows(target, 0, kLetterBoxBar);
    CopyRows(source, 0, target, kLetterBoxBar, source.height);
    BlackRows(target, kLetterBoxBar + source.height, target.height);
}

void HalfLetterBox(const Source& source, const Target& target)
{
    BlackRows(target, 0, kHalfBar);
    BlackRows(target, target.height - kHalfBar, target.height);
    Scale(source, kHalfPanLeft, kHalfPanWidth, target, kHalfBoxRows, kHalfBoxHeight);
}

void Crop(const Source& source, const Target& target)
{
    // Deliberate: the window begins above the picture, where rows count as black, and not inside
    // it.
    const int32_t first = (target.height - source.height + 1) >> 1;
    BlackRows(target, 0, -first);
    CopyRows(source, 0, target, -first, target.height + first);
}

// Heights that differ by less than 4 percent, as 480 and 486 do, are cut or padded.
bool NearlyAsTall(int64_t taller, int64_t lower)
{
    return 100 * taller < 104 * lower;
}

void BySizes(const Source& source, const Target& target)
{
    if (source.width != target.width) return ScaleWhole(source, target);
    if (source.height == target.height) return CopyRows(source, 0, target, 0, source.height);
    // An even number of rows, so that fields keep their order.
    const int32_t above = 2 * (std::abs(source.height - target.height) >> 2);
    if (source.height > target.height) {
        if (!NearlyAsTall(source.height, target.height)) return ScaleWhole(source, target);
        return CopyRows(source, above, target, 0, target.height);
    }
    if (!NearlyAsTall(target.height, source.height)) return ScaleWhole(source, target);
    BlackRows(target, 0, above);
    CopyRows(source, 0, target, above, source.height);
    BlackRows(target, above + source.height, target.height);
}

template <class Picture>
bool IsPAL(const Picture& picture)
{
    return picture.width == kPAL.width && picture.height == kPAL.height;
}

// Whole NTSC pictures have 486 lines, of which DV keeps 480.
template <class Picture>
bool IsNTSC(const Picture& picture)
{
    return picture.width == kNTSC.width &&
           (picture.height == kNTSC.height || picture.height == kLinesOfWholeNTSC);
}

}  // namespace

void GeometryConvert(const uint8_t* source, const MediaFormat& source_format,
                     const MediaFormat& destination_format, uint8_t* destination, GeometryMode mode,
                     bool interlaced, WorkerPool* pool)
{
    const Source from{source, source_format.Width(), source_format.Height(), interlaced, pool};
    const Target to{destination, destination_format.Width(), destination_format.Height()};
    if (PixelCount(from.width, from.height) == 0 || PixelCount(to.width, to.height) == 0) return;
    const bool up = IsNTSC(from) && IsPAL(to);
    const bool down = IsPAL(from) && IsNTSC(to);
    if (up && mode == GeometryMode::kLetterBox) return LetterBox(from, to);
    if (up && mode == GeometryMode::kPanAndScan)
        return Scale(from, kPanLeft, kPanWidth, to, {0, 1}, to.height);
    if (up && mode == GeometryMode::kLetterBoxPanAndScan) return HalfLetterBox(from, to);
    if (down && mode == GeometryMode::kCrop) return Crop(from, to);
    BySizes(from, to);
}

}  // namespace kelvane
