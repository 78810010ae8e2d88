#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/byte_cursor.h"
#include "codecs/huffyuv/bit_writer.h"
#include "codecs/huffyuv/huffyuv_format.h"

namespace kelvane {

// Turns pictures in a stream's own layout (YUY2 top row first; BGR or BGRA bottom row first) into
// HuffYUV frames.
class HuffYUVFrameEncoder {
public:
    // `format` as ReadHuffYUVFormat gave it.
    void Prepare(const HuffYUVFormat& format);

    // The size of the frame; nothing when it does not fit in `room`. Noise can take up to 12 bytes
    // a pixel.
    [[nodiscard]] std::optional<size_t> Encode(const uint8_t* picture, std::span<uint8_t> room);

private:
    struct Code {
        uint64_t bits;  // left-aligned
        unsigned length;
    };
    using Codes = std::array<Code, kSymbols>;

    static void PutPair(WordBitWriter& writer, const Code& a, const Code& b);
    void FindResidues(const uint8_t* picture, size_t begin, size_t end);
    void FindMedianResidues(const uint8_t* picture, size_t begin, size_t end);
    void PutYUV(size_t bytes);
    template <bool kDecorrelated, size_t kPixel>
    void PutRGB(size_t bytes);
    void PutRow(size_t bytes);

    HuffYUVFormat fFormat;
    std::array<Codes, 3> fPlanes{};
    WordBitWriter fWriter;
    // All of one row. A frame is put together row by row in fWords, which has room for the longest
    // codes, so that the codes themselves need no look at the room that is left.
    Bytes fRow;  // what is coded with left differences, the samples before it in front
    Bytes fLeft;
    Bytes fCorner;
    Bytes fResidues;
    Bytes fWords;
};

}  // namespace kelvane
