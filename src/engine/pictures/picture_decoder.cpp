#include "engine/pictures/picture_decoder.h"

#include <algorithm>
#include <cstring>

#include "base/result.h"
#include "format/picture_layout.h"
#include "picture/packing.h"

namespace kelvane {

namespace {

constexpr char kNoDecoder[] = "No suitable decoder is found.";

}  // namespace

Result<> PictureDecoder::Decode(std::span<const uint8_t> frame, bool dvcpro,
                                std::span<uint8_t> picture)
{
    return fFormat.IsDV() ? DecodeDV(frame, dvcpro, picture) : DecodeBuiltIn(frame, picture);
}

Result<> PictureDecoder::DecodeDV(std::span<const uint8_t> frame, bool dvcpro,
                                  std::span<uint8_t> picture)
{
    DVCodecSlot& slot = fState.slots[dvcpro ? kDVCPRODecoder : kDVDecoder];
    if (dvcpro && !slot.IsOpen())
        return Failure{kNoDVCPRODecoder,
                       "No DVCPRO25 Decoder is set! Please check the Preferences."};
    const size_t pixels = PixelsOf(fFormat);
    const bool narrow = slot.PictureSpace() == kBGR24;
    if (slot.Decode(frame, picture.first(pixels * (narrow ? 3 : 4))) != kOK)
        return Failure{kUndecodable, slot.CodingError()};
    if (narrow) Rgb24ToRgb32(picture.data(), picture.data(), pixels, 0);
    return {};
}

bool PictureDecoder::FindCodec()
{
    if (fCodec) return true;
    // A depth or rows that are not read.
    if (fFormat.Space() == 0 || HasHalfPairs(fFormat)) return false;
    const MediaFormat wide = RawOfSameSize(fFormat, kBGRX32);
    const bool huffyuv = fFormat.IsCodedAs(kEncodingHuffYUV);
    const CodecRegistry& registry = fState.Registry();
    fCodec = huffyuv ? registry.FindCodec(fFormat, wide)
                     : registry.FindCodecEither(fFormat, wide, RawOfSameSize(fFormat, kBGR24));
    return fCodec != nullptr;
}

// Bottom row first: raw pictures by their colour space, HuffYUV always, animation never.
bool PictureDecoder::TurnsRows() const
{
    if (fFormat.kind == kRawVideo) return !IsTopRowFirst(fFormat.Space());
    return fFormat.IsCodedAs(kEncodingHuffYUV);
}

Result<> PictureDecoder::DecodeBuiltIn(std::span<const uint8_t> frame, std::span<uint8_t> picture)
{
    if (!FindCodec()) return Failure{kError, kNoDecoder};
    const size_t pixels = PixelsOf(fFormat);
    const bool narrow = fCodec->OutputFormat().Space() == kBGR24;
    fLastOutput.resize(pixels * 4);
    if (!fCodec->Convert(frame, fLastOutput)) return Failure{kUndecodable, kNoDecoder};
    std::ranges::copy(fLastOutput, picture.begin());
    if (narrow) Rgb24ToRgb32(picture.data(), picture.data(), pixels, 0);
    if (TurnsRows())
        SwapVertical(picture.data(), static_cast<size_t>(fFormat.Width()) * 4, fFormat.Height());
    return {};
}

}  // namespace kelvane
