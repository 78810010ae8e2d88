#include "engine/pictures/picture_encoder.h"

#include <algorithm>

#include "base/byte_cursor.h"
#include "base/result.h"
#include "base/television.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
#include "format/picture_layout.h"
#include "picture/packing.h"

namespace kelvane {

namespace {

constexpr char kNoEncoder[] = "No suitable encoder is found.";

}  // namespace

PictureEncoder::PictureEncoder(const MediaFormat& format, bool pal, ConversionState& state)
    : fFormat(format), fPAL(pal), fState(state)
{
}

bool PictureEncoder::IsHuffYUV() const
{
    return fFormat.IsCodedAs(kEncodingHuffYUV);
}

Result<> PictureEncoder::Encode(std::span<uint8_t> picture, bool dvcpro)
{
    fBuffer.resize(LargestFrame(fFormat));
    return fFormat.IsDV() ? EncodeDV(picture, dvcpro) : EncodeBuiltIn(picture);
}

Result<> PictureEncoder::EncodeDV(std::span<uint8_t> picture, bool dvcpro)
{
    DVCodecSlot& slot = fState.slots[dvcpro ? kDVCPROEncoder : kDVEncoder];
    if (dvcpro && !slot.IsOpen())
        return Failure{kNoDVCPROEncoder,
                       "No DVCPRO25 Encoder is set! Please check the Preferences."};
    const TelevisionSystem& system = SystemFor(fPAL);
    const size_t pixels = static_cast<size_t>(system.width) * static_cast<size_t>(system.height);
    if (slot.PictureSpace() == kBGR24) Rgb32ToRgb24(picture.data(), picture.data(), pixels);
    fSize = static_cast<size_t>(system.dv_frame_size);
    fCoded.resize(fSize);
    if (slot.Encode(picture, fCoded) != kOK) return Failure{kError, slot.CodingError()};
    Repeat();
    return {};
}

void PictureEncoder::Repeat()
{
    if (fFormat.IsDV()) std::ranges::copy(fCoded, fBuffer.begin());
}

bool PictureEncoder::FindCodec()
{
    if (fCodec) return true;
    if (HasHalfPairs(fFormat)) return false;
    const CodecRegistry& registry = fState.Registry();
    // HuffYUV is coded from 24 bits alone.
    if (!IsHuffYUV()) fCodec = registry.FindCodec(RawOfSameSize(fFormat, kBGRX32), fFormat);
    if (!fCodec) fCodec = registry.FindCodec(RawOfSameSize(fFormat, kBGR24), fFormat);
    return fCodec != nullptr;
}

Result<> PictureEncoder::EncodeBuiltIn(std::span<uint8_t> picture)
{
    if (!FindCodec()) return Failure{kError, kNoEncoder};
    const size_t pixels = PixelsOf(fFormat);
    const bool turns = fFormat.kind == kRawVideo ? !IsTopRowFirst(fFormat.Space()) : IsHuffYUV();
    if (turns)
        SwapVertical(picture.data(), static_cast<size_t>(fFormat.Width()) * 4, fFormat.Height());
    const bool narrow = fCodec->InputFormat().Space() == kBGR24;
    // Pixels are packed by fours; behind the picture there is room.
    if (narrow) Rgb32ToRgb24(picture.data(), picture.data(), (pixels + 3) & ~size_t{3});
    const auto made = fCodec->Convert(picture.first(pixels * (narrow ? 3 : 4)), fBuffer);
    if (!made) return Failure{kError, kNoEncoder};
    fSize = *made;
    return {};
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
