#include "codecs/raw/pixel_order.h"

#include <bit>
#include <cstring>

namespace kelvane {

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are words, first byte lowest");

constexpr uint32_t kOpaque = 0xFF000000;
constexpr size_t kUnrolled = 4;

uint32_t Reverse(uint32_t pixel)
{
    return __builtin_bswap32(pixel);
}

// One pixel, a word whose unused bytes are 0, from and to `kBytes` bytes in memory.
template <size_t kBytes>
uint32_t Load(const uint8_t* from)
{
    uint32_t pixel = 0;
    memcpy(&pixel, from, kBytes);
    return pixel;
}

template <size_t kBytes>
void Store(uint8_t* to, uint32_t pixel)
{
    memcpy(to, &pixel, kBytes);
}

// Moves `count` words, four bytes also where a pixel has three: `change` has to bear any value in
// the byte that is not the pixel's, and what is stored beyond a pixel is overwritten by the next.
template <size_t kFrom, size_t kTo, class Change>
void MoveWords(const uint8_t* __restrict source, uint8_t* __restrict destination, size_t count,
               Change change)
{
    const auto move = [&](size_t i) {
        Store<4>(destination + kTo * i, change(Load<4>(source + kFrom * i)));
    };
    size_t i = 0;
    for (; i + kUnrolled <= count; i += kUnrolled)
        for (size_t k = 0; k < kUnrolled; k++)
            move(i + k);
    for (; i < count; i++)
        move(i);
}

// Turns round the four bytes of each pixel, two pixels at a time, and sets the bits of `added`.
void ReverseEach(const uint8_t* __restrict source, uint8_t* __restrict destination, size_t pixels,
                 uint32_t added)
{
    const uint64_t both = uint64_t{added} << 32 | added;
    size_t i = 0;
    for (; i + 2 <= pixels; i += 2) {
        uint64_t pair;
        memcpy(&pair, source + 4 * i, sizeof pair);
        pair = std::rotl(__builtin_bswap64(pair), 32) | both;
        memcpy(destination + 4 * i, &pair, sizeof pair);
    }
    if (i < pixels) Store<4>(destination + 4 * i, Reverse(Load<4>(source + 4 * i)) | added);
}

constexpr size_t kBlock = 48;  // bytes, whole pixels of three bytes and whole vectors

// Bytes 0, 1 and 2 of each three-byte pixel.
struct ByteMasks {
    uint8_t first[kBlock], middle[kBlock], last[kBlock];
};

constexpr ByteMasks MakeMasks()
{
    ByteMasks masks{};
    for (size_t i = 0; i < kBlock; i++)
        (i % 3 == 0 ? masks.first : i % 3 == 1 ? masks.middle : masks.last)[i] = 0xFF;
    return masks;
}

constexpr ByteMasks kMasks = MakeMasks();

}  // namespace

void SwapRedBlue(const uint8_t* __restrict source, uint8_t* __restrict destination, size_t pixels)
{
    const auto swapOne = [&](size_t at) {
        destination[at] = source[at + 2];
        destination[at + 1] = source[at + 1];
        destination[at + 2] = source[at];
    };
    const size_t bytes = 3 * pixels;
    size_t at = 0;
    if (pixels > 0) swapOne(0);
    // Each byte is picked from two places to the left, here, or two to the right, so a block needs
    // two bytes on either side.
    for (at = 3; at + kBlock + 2 <= bytes; at += kBlock)
        for (size_t i = 0; i < kBlock; i++)
            destination[at + i] = static_cast<uint8_t>((source[at + i + 2] & kMasks.first[i]) |
                                                       (source[at + i] & kMasks.middle[i]) |
                                                       (source[at + i - 2] & kMasks.last[i]));
    for (; at < bytes; at += 3)
        swapOne(at);
}

void SwapAppendOpaque(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    if (pixels == 0) return;
    Store<4>(destination, Reverse(Load<3>(source)) >> 8 | kOpaque);
    // Words from one byte before each pixel: turned round, that byte is where 0xFF goes.
    MoveWords<3, 4>(source + 2, destination + 4, pixels - 1,
                    [](uint32_t p) { return Reverse(p) | kOpaque; });
}

void SwapPrependOpaque(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    if (pixels == 0) return;
    const size_t last = pixels - 1;
    const auto change = [](uint32_t p) { return Reverse(p) | 0xFF; };
    MoveWords<3, 4>(source, destination, last, change);
    Store<4>(destination + 4 * last, change(Load<3>(source + 3 * last)));
}

void DropFourth(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    if (pixels == 0) return;
    const size_t last = pixels - 1;
    MoveWords<4, 3>(source, destination, last, [](uint32_t p) { return p; });
    Store<3>(destination + 3 * last, Load<4>(source + 4 * last));
}

void SwapDropFourth(const uint8_t* __restrict source, uint8_t* __restrict destination,
                    size_t pixels)
{
    if (pixels == 0) return;
    // From the last pixel down: a word begins one byte before its pixel.
    const auto move = [&](size_t i) {
        Store<4>(destination + 3 * i - 1, Reverse(Load<4>(source + 4 * i)));
    };
    size_t i = pixels - 1;
    for (; i >= kUnrolled; i -= kUnrolled)
        for (size_t k = 0; k < kUnrolled; k++)
            move(i - k);
    for (; i > 0; i--)
        move(i);
    Store<3>(destination, Reverse(Load<4>(source)) >> 8);
}

void ReverseDropFirst(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    if (pixels == 0) return;
    const size_t last = pixels - 1;
    MoveWords<4, 3>(source, destination, last, Reverse);
    Store<3>(destination + 3 * last, Reverse(Load<4>(source + 4 * last)));
}

void ReverseBytes(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    ReverseEach(source, destination, pixels, 0);
}

void ReverseOpaque(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    ReverseEach(source, destination, pixels, kOpaque);
}

}  // namespace kelvane
