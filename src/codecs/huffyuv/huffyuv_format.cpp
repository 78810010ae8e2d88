#include "codecs/huffyuv/huffyuv_format.h"

#include <algorithm>

#include "base/status.h"
#include "codecs/huffyuv/huffyuv_tables.h"

namespace kelvane {

namespace {

constexpr size_t kTallestField = 288;      // lines
constexpr size_t kTextAt = 4;              // bytes of the extension in front of the table text
constexpr size_t kBitCountSize = 2;        // bytes, private data of a stream without extension
constexpr uint8_t kTablesInFrames = 0x40;  // in byte 2 of the extension
constexpr int kMethodBits = 7;             // of the bit count

// Later writers than 2.1.1 state the row step in byte 2 of the extension.
size_t StatedRowStep(uint8_t flags, size_t height)
{
    switch (flags >> 4 & 3) {
        case 1:
            return 2;
        case 2:
            return 1;
        default:
            return HuffYUVRowStep(height);
    }
}

uint8_t MethodOfBitCount(uint16_t bitCount, int kind)
{
    switch (bitCount & kMethodBits) {
        case 2:
            return kLeftDecorrelated;
        case 3:
            return kind < 24 ? kGradient : kGradientDecorrelated;
        case 4:
            return kMedian;
        default:
            return kLeft;  // stated, or not stated at all
    }
}

Status ReadTables(std::span<const uint8_t> text, HuffYUVFormat& format)
{
    ByteReader reader(text, ByteOrder::kLittle);
    for (HuffmanCode& plane : format.planes)
        if (ReadLengths(reader, plane) != kOK || AssignCodes(plane) != kOK) return kError;
    return kOK;
}

Status UseClassicTables(HuffYUVFormat& format)
{
    for (size_t plane = 0; plane < format.planes.size(); plane++) {
        HuffmanCode& code = format.planes[plane];
        const ClassicTable table = HuffYUVClassicTable(format.kind, static_cast<int>(plane));
        ByteReader reader(table.lengths, ByteOrder::kLittle);
        if (ReadLengths(reader, code) != kOK) return kError;
        for (size_t symbol = 0; symbol < kSymbols; symbol++)
            code.code[symbol] = uint32_t{table.codes[symbol]} << (32 - code.length[symbol]);
    }
    return kOK;
}

}  // namespace

size_t HuffYUVRowStep(size_t height)
{
    return height > kTallestField ? 2 : 1;
}

Status ReadHuffYUVFormat(const BitmapHeader& header, std::span<const uint8_t> extension,
                         HuffYUVFormat& format)
{
    if (header.width <= 0 || header.height <= 0) return kError;
    if (!extension.empty() && extension.size() < kTextAt) return kError;
    format.width = static_cast<uint32_t>(header.width);
    format.height = static_cast<uint32_t>(header.height);
    const bool stated = !extension.empty() && extension[1] != 0;
    format.kind = (stated ? extension[1] : header.bit_count) & ~kMethodBits;

    const bool classic = extension.empty() || (header.bit_count & kMethodBits) != 0;
    format.method = classic ? MethodOfBitCount(header.bit_count, format.kind) : extension[0];
    if (HuffYUVTableText(format.kind, format.method).empty()) return kError;
    if (format.kind == 16 && format.width % 2 != 0) return kError;

    if (classic) {
        format.row_step = HuffYUVRowStep(format.height);
        return UseClassicTables(format);
    }
    if (extension[2] & kTablesInFrames || extension[3] != 0) return kError;
    format.row_step = StatedRowStep(extension[2], format.height);
    return ReadTables(extension.subspan(kTextAt), format);
}

Bytes MakeHuffYUVExtension(int kind, uint8_t method)
{
    Bytes extension = {method, static_cast<uint8_t>(kind), 0, 0};
    const auto text = HuffYUVTableText(kind, method);
    extension.insert(extension.end(), text.begin(), text.end());
    extension.resize((extension.size() + 3) / 4 * 4);
    return extension;
}

Bytes HuffYUVPrivateData(const BitmapHeader& header, std::span<const uint8_t> extension)
{
    Bytes data(kBitCountSize);
    if (extension.empty()) {
        StoreBytes(data, header.bit_count, ByteOrder::kLittle);
        return data;
    }
    data.assign(extension.begin(), extension.end());
    // A cut extension stays an extension, so that it is refused.
    data.resize(std::max(data.size(), kTextAt));
    return data;
}

std::span<const uint8_t> HuffYUVHeaderOf(const MediaFormat& format, BitmapHeader& header)
{
    ToBitmapHeaderEncoded(format, header);
    const EncodedVideoFormat& view = format.encoded_video;
    if (!view.private_data) return {};
    const std::span<const uint8_t> data(view.private_data, view.private_size);
    if (data.size() != kBitCountSize) return data;
    header.bit_count = static_cast<uint16_t>(LoadBytes(data, ByteOrder::kLittle));
    return {};
}

}  // namespace kelvane
