#include "platform/libav/dv_planes.h"

#include <algorithm>
#include <cstring>

namespace kelvane {

namespace {

constexpr size_t kEdge = 8;  // pixels repeated on either side of a row for the filters
constexpr size_t kRoom = kMaxPlaneWidth + 2 * kEdge;

// The colours of one row, or sums of them, one array a colour so that loops over them vectorise.
struct ColourRow {
    alignas(16) int16_t storage[3][kRoom];
    int16_t* Blue() { return storage[0] + kEdge; }
    int16_t* Green() { return storage[1] + kEdge; }
    int16_t* Red() { return storage[2] + kEdge; }
};

void RepeatEdges(int16_t* row, size_t width)
{
    std::fill_n(row - kEdge, kEdge, row[0]);
    std::fill_n(row + width, kEdge, row[width - 1]);
}

void Split32(const uint8_t* __restrict picture, size_t width, ColourRow& row)
{
    int16_t* __restrict blue = row.Blue();
    int16_t* __restrict green = row.Green();
    int16_t* __restrict red = row.Red();
    for (size_t x = 0; x < width; x++) {
        uint32_t pixel;
        memcpy(&pixel, picture + 4 * x, 4);
        blue[x] = static_cast<int16_t>(pixel & 0xFF);
        green[x] = static_cast<int16_t>(pixel >> 8 & 0xFF);
        red[x] = static_cast<int16_t>(pixel >> 16 & 0xFF);
    }
}

void Split24(const uint8_t* __restrict picture, size_t width, ColourRow& row)
{
    int16_t* __restrict blue = row.Blue();
    int16_t* __restrict green = row.Green();
    int16_t* __restrict red = row.Red();
    for (size_t x = 0; x < width; x++) {
        blue[x] = picture[3 * x];
        green[x] = picture[3 * x + 1];
        red[x] = picture[3 * x + 2];
    }
}

void SplitRow(const uint8_t* picture, size_t pixelBytes, size_t width, ColourRow& row)
{
    if (pixelBytes == 4)
        Split32(picture, width, row);
    else
        Split24(picture, width, row);
    for (int16_t* colour : {row.Blue(), row.Green(), row.Red()})
        RepeatEdges(colour, width);
}

// A product of two 16-bit numbers in 32 bits, in the form that compilers turn into SIMD.
inline int32_t Times(int16_t a, int16_t b)
{
    return int32_t{a} * int32_t{b};
}

void LumaRow(ColourRow& row, size_t width, uint8_t* __restrict y)
{
    const int16_t* __restrict blue = row.Blue();
    const int16_t* __restrict green = row.Green();
    const int16_t* __restrict red = row.Red();
    for (size_t x = 0; x < width; x++)
        y[x] = static_cast<uint8_t>(
            ((Times(8414, red[x]) + Times(16519, green[x]) + Times(3208, blue[x]) + 16384) >> 15) +
            16);
}

uint8_t Clip(int32_t value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// Chroma of colour sums that add up to 64 pixels.
void ChromaRow(ColourRow& sums, size_t count, uint8_t* __restrict u, uint8_t* __restrict v)
{
    const int16_t* __restrict blue = sums.Blue();
    const int16_t* __restrict green = sums.Green();
    const int16_t* __restrict red = sums.Red();
    constexpr int kShift = 15 + 6;
    constexpr int32_t kHalf = 1 << (kShift - 1);
    for (size_t k = 0; k < count; k++) {
        const int16_t r = red[k], g = green[k], b = blue[k];
        u[k] =
            Clip(((Times(-4857, r) + Times(-9535, g) + Times(14392, b) + kHalf) >> kShift) + 128);
        v[k] =
            Clip(((Times(14392, r) + Times(-12052, g) + Times(-2340, b) + kHalf) >> kShift) + 128);
    }
}

// A weighted sum that fits 16 bits. Kept so narrow before it is shifted, sums take eight lanes of a
// vector and not four.
inline int16_t Narrow(int32_t sum)
{
    return static_cast<int16_t>(sum);
}

// The filters have negative weights at their sides: they keep more of a sharp edge between colours
// than linear ones, by 1 dB and more on coloured bars.

// Four rows of one field, of which the chroma line lies in the middle, to one: weights -1 9 9 -1 in
// eighths, so that the result is the sum of two pixels.
void FilterDown(ColourRow* const (&rows)[4], size_t width, ColourRow& to)
{
    for (size_t colour = 0; colour < 3; colour++) {
        const int16_t* __restrict a = rows[0]->storage[colour];
        const int16_t* __restrict b = rows[1]->storage[colour];
        const int16_t* __restrict c = rows[2]->storage[colour];
        const int16_t* __restrict d = rows[3]->storage[colour];
        int16_t* __restrict out = to.storage[colour];
        for (size_t x = 0; x < width + 2 * kEdge; x++)
            out[x] = static_cast<int16_t>(Narrow(9 * (b[x] + c[x]) - (a[x] + d[x]) + 4) >> 3);
    }
}

// Every second place of sums of two: weights 1 0 -3 0 10 16 10 0 -3 0 1, with which they
// make 64.
void Filter420(const ColourRow& row, size_t width, ColourRow& sums)
{
    for (size_t colour = 0; colour < 3; colour++) {
        const int16_t* __restrict from = row.storage[colour] + kEdge;
        int16_t* __restrict to = sums.storage[colour] + kEdge;
        for (size_t k = 0; k < width / 2; k++) {
            const int16_t* at = from + 2 * k;
            to[k] = static_cast<int16_t>(16 * at[0] + 10 * (at[-1] + at[1]) - 3 * (at[-3] + at[3]) +
                                         (at[-5] + at[5]));
        }
    }
}

// One colour of a row, its pixels sorted by their place among four: pixel 4 k + i is phase[i][k],
// with two places before and behind. Loops over phases vectorise, loops over every fourth do not.
struct Phases {
    static constexpr size_t kMargin = 2;
    alignas(16) int16_t storage[4][kRoom / 4];
    const int16_t* Of(size_t i) const { return storage[i] + kMargin; }

    void Sort(const int16_t* __restrict row, size_t width)
    {
        static_assert(4 * kMargin == kEdge);
        for (size_t k = 0; k < width / 4 + 2 * kMargin; k++)
            for (size_t i = 0; i < 4; i++)
                storage[i][k] = row[4 * k + i];
    }
};

// Every fourth place: weights -1 -2 -2 0 4 10 15 16 15 10 4 0 -2 -2 -1, 64 in all.
void Filter411(const ColourRow& row, size_t width, ColourRow& sums)
{
    Phases phases;
    const int16_t* __restrict p0 = phases.Of(0);
    const int16_t* __restrict p1 = phases.Of(1);
    const int16_t* __restrict p2 = phases.Of(2);
    const int16_t* __restrict p3 = phases.Of(3);
    for (size_t colour = 0; colour < 3; colour++) {
        phases.Sort(row.storage[colour], width);
        int16_t* __restrict to = sums.storage[colour] + kEdge;
        for (size_t k = 0; k < width / 4; k++)
            to[k] = static_cast<int16_t>(16 * p0[k] + 15 * (p3[k - 1] + p1[k]) +
                                         10 * (p2[k - 1] + p2[k]) + 4 * (p1[k - 1] + p3[k]) -
                                         2 * (p3[k - 2] + p1[k + 1]) - 2 * (p2[k - 2] + p2[k + 1]) -
                                         (p1[k - 2] + p3[k + 1]));
    }
}

// Splits picture rows and writes their luma.
struct RowSplitter {
    const uint8_t* picture;
    size_t pixelBytes;
    size_t width;
    PlaneRow y;

    void operator()(int32_t line, ColourRow& row) const
    {
        SplitRow(picture + static_cast<size_t>(line) * width * pixelBytes, pixelBytes, width, row);
        LumaRow(row, width, y.data + line * y.pitch);
    }
};

// Chroma differences from 128 along a row, doubled, on every pixel.
struct ChromaDifferences {
    alignas(16) int16_t u[kRoom], v[kRoom];
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

// Widens half a row of differences scaled by 4: weights -3 19 19 -3 between two places.
void Widen420(ChromaLine& line, size_t count, int16_t* __restrict to)
{
    line.RepeatEdges(count);
    const int16_t* __restrict from = line.Begin();
    for (size_t k = 0; k < count; k++) {
        const int16_t before = from[k - 1], a = from[k], b = from[k + 1], after = from[k + 2];
        const int16_t between = Narrow(19 * (a + b) - 3 * (before + after) + 32);
        to[2 * k] = static_cast<int16_t>((a + 1) >> 1);
        to[2 * k + 1] = static_cast<int16_t>(between >> 6);
    }
}

// Widens a quarter of a row of plain differences: weights in 128ths.
void Widen411(ChromaLine& line, size_t count, int16_t* __restrict to)
{
    line.RepeatEdges(count);
    const int16_t* __restrict from = line.Begin();
    for (size_t k = 0; k < count; k++) {
        const int16_t before = from[k - 1], a = from[k], b = from[k + 1], after = from[k + 2];
        const int16_t first = Narrow(112 * a + 31 * b - 11 * before - 4 * after + 32);
        const int16_t second = Narrow(74 * (a + b) - 10 * (before + after) + 32);
        const int16_t third = Narrow(31 * a + 112 * b - 4 * before - 11 * after + 32);
        to[4 * k] = static_cast<int16_t>(2 * a);
        to[4 * k + 1] = static_cast<int16_t>(first >> 6);
        to[4 * k + 2] = static_cast<int16_t>(second >> 6);
        to[4 * k + 3] = static_cast<int16_t>(third >> 6);
    }
}

// 4:2:0: the picture line lies a quarter of the way from its own chroma line towards the next one
// of the field (the lines of the other side come behind); differences scaled by 4.
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
        at[k] = static_cast<int16_t>(own[k] - 128);
    Widen411(line, count, to);
}

inline int16_t Clip16(int32_t value)
{
    return std::min<int16_t>(std::max<int16_t>(static_cast<int16_t>(value), 0), 255);
}

void ColoursOfRow(const uint8_t* __restrict y, const ChromaDifferences& chroma, size_t width,
                  ColourRow& row)
{
    const int16_t* __restrict u = chroma.u;
    const int16_t* __restrict v = chroma.v;
    int16_t* __restrict blue = row.Blue();
    int16_t* __restrict green = row.Green();
    int16_t* __restrict red = row.Red();
    for (size_t x = 0; x < width; x++) {
        const int32_t luma = Times(19077, static_cast<int16_t>(y[x] - 16)) + 8192;
        red[x] = Clip16((luma + Times(13075, v[x])) >> 14);
        green[x] = Clip16((luma + Times(-3209, u[x]) + Times(-6660, v[x])) >> 14);
        blue[x] = Clip16((luma + Times(16525, u[x])) >> 14);
    }
}

void Join32(ColourRow& row, size_t width, uint8_t* __restrict picture)
{
    const int16_t* __restrict blue = row.Blue();
    const int16_t* __restrict green = row.Green();
    const int16_t* __restrict red = row.Red();
    for (size_t x = 0; x < width; x++) {
        const auto low = static_cast<uint16_t>(blue[x] | green[x] << 8);
        const auto high = static_cast<uint16_t>(red[x]);
        memcpy(picture + 4 * x, &low, 2);
        memcpy(picture + 4 * x + 2, &high, 2);
    }
}

void Join24(ColourRow& row, size_t width, uint8_t* __restrict picture)
{
    for (size_t x = 0; x < width; x++) {
        picture[3 * x] = static_cast<uint8_t>(row.Blue()[x]);
        picture[3 * x + 1] = static_cast<uint8_t>(row.Green()[x]);
        picture[3 * x + 2] = static_cast<uint8_t>(row.Red()[x]);
    }
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

// One field of a 4:2:0 picture. Each picture line of the field is split once and kept while chroma
// lines need it.
void FieldToPlanes420(const RowSplitter& split, int32_t field, const PictureLayout& layout,
                      const Planes& planes)
{
    ColourRow rows[4], middle, sums;
    const int32_t lines = layout.height / 2;
    int32_t done = 0;
    for (int32_t k = 0; k < lines / 2; k++) {
        for (; done < std::min(2 * k + 3, lines); done++)
            split(2 * done + field, rows[done % 4]);
        const auto row = [&](int32_t number) {
            return &rows[std::clamp(number, 0, lines - 1) % 4];
        };
        FilterDown({row(2 * k - 1), row(2 * k), row(2 * k + 1), row(2 * k + 2)}, split.width,
                   middle);
        Filter420(middle, split.width, sums);
        const int32_t chromaLine = 2 * k + field;
        ChromaRow(sums, split.width / 2, planes.u.data + chromaLine * planes.u.pitch,
                  planes.v.data + chromaLine * planes.v.pitch);
    }
}

}  // namespace

void PictureToPlanes(const uint8_t* picture, size_t pixelBytes, const PictureLayout& layout,
                     const Planes& planes)
{
    const auto width = static_cast<size_t>(layout.width);
    const RowSplitter split{picture, pixelBytes, width, planes.y};
    if (layout.chroma == ChromaSampling::k420) {
        for (int32_t field = 0; field < 2; field++)
            FieldToPlanes420(split, field, layout, planes);
        return;
    }
    ColourRow row, sums;
    for (int32_t line = 0; line < layout.height; line++) {
        split(line, row);
        Filter411(row, width, sums);
        ChromaRow(sums, width / 4, planes.u.data + line * planes.u.pitch,
                  planes.v.data + line * planes.v.pitch);
    }
}

void PlanesToPicture(const Planes& planes, const PictureLayout& layout, uint8_t* picture,
                     size_t pixelBytes)
{
    const auto width = static_cast<size_t>(layout.width);
    ChromaDifferences chroma;
    ColourRow row;
    for (int32_t line = 0; line < layout.height; line++) {
        ChromaOfLine(planes, layout, line, chroma);
        ColoursOfRow(planes.y.data + line * planes.y.pitch, chroma, width, row);
        uint8_t* to = picture + static_cast<size_t>(line) * width * pixelBytes;
        if (pixelBytes == 4)
            Join32(row, width, to);
        else
            Join24(row, width, to);
    }
}

}  // namespace kelvane
