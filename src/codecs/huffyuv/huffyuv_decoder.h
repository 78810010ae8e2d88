#pragma once

#include "codecs/huffyuv/huffyuv_format.h"
#include "codecs/huffyuv/huffyuv_frame_decoder.h"
#include "codecs/interface/frame_codec.h"

namespace kelvane {

// Decodes HuffYUV frames. The input format's private data hold the header extension of the stream
// (see HuffYUVPrivateData). RGB pictures come out bottom row first, YUY2 top row first; a fourth
// byte that the stream does not have is 0.
class HuffYUVDecoder : public FrameCodec {
public:
    HuffYUVDecoder() : FrameCodec(Descriptor()) {}
    static const CodecDescriptor& Descriptor();

    // The bytes of the picture; nothing for a stream that is none, a frame that ends before its
    // picture does or a buffer without room for the picture.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;

private:
    Status Prepare();
    Status DecodeTo(std::span<const uint8_t> frame, uint8_t* output);
    void ToBottomUpRGB(uint8_t* output);

    HuffYUVFormat fStream;
    HuffYUVFrameDecoder fFrames;
    bool fDirect = false;  // the picture is of the stream's own kind
    Bytes fStored;         // else: a picture of that kind, and what comes between it and the output
    bool fUsable = false;  // as of the last preparation
};

}  // namespace kelvane
