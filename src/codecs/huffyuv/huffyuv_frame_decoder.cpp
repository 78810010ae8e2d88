#include "codecs/huffyuv/huffyuv_frame_decoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "codecs/huffyuv/huffyuv_tables.h"

namespace kelvane {

namespace {

constexpr size_t kWord = 4;  // bytes

uint8_t Low(unsigned value)
{
    return static_cast<uint8_t>(value);
}

void AddRow(const uint8_t* __restrict above, uint8_t* __restrict row, size_t bytes)
{
    for (size_t i = 0; i < bytes; i++)
        row[i] = Low(row[i] + above[i]);
}

// The last sample of each channel, which predicts the next.
struct YUVSamples {
    uint8_t y, u, v;
};

// Decodes left-predicted groups Y U Y V over [to, end).
void DecodeLeft(const PairLookup& yu, const PairLookup& yv, BitWindow& window, YUVSamples& left,
                uint8_t* to, const uint8_t* end)
{
    BitWindow bits = window;
    YUVSamples last = left;
    for (; to < end; to += kWord) {
        bits.Refill();
        const PairLookup::Pair a = yu.Get(bits);
        const PairLookup::Pair b = yv.Get(bits);
        to[0] = last.y = Low(last.y + a.first);
        to[1] = last.u = Low(last.u + a.second);
        to[2] = last.y = Low(last.y + b.first);
        to[3] = last.v = Low(last.v + b.second);
    }
    left = last;
    window = bits;
}

// The middle one of the left neighbour, the one above and the slope through the three neighbours.
// In whole integers and with one choice of the first two, which compilers make free of branches;
// the choices follow the noise of the picture and are not to be predicted.
int MedianOf(int left, int above, int aboveLeft)
{
    const int sum = left + above;
    const int slope = (sum - aboveLeft) & 255;
    const int low = std::min(left, above);
    const int high = sum - low;
    return std::max(low, std::min(high, slope));
}

// Decodes the residues of groups Y U Y V into [to, end).
void DecodeResidues(const PairLookup& yu, const PairLookup& yv, BitWindow& window, uint8_t* to,
                    const uint8_t* end)
{
    BitWindow bits = window;
    for (; to < end; to += kWord) {
        bits.Refill();
        const PairLookup::Pair a = yu.Get(bits);
        const PairLookup::Pair b = yv.Get(bits);
        memcpy(to, &a, sizeof a);
        memcpy(to + sizeof a, &b, sizeof b);
    }
    window = bits;
}

// Adds to the residues in [to, end) what the median predicts; the row above is `step` bytes back.
void AddMedian(uint8_t* to, const uint8_t* end, size_t step)
{
    if (to >= end) return;
    const uint8_t* above = to - step;
    int y = to[-2], u = to[-3], v = to[-1];
    int cornerY = above[-2], cornerU = above[-3], cornerV = above[-1];
    for (; to < end; to += kWord, above += kWord) {
        const int aboveY0 = above[0], aboveU = above[1], aboveY1 = above[2], aboveV = above[3];
        const int y0 = (MedianOf(y, aboveY0, cornerY) + to[0]) & 255;
        y = (MedianOf(y0, aboveY1, aboveY0) + to[2]) & 255;
        u = (MedianOf(u, aboveU, cornerU) + to[1]) & 255;
        v = (MedianOf(v, aboveV, cornerV) + to[3]) & 255;
        cornerY = aboveY1;
        cornerU = aboveU;
        cornerV = aboveV;
        const auto group = static_cast<uint32_t>(y0 | u << 8 | y << 16) | static_cast<uint32_t>(v)
                                                                              << 24;
        memcpy(to, &group, kWord);
    }
}

}  // namespace

void HuffYUVFrameDecoder::Prepare(const HuffYUVFormat& format)
{
    fFormat = format;
    for (size_t i = 0; i < fPlanes.size(); i++)
        fPlanes[i].Build(format.planes[i]);
    const auto build = [&](PairLookup& pair, size_t first, size_t second) {
        pair.Build(format.planes[first], fPlanes[first], format.planes[second], fPlanes[second]);
    };
    if (format.kind == 16) {
        build(fFirstPair, 0, 1);
        build(fSecondPair, 0, 2);
        return;
    }
    const bool plain = format.method == kLeft;
    build(fFirstPair, plain ? 0 : 1, plain ? 1 : 0);
    build(fSecondPair, 2, 2);
    fThird = 2;
}

// The bytes of each 32-bit word are turned round, which puts the bits in a row. The zeros behind
// are as many as the longest codes of a row can take, so that the end needs a look only once a row.
void HuffYUVFrameDecoder::CopyInStreamOrder(std::span<const uint8_t> frame)
{
    const size_t rowBytes = fFormat.RowBytes();
    const size_t most = rowBytes * fFormat.height * sizeof(uint32_t);  // no code has 33 bits
    const size_t words = std::min(frame.size(), most) / kWord;
    fStreamBits = static_cast<int64_t>(32 * words);
    fStream.resize(kWord * (words + rowBytes) + 2 * sizeof(uint64_t));
    for (size_t i = 0; i < words; i++) {
        uint32_t word;
        memcpy(&word, frame.data() + kWord * i, kWord);
        word = __builtin_bswap32(word);
        memcpy(fStream.data() + kWord * i, &word, kWord);
    }
    std::fill(fStream.begin() + static_cast<ptrdiff_t>(kWord * words), fStream.end(), uint8_t{0});
}

// Calls decodeRow(window, at, end) for each row, the first of which begins `first` bytes later.
template <class DecodeRow>
Status HuffYUVFrameDecoder::DecodeRows(uint8_t* picture, size_t rowBytes, size_t first,
                                       DecodeRow decodeRow)
{
    BitWindow window(fStream.data());
    const bool gradient = fFormat.method == kGradient || fFormat.method == kGradientDecorrelated;
    const size_t step = fFormat.row_step * rowBytes;
    for (size_t row = 0; row < fFormat.height; row++) {
        uint8_t* at = picture + row * rowBytes + (row == 0 ? first : 0);
        uint8_t* end = picture + (row + 1) * rowBytes;
        decodeRow(window, at, end);
        if (window.Position(fStream.data()) > fStreamBits) return kError;
        if (gradient && row >= fFormat.row_step)
            AddRow(at - step, at, static_cast<size_t>(end - at));
    }
    return kOK;
}

Status HuffYUVFrameDecoder::DecodeYUV(uint8_t* picture)
{
    const size_t rowBytes = fFormat.RowBytes();
    const size_t step = fFormat.row_step * rowBytes;
    const size_t leftBytes =
        fFormat.method == kMedian ? step + kMedianAfter : rowBytes * fFormat.height;
    YUVSamples left = {picture[2], picture[1], picture[3]};
    return DecodeRows(picture, rowBytes, kWord, [&](BitWindow& window, uint8_t* at, uint8_t* end) {
        const size_t done = static_cast<size_t>(at - picture);
        const size_t leftHere =
            std::min(static_cast<size_t>(end - at), leftBytes - std::min(leftBytes, done));
        DecodeLeft(fFirstPair, fSecondPair, window, left, at, at + leftHere);
        // In two passes: one loop with both has more in hand than there are registers.
        DecodeResidues(fFirstPair, fSecondPair, window, at + leftHere, end);
        AddMedian(at + leftHere, end, step);
    });
}

// `pixel` is the first pixel of the stream.
template <bool kDecorrelated, size_t kFrom, size_t kTo>
Status HuffYUVFrameDecoder::DecodeRGB(const uint8_t* pixel, uint8_t* picture)
{
    uint8_t b = pixel[0], g = pixel[1], r = pixel[2], a = kFrom == 4 ? pixel[3] : 0;
    const auto store = [&](uint8_t* to) {
        to[0] = b;
        to[1] = g;
        to[2] = r;
        if constexpr (kTo == 4) to[3] = a;
    };
    store(picture);
    const HuffmanLookup& third = fPlanes[2];
    const auto decodeRow = [&](BitWindow& window, uint8_t* to, uint8_t* end) {
        BitWindow bits = window;
        for (; to < end; to += kTo) {
            bits.Refill();
            const PairLookup::Pair pair = fFirstPair.Get(bits);
            uint8_t red;
            if constexpr (kFrom == 4) {
                const PairLookup::Pair rest = fSecondPair.Get(bits);
                red = rest.first;
                a = Low(a + rest.second);
            } else {
                red = third.Get(bits);
            }
            const uint8_t green = kDecorrelated ? pair.first : pair.second;
            const uint8_t blue = kDecorrelated ? Low(pair.second + green) : pair.first;
            if constexpr (kDecorrelated) red = Low(red + green);
            b = Low(b + blue);
            g = Low(g + green);
            r = Low(r + red);
            store(to);
        }
        window = bits;
    };
    return DecodeRows(picture, kTo * fFormat.width, kTo, decodeRow);
}

template <bool kDecorrelated>
Status HuffYUVFrameDecoder::DecodeRGB(const uint8_t* pixel, uint8_t* picture, size_t to)
{
    if (fFormat.kind == 24)
        return to == 3 ? DecodeRGB<kDecorrelated, 3, 3>(pixel, picture)
                       : DecodeRGB<kDecorrelated, 3, 4>(pixel, picture);
    return to == 3 ? DecodeRGB<kDecorrelated, 4, 3>(pixel, picture)
                   : DecodeRGB<kDecorrelated, 4, 4>(pixel, picture);
}

Status HuffYUVFrameDecoder::Decode(std::span<const uint8_t> frame, uint8_t* picture,
                                   size_t pixelBytes)
{
    if (frame.size() < kWord) return kError;
    CopyInStreamOrder(frame.subspan(kWord));
    if (fFormat.kind == 16) {
        memcpy(picture, frame.data(), kWord);
        return DecodeYUV(picture);
    }
    // The first word of kind 24 is 0 B G R.
    const uint8_t* pixel = frame.data() + (fFormat.kind == 24 ? 1 : 0);
    return fFormat.method == kLeft ? DecodeRGB<false>(pixel, picture, pixelBytes)
                                   : DecodeRGB<true>(pixel, picture, pixelBytes);
}

}  // namespace kelvane
