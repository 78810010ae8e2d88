// A header (bit count, size, extension) and a frame behind it, decoded to one of the layouts. Each
// buffer has just the bytes that it claims.

#include <algorithm>
#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/huffyuv/huffyuv_decoder.h"

namespace kelvane {
namespace {

void DecodeTo(uint32_t space, const MediaFormat& encoded, std::span<const uint8_t> bytes)
{
    HuffYUVDecoder decoder;
    MediaFormat raw(RawVideoFormat{space, encoded.Width(), encoded.Height(), 25.0f, 0, 0});
    if (decoder.SetFormats(encoded, raw) != kOK) return;
    const Bytes frame(bytes.begin(), bytes.end());
    const size_t pixel = space == kYUY2 ? 2 : space == kBGR24 ? 3 : 4;
    Bytes picture(static_cast<size_t>(raw.Width() * raw.Height()) * pixel);
    static_cast<void>(decoder.Convert(frame, picture));
}

}  // namespace
}  // namespace kelvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvane;
    ByteReader in({data, size}, ByteOrder::kLittle);
    BitmapHeader header;
    header.bit_count = in.Get8();
    const uint8_t space = in.Get8();
    header.width = in.Get8() % 40;
    header.height = in.Get16() % 320;
    const uint8_t method = in.Get8();
    constexpr uint32_t kLayouts[] = {kYUY2, kBGR24, kBGRX32, kBGRA32};
    const uint32_t to = kLayouts[in.Get8() % 4];
    const auto stated = in.Take(std::min<size_t>(in.Get8(), in.Left()));
    const auto frame = in.Take(in.Left());

    // Complete codes are hard to come by: mostly the published ones.
    const Bytes extension = header.bit_count & 0x80 ? Bytes(stated.begin(), stated.end())
                                                    : MakeHuffYUVExtension(space & 0x30, method);
    const bool classic = (header.bit_count & 0x40) != 0;
    const Bytes data_of_stream =
        HuffYUVPrivateData(header, classic ? std::span<const uint8_t>() : extension);
    EncodedVideoFormat view{};
    view.cspace = space;
    view.w = header.width;
    view.h = header.height;
    view.encoding = kEncodingHuffYUV;
    view.private_data = data_of_stream.data();
    view.private_size = static_cast<uint32_t>(data_of_stream.size());
    DecodeTo(to, MediaFormat(view), frame);
    return 0;
}
