#include "engine/pictures/picture_encoder.h"

#include <algorithm>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "base/television.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
#include "format/picture_layout.h"
#include "picture/packing.h"

namespace kelvane {

PictureEncoder::PictureEncoder(const MediaFormat& format, bool pal, ConversionState& state)
    : fFormat(format), fPAL(pal), fState(state)
{
}

Status PictureEncoder::Fail(Status status, std::string message)
{
    fMessage = std::move(message);
    return status;
}

bool PictureEncoder::IsHuffYUV() const
{
    return fFormat.kind == kEncodedVideo && fFormat.encoded_video.encoding == kEncodingHuffYUV;
}

Status PictureEncoder::Encode(std::span<uint8_t> picture, bool dvcpro)
{
    fBuffer.resize(LargestFrame(fFormat));
    return fFormat.IsDV() ? EncodeDV(picture, dvcpro) : EncodeBuiltIn(picture);
}

Status PictureEncoder::EncodeDV(std::span<uint8_t> picture, bool dvcpro)
{
    DVCodecSlot& slot = fState.slots[dvcpro ? kDVCPROEncoder : kDVEncoder];
    if (dvcpro && !slot.IsOpen())
        return Fail(kNoDVCPROEncoder, "No DVCPRO25 Encoder is set! Please check the Preferences.");
    const TelevisionSystem& system = SystemFor(fPAL);
    const size_t pixels = static_cast<size_t>(system.width) * static_cast<size_t>(system.height);
    if (slot.PictureSpace() == kBGR24) Rgb32ToRgb24(picture.data(), picture.data(), pixels);
    fSize = static_cast<size_t>(system.dv_frame_size);
    fCoded.resize(fSize);
    if (slot.Encode(picture, fCoded) != kOK) return Fail(kError, slot.CodingError());
    Repeat();
    return kOK;
}

void PictureEncoder::Repeat()
{
    if (fFormat.IsDV()) std::ranges::copy(fCoded, fBuffer.begin());
}

bool PictureEncoder::FindCodec()
{
    if (fCodec) return true;
    const CodecRegistry& registry = fState.Registry();
    // HuffYUV is coded from 24 bits alone.
    if (!IsHuffYUV()) fCodec = registry.FindCodec(RawOfSameSize(fFormat, kBGRX32), fFormat);
    if (!fCodec) fCodec = registry.FindCodec(RawOfSameSize(fFormat, kBGR24), fFormat);
    return fCodec != nullptr;
}

Status PictureEncoder::EncodeBuiltIn(std::span<uint8_t> picture)
{
    if (!FindCodec()) return Fail(kError, "No suitable encoder is found.");
    const size_t pixels = PixelsOf(fFormat);
    const bool turns = fFormat.kind == kRawVideo ? !IsTopRowFirst(fFormat.Space()) : IsHuffYUV();
    if (turns)
        SwapVertical(picture.data(), static_cast<size_t>(fFormat.Width()) * 4, fFormat.Height());
    const bool narrow = fCodec->InputFormat().Space() == kBGR24;
    if (narrow) Rgb32ToRgb24(picture.data(), picture.data(), pixels);
    // A failed picture passes for a good one: its frame is written without a byte.
    fSize = fCodec->Convert(picture.first(pixels * (narrow ? 3 : 4)), fBuffer).value_or(0);
    return kOK;
}

std::vector<uint8_t> PictureEncoder::StreamHeader() const
{
    Bytes block;
    if (!fCodec || !IsHuffYUV()) return block;
    const MediaFormat& format = fCodec->OutputFormat();
    BitmapHeader header;
    ToHuffYUVHeader(format, header);
    ByteWriter writer(block, ByteOrder::kLittle);
    writer.Put32(header.size);
    writer.Put32(static_cast<uint32_t>(header.width));
    writer.Put32(static_cast<uint32_t>(header.height));
    writer.Put16(header.planes);
    writer.Put16(header.bit_count);
    writer.PutCode(header.compression);
    writer.Put32(header.size_image);
    writer.Put32(static_cast<uint32_t>(header.x_pels_per_meter));
    writer.Put32(static_cast<uint32_t>(header.y_pels_per_meter));
    writer.Put32(header.clr_used);
    writer.Put32(header.clr_important);
    const EncodedVideoFormat& view = format.encoded_video;
    writer.PutBytes({view.private_data, view.private_size});
    return block;
}

}  // namespace kelvane
