#pragma once

#include "codecs/interface/frame_codec.h"

namespace kelvane {

// Writes pictures as QuickTime Animation key frames of literal runs only: valid everywhere, not
// compressed at all. Top line first. Depth 32 stores the fourth byte of a pixel as alpha, 255 for
// pictures of three bytes a pixel.
class QTRLEEncoder : public FrameCodec {
public:
    QTRLEEncoder() : FrameCodec(Descriptor()) {}
    static const CodecDescriptor& Descriptor();

    // The size of the frame; nothing for another depth, a picture of more than 65535
    // lines, a short input or a buffer without room for the frame.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;
};

}  // namespace kelvane
