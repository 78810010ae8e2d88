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

// Turns the frames of one source into 32-bit pictures (kBGRX32), top row first. Frames come in the
// order of time. Used by one thread at a time.
class PictureDecoder {
public:
    PictureDecoder(const MediaFormat& format, ConversionState& state)
        : fFormat(format), fState(state)
    {
    }

    // `frame` is as read from the file, `dvcpro` what the first frame of a DV source said. The
    // picture is of 4 bytes a pixel. kUndecodable when it is this frame that cannot be decoded.
    Result<> Decode(std::span<const uint8_t> frame, bool dvcpro, std::span<uint8_t> picture);

private:
    Result<> DecodeDV(std::span<const uint8_t> frame, bool dvcpro, std::span<uint8_t> picture);
    Result<> DecodeBuiltIn(std::span<const uint8_t> frame, std::span<uint8_t> picture);
    bool FindCodec();
    bool TurnsRows() const;

    const MediaFormat& fFormat;
    ConversionState& fState;
    std::unique_ptr<Codec> fCodec;     // found at the first frame
    std::vector<uint8_t> fLastOutput;  // difference frames go on from it
};

}  // namespace kelvane
