#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/huffyuv/bit_window.h"
#include "codecs/huffyuv/huffman_lookup.h"
#include "codecs/huffyuv/huffyuv_format.h"

namespace kelvane {

// Turns frames of one HuffYUV stream into pictures with the stream's own order of rows: top row
// first in kind 16, bottom row first in kinds 24 and 32.
class HuffYUVFrameDecoder {
public:
    HuffYUVFrameDecoder() = default;
    HuffYUVFrameDecoder(const HuffYUVFrameDecoder&) = delete;
    HuffYUVFrameDecoder& operator=(const HuffYUVFrameDecoder&) = delete;

    // `format` as ReadHuffYUVFormat gave it.
    void Prepare(const HuffYUVFormat& format);

    // Pixels of `pixelBytes` bytes: 2 (YUY2) for kind 16; 3 or 4 for the others, which drops the
    // fourth byte or makes it 0 where the kind differs. The picture has width * height pixels.
    // kError when the frame ends before the picture does; what was decoded up to there is in the
    // picture.
    Status Decode(std::span<const uint8_t> frame, uint8_t* picture, size_t pixelBytes);

private:
    void CopyInStreamOrder(std::span<const uint8_t> frame);
    template <class DecodeRow>
    Status DecodeRows(uint8_t* picture, size_t rowBytes, size_t first, DecodeRow decodeRow);
    Status DecodeYUV(uint8_t* picture);
    template <bool kDecorrelated, size_t kFrom, size_t kTo>
    Status DecodeRGB(const uint8_t* pixel, uint8_t* picture);
    template <bool kDecorrelated>
    Status DecodeRGB(const uint8_t* pixel, uint8_t* picture, size_t to);

    HuffYUVFormat fFormat;
    std::array<HuffmanLookup, 3> fPlanes;
    // The symbols of a group in their order: Y U Y V, or B G R A, or G, B - G, R - G, A.
    PairLookup fFirstPair;
    PairLookup fSecondPair;  // not in kind 24
    size_t fThird = 0;       // plane of the third symbol of kind 24
    Bytes fStream;           // the codes of a frame, first bit first, and zeros to run into
    int64_t fStreamBits = 0;
};

}  // namespace kelvane
