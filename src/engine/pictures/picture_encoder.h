#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "codecs/interface/codec.h"
#include "engine/pictures/conversion_state.h"
#include "format/media_format.h"

namespace kelvane {

// Turns 32-bit pictures, top row first, into frames of one destination.
class PictureEncoder {
public:
    PictureEncoder(const MediaFormat& format, bool pal, ConversionState& state);

    // Codes the picture, which may be turned upside down or packed in place on the way. `dvcpro`
    // tells which kind of DV is wanted. The frame is then in Frame().
    Result<> Encode(std::span<uint8_t> picture, bool dvcpro);
    // Makes the frame of the last picture again, without what was edited since.
    void Repeat();
    // The frame made last; may be edited in place.
    std::span<uint8_t> Frame() { return std::span(fBuffer).first(fSize); }
    // What a codec wants stored beside the frames (a bitmap header with its extension); empty when
    // there is nothing. Known after the first frame.
    std::vector<uint8_t> StreamHeader() const;

private:
    Result<> EncodeDV(std::span<uint8_t> picture, bool dvcpro);
    Result<> EncodeBuiltIn(std::span<uint8_t> picture);
    bool FindCodec();
    bool IsHuffYUV() const;

    const MediaFormat& fFormat;
    bool fPAL;
    ConversionState& fState;
    std::unique_ptr<Codec> fCodec;  // found at the first picture
    std::vector<uint8_t> fCoded;    // a DV frame as its codec made it
    std::vector<uint8_t> fBuffer;
    size_t fSize = 0;
};

}  // namespace kelvane
