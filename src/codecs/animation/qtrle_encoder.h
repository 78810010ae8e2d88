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

    // 0, with the size of the frame produced; -1 for another depth, a picture of more than 65535
    // lines, a short input or a buffer without room for the frame.
    int Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output, uint32_t& outputSize,
                uint32_t flags) override;
};

}  // namespace kelvane
