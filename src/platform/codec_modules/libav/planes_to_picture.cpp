#include <algorithm>
#include <cstring>

#include "platform/codec_modules/libav/dv_planes.h"
#include "platform/codec_modules/libav/plane_rows.h"

namespace kelvane {

namespace {

// Chroma differences from 128 along a row, in 128ths, on every pixel.
struct ChromaDifferences {
    alignas(16) int16_t u[kMaxPlaneWidth], v[kMaxPlaneWidth];
};

// A line of chroma differences with its edges repeated for the filters.
struct ChromaLine {
    static constexpr size_t kMargin = 8;
    alignas(16) int16_t storage[kMaxPlaneWidth / 2 + 2 * kMargin];
    int16_t* Begin() { return storage + kMargin; }
    void RepeatEdges(size_t count)
    {
        Begin()[-1] = Begin()[0];
        Begin()[count] = Begin()[count + 1] = Begin()[count - 1];
    }
};

// The filters have negative weights at their sides: they keep more of a sharp edge between colours
// than linear ones, by 1 dB and more on coloured bars.

// Widens half a row of differences in quarters: weights -3 19 19 -3 between two places.
void Widen420(ChromaLine& line, size_t count, int16_t* __restrict to)
{
    line.RepeatEdges(count);
    const int16_t* __restrict from = line.Begin();
    for (size_t k = 0; k < count; k++) {
        const int16_t before = from[k - 1], a = from[k], b = from[k + 1], after = from[k + 2];
        to[2 * k] = Narrow(32 * a);
        to[2 * k + 1] = Narrow(19 * (a + b) - 3 * (before + after));
    }
}

// Widens a quarter of a row of whole differences: weights in 128ths.
void Widen411(ChromaLine& line, size_t count, int16_t* __restrict to)
{
    line.RepeatEdges(count);
    const int16_t* __restrict from = line.Begin();
    for (size_t k = 0; k < count; k++) {
        const int16_t before = from[k - 1], a = from[k], b = from[k + 1], after = from[k + 2];
        to[4 * k] = Narrow(128 * a);
        to[4 * k + 1] = Narrow(112 * a + 31 * b - 11 * before - 4 * after);
        to[4 * k + 2] = Narrow(74 * (a + b) - 10 * (before + after));
        to[4 * k + 3] = Narrow(31 * a + 112 * b - 4 * before - 11 * after);
    }
}

// 4:2:0: the picture line lies a quarter of the way from its own chroma line towards the next one
// of the field (the lines of the other side come behind).
struct NearLines {
    const uint8_t *own, *next, *afterNext, *behind;
};

void ChromaOf420(const NearLines& lines, size_t count, int16_t* to)
{
    ChromaLine line;
    int16_t* __restrict at = line.Begin();
    const uint8_t* __restrict own = lines.own;
    const uint8_t* __restrict next = lines.next;
    const uint8_t* __restrict after = lines.afterNext;
    const uint8_t* __restrict behind = lines.behind;
    constexpr int32_t kMiddle = 128 * 128 - 16;  // of the weights' sum, less half of the divisor
    for (size_t k = 0; k < count; k++) {
        const int16_t sum =
            Narrow(112 * own[k] + 31 * next[k] - 11 * behind[k] - 4 * after[k] - kMiddle);
        at[k] = static_cast<int16_t>(sum >> 5);
    }
    Widen420(line, count, to);
}

void ChromaOf411(const uint8_t* __restrict own, size_t count, int16_t* to)
{
    ChromaLine line;
    int16_t* __restrict at = line.Begin();
    for (size_t k = 0; k < count; k++)
        at[k] = Narrow(own[k] - 128);
    Widen411(line, count, to);
}

// The chroma line of a field at this number, with the edge lines repeated; `field` is 0 or 1.
const uint8_t* FieldLine(const PlaneRow& plane, int32_t number, int32_t field, int32_t lines)
{
    return plane.data + (2 * std::clamp(number, 0, lines / 2 - 1) + field) * plane.pitch;
}

void ChromaOfLine(const Planes& planes, const PictureLayout& layout, int32_t line,
                  ChromaDifferences& chroma)
{
    const auto width = static_cast<size_t>(layout.width);
    if (layout.chroma == ChromaSampling::k411) {
        ChromaOf411(planes.u.data + line * planes.u.pitch, width / 4, chroma.u);
        ChromaOf411(planes.v.data + line * planes.v.pitch, width / 4, chroma.v);
        return;
    }
    // Picture lines 4k + f and 4k + 2 + f share chroma line k of field f; it lies between them.
    const int32_t own = line / 4, field = line % 2, towards = line % 4 < 2 ? -1 : 1;
    const auto nearLines = [&](const PlaneRow& plane) {
        const auto at = [&](int32_t number) {
            return FieldLine(plane, number, field, layout.height / 2);
        };
        return NearLines{at(own), at(own + towards), at(own + 2 * towards), at(own - towards)};
    };
    ChromaOf420(nearLines(planes.u), width / 2, chroma.u);
    ChromaOf420(nearLines(planes.v), width / 2, chroma.v);
}

// A row of pixels of 32 bits, as two halves each: blue and green, red and nothing.
struct PixelRow {
    alignas(16) uint16_t halves[2 * kMaxPlaneWidth];
};

// Sums are in 32nds. 33050 65536ths of blue's chroma are taken as a half and 282.
void ColoursOfRow(const uint8_t* __restrict y, const ChromaDifferences& chroma, size_t width,
                  PixelRow& row)
{
    const int16_t* __restrict us = chroma.u;
    const int16_t* __restrict vs = chroma.v;
    uint16_t* __restrict halves = row.halves;
    for (size_t x = 0; x < width; x++) {
        const int16_t u = us[x], v = vs[x];
        const int16_t luma = Narrow(High(Narrow((y[x] - 16) << 7), 19077) + 16);
        const int16_t red = ClipToByte(Narrow(luma + High(v, 26150)) >> 5);
        const int16_t green = ClipToByte(Narrow(luma + High(u, -6418) + High(v, -13320)) >> 5);
        const int16_t blue = ClipToByte(Narrow(luma + (u >> 1) + High(u, 282)) >> 5);
        halves[2 * x] = static_cast<uint16_t>(blue | green << 8);
        halves[2 * x + 1] = static_cast<uint16_t>(red);
    }
}

void StoreRow(const PixelRow& row, size_t width, size_t pixelBytes, uint8_t* picture)
{
    if (pixelBytes == 4) {
        memcpy(picture, row.halves, 4 * width);
        return;
    }
    for (size_t x = 0; x < width; x++) {
        picture[3 * x] = static_cast<uint8_t>(row.halves[2 * x]);
        picture[3 * x + 1] = static_cast<uint8_t>(row.halves[2 * x] >> 8);
        picture[3 * x + 2] = static_cast<uint8_t>(row.halves[2 * x + 1]);
    }
}

}  // namespace

void PlanesToPicture(const Planes& planes, const PictureLayout& layout, uint8_t* picture,
                     size_t pixelBytes)
{
    const auto width = static_cast<size_t>(layout.width);
    ChromaDifferences chroma;
    PixelRow row;
    for (int32_t line = 0; line < layout.height; line++) {
        ChromaOfLine(planes, layout, line, chroma);
        ColoursOfRow(planes.y.data + line * planes.y.pitch, chroma, width, row);
        StoreRow(row, width, pixelBytes, picture + static_cast<size_t>(line) * width * pixelBytes);
    }
}

}  // namespace kelvane
