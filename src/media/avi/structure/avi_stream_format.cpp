#include "media/avi/structure/avi_stream_format.h"

#include <cstdlib>

#include "base/four_cc.h"
#include "media/avi/structure/avi_codecs.h"
#include "media/riff/wave_format.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr size_t kSmallestHuffYUVExtension = 4;  // bytes in front of the tables

MediaFormat AudioFormatOf(const AVIStream& stream)
{
    return MediaFormat(LoadWaveFormat(BodyOf(stream.format)));
}

float RateOf(const AVIStream& stream)
{
    const double scale = Get32(stream.header, kStreamHeader["dwScale"]);
    const double rate = Get32(stream.header, kStreamHeader["dwRate"]);
    return scale > 0 ? static_cast<float>(rate / scale) : 0.0f;
}

BitmapHeader BitmapOf(const AVIStream& stream)
{
    return LoadBitmapHeader(BodyOf(stream.format));
}

// A negative height says that the top row comes first.
int32_t HeightOf(const BitmapHeader& header)
{
    return static_cast<int32_t>(std::abs(int64_t{header.height}) & 0x7FFFFFFF);
}

// HuffYUV keeps a method in the low three bits.
uint32_t BitsOf(const BitmapHeader& header)
{
    return header.bit_count & ~7u;
}

MediaFormat RawFormatOf(const AVIStream& stream, uint32_t cspace)
{
    const BitmapHeader header = BitmapOf(stream);
    RawVideoFormat view{};
    view.cspace = cspace;
    view.width = header.width;
    view.height = HeightOf(header);
    view.frate = RateOf(stream);
    return MediaFormat(view);
}

// What stands behind the header. Of a HuffYUV stream without tables of its own the header's bit
// count, which says more than a colour space can.
void SetPrivateData(const AVIStream& stream, const BitmapHeader& header, EncodedVideoFormat& view)
{
    const std::span<const uint8_t> block = BodyOf(stream.format);
    if (block.size() < kBitmapInfo.Size()) return;
    std::span<const uint8_t> data = block.subspan(kBitmapInfo.Size());
    const bool classic =
        data.size() < kSmallestHuffYUVExtension || header.bit_count != BitsOf(header);
    const HeaderField& bits = kBitmapInfo["biBitCount"];
    if (view.encoding == kEncodingHuffYUV && classic) data = block.subspan(bits.at, bits.bytes);
    if (data.empty()) return;
    view.private_size = static_cast<uint32_t>(data.size());
    view.private_data = data.data();
}

MediaFormat EncodedFormatOf(const AVIStream& stream, uint32_t encoding, uint32_t cspace)
{
    const BitmapHeader header = BitmapOf(stream);
    EncodedVideoFormat view{};
    view.cspace = cspace;
    view.w = header.width;
    view.h = HeightOf(header);
    view.frate = RateOf(stream);
    view.encoding = encoding;
    view.codec = header.compression;
    view.framesize = -1;  // varies
    if (MediaFormat(view).IsDV25()) {
        const EncodedVideoFormat dv = DVFormat(stream.IsPAL()).encoded_video;
        view.ilace = dv.ilace;
        view.bitrate = dv.bitrate;
        view.framesize = dv.framesize;
    }
    SetPrivateData(stream, header, view);
    return MediaFormat(view);
}

uint32_t EncodingOf(uint32_t compression)
{
    if (compression == "dv25"_4cc || compression == "DV25"_4cc) return kEncodingDVCPRO25;
    if (compression == "dv50"_4cc || compression == "DV50"_4cc) return kEncodingDVCPRO50;
    if (IsDVHandler(compression)) return kEncodingDV;
    switch (compression) {
        case "HFYU"_4cc:
        case "hfyu"_4cc:
            return kEncodingHuffYUV;
        case "MJPG"_4cc:
        case "mjpg"_4cc:
            return kEncodingMJPEG;
        case "CVID"_4cc:
        case "cvid"_4cc:
            return kEncodingCinepak;
        default:
            return kEncodingUnknown;
    }
}

MediaFormat VideoFormatOf(const AVIStream& stream)
{
    const BitmapHeader header = BitmapOf(stream);
    const uint32_t compression = header.compression;
    switch (compression) {
        case "UYVY"_4cc:
            return RawFormatOf(stream, kUYVY);
        case "YUY2"_4cc:
            return RawFormatOf(stream, kYUY2);
        case 0:
        case "DIB "_4cc:
        case "RAW "_4cc:
        case "RGB "_4cc:
            if (BitsOf(header) == 24) return RawFormatOf(stream, kBGR24);
            if (BitsOf(header) == 32) return RawFormatOf(stream, kBGRX32);
            return {};  // palettes and 16 bits are read by no codec
        case "RGBA"_4cc:
        case "ABGR"_4cc:
            return RawFormatOf(stream, kBGRA32);
        default:
            break;
    }
    const uint32_t encoding = EncodingOf(compression);
    uint32_t cspace = kBGR24;
    if (encoding == kEncodingHuffYUV)
        cspace = BitsOf(header) == 24 ? kBGR24 : BitsOf(header) == 32 ? kBGRX32 : kYUY2;
    return EncodedFormatOf(stream, encoding, cspace);
}

}  // namespace

MediaFormat FormatOfStream(const AVIStream& stream)
{
    if (stream.IsAudio()) return AudioFormatOf(stream);
    if (stream.IsVideo()) return VideoFormatOf(stream);
    if (stream.IsInterleaved() && IsDVHandler(stream.Handler())) return DVFormat(stream.IsPAL());
    return {};
}

MediaFormat SizeOfStream(const AVIStream& stream)
{
    return RawFormatOf(stream, 0);
}

}  // namespace kelvane
