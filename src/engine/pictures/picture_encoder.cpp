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
    return fFormat.IsCodedAs(kEncodingHuffYUV);
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
    auto in = static_cast<uint32_t>(pixels * (narrow ? 3 : 4));
    auto out = static_cast<uint32_t>(fBuffer.size());
    static_cast<void>(fCodec->Convert(picture.data(), in, fBuffer.data(), out, 0));
    fSize = out;
    return kOK;
}

std::vector<uint8_t> PictureEncoder::StreamHeader() const
{
    Bytes block;
    if (!fCodec || !IsHuffYUV()) return block;
    const MediaFormat& format = fCodec->OutputFormat();
    BitmapHeader header;
    ToHuffYUVHeader(format, header);
    block.resize(kBitmapInfo.Size());
    StoreBitmapHeader(header, block);
    const EncodedVideoFormat& view = format.encoded_video;
    block.insert(block.end(), view.private_data, view.private_data + view.private_size);
    return block;
}

}  // namespace kelvane
