#pragma once

#include "codecs/interface/frame_codec.h"

namespace kelvane {

// Decodes QuickTime Animation frames of depth 24 or 32 over the picture in the output buffer:
// pixels and lines that a frame does not name keep what they held, which is how a difference frame
// works. Top line first; the stream's alpha is dropped, the fourth byte of a pixel becomes 0xFF.
class QTRLEDecoder : public FrameCodec {
public:
    QTRLEDecoder() : FrameCodec(Descriptor()) {}
    static const CodecDescriptor& Descriptor();

    // The bytes of the whole picture; nothing for a frame below 4 bytes, another depth, a buffer
    // without room for the picture, or data that end inside a line or leave it backwards: what they
    // do not reach is left as it was. A run is cut at the end of its line.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;
};

}  // namespace kelvane
