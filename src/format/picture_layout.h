#pragma once

#include <cstddef>

#include "format/media_format.h"

namespace kelvane {

inline constexpr size_t kBytesOf32Bits = 4;

// Pixels of one picture of a video format.
inline size_t PixelsOf(const MediaFormat& format)
{
    return static_cast<size_t>(format.Width()) * static_cast<size_t>(format.Height());
}

// False for sizes that no picture has: the header is damaged, and must not cost memory.
inline bool HasPlausibleSize(const MediaFormat& format)
{
    constexpr int32_t kMostEdge = 8192;
    constexpr size_t kMostPixels = 4096 * 2304;
    return format.Width() > 0 && format.Height() > 0 && format.Width() <= kMostEdge &&
           format.Height() <= kMostEdge && PixelsOf(format) <= kMostPixels;
}

// Most bytes that one frame as stored can have: HuffYUV codes can exceed the raw picture.
inline size_t LargestFrame(const MediaFormat& format)
{
    constexpr size_t kLeast = 720 * 576 * 4;
    const bool huffyuv =
        format.kind == kEncodedVideo && format.encoded_video.encoding == kEncodingHuffYUV;
    const size_t most = PixelsOf(format) * (huffyuv ? 12 : 5) + 65536;
    return most > kLeast ? most : kLeast;
}

// Bytes that the pixels of one raw picture take, without padding of its rows; 0 for coded pictures
// and for colour spaces that no codec reads.
inline size_t BytesOfRawPicture(const MediaFormat& format)
{
    if (format.kind != kRawVideo) return 0;
    switch (format.Space()) {
        case kBGR24:
        case kRGB24:
        case kVYU24:
            return PixelsOf(format) * 3;
        case kRGBX32:
        case kBGRX32:
        case kBGRA32:
            return PixelsOf(format) * kBytesOf32Bits;
        case kYUY2:
        case kUYVY:
        case kYUVSigned:
            return PixelsOf(format) * 2;
        default:
            return 0;
    }
}

// Two pixels of a 4:2:2 row share their chroma. Where one is left over at its end, files have
// layouts of several kinds: such pictures are neither read nor written.
inline bool HasHalfPairs(const MediaFormat& format)
{
    const uint32_t space = format.Space();
    const bool paired = space == kYUY2 || space == kUYVY || space == kYUVSigned;
    return format.kind == kRawVideo && paired && format.Width() % 2 != 0;
}

// A raw format of the same size and rate in another colour space.
inline MediaFormat RawOfSameSize(const MediaFormat& format, ColourSpace space)
{
    return MediaFormat(
        RawVideoFormat{space, format.Width(), format.Height(), format.FrameRate(), 1, 0});
}

// Pictures in the other colour spaces have their bottom row first in files and codecs.
inline bool IsTopRowFirst(uint32_t space)
{
    return space == kRGB24 || space == kRGBX32 || space == kYUY2 || space == kUYVY ||
           space == kYUVSigned;
}

}  // namespace kelvane
