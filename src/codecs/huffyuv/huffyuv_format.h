#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/huffyuv/huffman_code.h"
#include "format/bitmap_header.h"
#include "format/media_format.h"

namespace kelvane {

// What a reader or writer of HuffYUV has to know of a stream. Its header is a bitmap header and,
// mostly, an extension behind it: method, kind, row step, 0, table text padded to 4 bytes.
struct HuffYUVFormat {
    size_t width = 0;
    size_t height = 0;
    int kind = 0;         // bits of a stored pixel: 16 (Y U Y V), 24 (B G R) or 32 (B G R A)
    uint8_t method = 0;   // HuffYUVMethod
    size_t row_step = 1;  // rows up to the one that predicts; 2 keeps two fields apart
    std::array<HuffmanCode, 3> planes;

    size_t PixelBytes() const { return static_cast<size_t>(kind) / 8; }
    size_t RowBytes() const { return width * PixelBytes(); }
};

// 2 for pictures of more than 288 lines, which are taken as two fields, else 1.
size_t HuffYUVRowStep(size_t height);

// Reads the header of a stream and the extension, if any, behind it. Without an extension, or when
// the low three bits of the bit count are set, these bits tell the method and the tables are the
// classic ones. kError for kinds, methods and tables that are none.
Status ReadHuffYUVFormat(const BitmapHeader& header, std::span<const uint8_t> extension,
                         HuffYUVFormat& format);

// The extension that goes with a kind and a method that exist, row step by height.
Bytes MakeHuffYUVExtension(int kind, uint8_t method);

// The private data of a MediaFormat that stand for a stream's header: its extension or, for a
// header without one, the two bytes of its bit count, which says more than a colour space can.
Bytes HuffYUVPrivateData(const BitmapHeader& header, std::span<const uint8_t> extension);
// The other way: fills a header from an encoded format and gives the extension, which lies in the
// format's private data.
std::span<const uint8_t> HuffYUVHeaderOf(const MediaFormat& format, BitmapHeader& header);

}  // namespace kelvane
