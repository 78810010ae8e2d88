#include "codecs/huffyuv/huffyuv_frame_encoder.h"

#include <algorithm>
#include <cstring>

#include "codecs/huffyuv/huffyuv_tables.h"

namespace kelvane {

namespace {

constexpr size_t kWord = 4;  // bytes

uint8_t Low(unsigned value)
{
    return static_cast<uint8_t>(value);
}

void Subtract(const uint8_t* __restrict a, const uint8_t* __restrict b,
              uint8_t* __restrict difference, size_t bytes)
{
    for (size_t i = 0; i < bytes; i++)
        difference[i] = Low(a[i] - b[i]);
}

// For each byte of Y U Y V groups the one before it of the same channel. Looks at the group before
// the first one.
void LeftOfYUV(const uint8_t* __restrict samples, uint8_t* __restrict left, size_t bytes)
{
    for (size_t i = 0; i < bytes; i += kWord) {
        uint32_t before, here;
        memcpy(&before, samples + i - kWord, kWord);
        memcpy(&here, samples + i, kWord);
        const uint32_t word = (before >> 16 & 0xFF) | (before & 0xFF00FF00) | (here & 0xFF) << 16;
        memcpy(left + i, &word, kWord);
    }
}

// Takes the median of the neighbours from each sample; `left` and `corner` are those of the row and
// of the row above.
void SubtractMedian(const uint8_t* __restrict row, const uint8_t* __restrict left,
                    const uint8_t* __restrict above, const uint8_t* __restrict corner,
                    uint8_t* __restrict residues, size_t bytes)
{
    for (size_t i = 0; i < bytes; i++) {
        const uint8_t slope = Low(left[i] + above[i] - corner[i]);
        const uint8_t low = std::min(left[i], above[i]);
        const uint8_t high = std::max(left[i], above[i]);
        residues[i] = Low(row[i] - std::max(low, std::min(high, slope)));
    }
}

}  // namespace

void HuffYUVFrameEncoder::Prepare(const HuffYUVFormat& format)
{
    fFormat = format;
    for (size_t plane = 0; plane < fPlanes.size(); plane++) {
        const HuffmanCode& code = format.planes[plane];
        for (size_t symbol = 0; symbol < kSymbols; symbol++)
            fPlanes[plane][symbol] = {uint64_t{code.code[symbol]} << 32, code.length[symbol]};
    }
    const size_t rowBytes = format.RowBytes();
    fRow.assign(kWord + rowBytes, 0);
    fLeft.assign(rowBytes, 0);
    fCorner.assign(rowBytes, 0);
    fResidues.assign(rowBytes, 0);
    fWords.assign((rowBytes + 2) * kWord, 0);
}

// Left and gradient: what is coded with left differences is the row itself or its difference from
// the row above.
void HuffYUVFrameEncoder::FindResidues(const uint8_t* picture, size_t begin, size_t end)
{
    const size_t bytes = end - begin;
    const size_t step = fFormat.row_step * fFormat.RowBytes();
    const bool gradient = fFormat.method == kGradient || fFormat.method == kGradientDecorrelated;
    uint8_t* row = fRow.data() + kWord;
    if (gradient && begin >= step)
        Subtract(picture + begin, picture + begin - step, row, bytes);
    else
        memcpy(row, picture + begin, bytes);
    if (fFormat.kind == 16) {
        LeftOfYUV(row, fLeft.data(), bytes);
        Subtract(row, fLeft.data(), fResidues.data(), bytes);
    } else {
        Subtract(row, row - fFormat.PixelBytes(), fResidues.data(), bytes);
    }
    // The last samples predict the first ones of the next row.
    memmove(fRow.data(), fRow.data() + bytes, kWord);
}

void HuffYUVFrameEncoder::FindMedianResidues(const uint8_t* picture, size_t begin, size_t end)
{
    const size_t step = fFormat.row_step * fFormat.RowBytes();
    const size_t middle = std::clamp(step + kMedianAfter, begin, end);
    LeftOfYUV(picture + begin, fLeft.data(), end - begin);
    Subtract(picture + begin, fLeft.data(), fResidues.data(), middle - begin);
    if (middle == end) return;
    const uint8_t* above = picture + middle - step;
    LeftOfYUV(above, fCorner.data(), end - middle);
    SubtractMedian(picture + middle, fLeft.data() + (middle - begin), above, fCorner.data(),
                   fResidues.data() + (middle - begin), end - middle);
}

void HuffYUVFrameEncoder::PutPair(WordBitWriter& writer, const Code& a, const Code& b)
{
    const unsigned length = a.length + b.length;
    if (length <= 32) [[likely]] {
        writer.Put(a.bits | b.bits >> a.length, length);
    } else {
        writer.Put(a.bits, a.length);
        writer.Put(b.bits, b.length);
    }
}

void HuffYUVFrameEncoder::PutYUV(size_t bytes)
{
    WordBitWriter writer = fWriter;
    const uint8_t* residues = fResidues.data();
    for (size_t i = 0; i < bytes; i += 4) {
        PutPair(writer, fPlanes[0][residues[i]], fPlanes[1][residues[i + 1]]);
        PutPair(writer, fPlanes[0][residues[i + 2]], fPlanes[2][residues[i + 3]]);
    }
    fWriter = writer;
}

template <bool kDecorrelated, size_t kPixel>
void HuffYUVFrameEncoder::PutRGB(size_t bytes)
{
    WordBitWriter writer = fWriter;
    const uint8_t* residues = fResidues.data();
    for (size_t i = 0; i < bytes; i += kPixel) {
        const uint8_t b = residues[i], g = residues[i + 1], r = residues[i + 2];
        if constexpr (kDecorrelated)
            PutPair(writer, fPlanes[1][g], fPlanes[0][Low(b - g)]);
        else
            PutPair(writer, fPlanes[0][b], fPlanes[1][g]);
        const Code& red = fPlanes[2][kDecorrelated ? Low(r - g) : r];
        if constexpr (kPixel == 4)
            PutPair(writer, red, fPlanes[2][residues[i + 3]]);
        else
            writer.Put(red.bits, red.length);
    }
    fWriter = writer;
}

void HuffYUVFrameEncoder::PutRow(size_t bytes)
{
    const bool plain = fFormat.method == kLeft;
    if (fFormat.kind == 16) return PutYUV(bytes);
    if (fFormat.kind == 24) return plain ? PutRGB<false, 3>(bytes) : PutRGB<true, 3>(bytes);
    return plain ? PutRGB<false, 4>(bytes) : PutRGB<true, 4>(bytes);
}

std::optional<size_t> HuffYUVFrameEncoder::Encode(const uint8_t* picture, std::span<uint8_t> room)
{
    if (room.size() < kWord) return std::nullopt;
    const size_t pixel = fFormat.PixelBytes();
    const size_t first = fFormat.kind == 24 ? pixel : kWord;
    // The first pixel is raw, in kind 24 behind a 0, and predicts the second one.
    std::fill_n(fRow.begin(), kWord, uint8_t{0});
    memcpy(fRow.data() + kWord - first, picture, first);
    memcpy(room.data(), fRow.data(), kWord);
    size_t written = kWord;

    fWriter = WordBitWriter();
    const auto flush = [&] {
        const size_t bytes = static_cast<size_t>(fWriter.Next() - fWords.data());
        if (bytes > room.size() - written) return false;
        memcpy(room.data() + written, fWords.data(), bytes);
        written += bytes;
        return true;
    };
    const size_t rowBytes = fFormat.RowBytes();
    for (size_t row = 0; row < fFormat.height; row++) {
        const size_t begin = row == 0 ? first : row * rowBytes;
        const size_t end = (row + 1) * rowBytes;
        if (fFormat.method == kMedian)
            FindMedianResidues(picture, begin, end);
        else
            FindResidues(picture, begin, end);
        fWriter.SetNext(fWords.data());
        PutRow(end - begin);
        if (!flush()) return std::nullopt;
    }
    fWriter.SetNext(fWords.data());
    fWriter.Finish();
    if (!flush()) return std::nullopt;
    return written;
}

}  // namespace kelvane
