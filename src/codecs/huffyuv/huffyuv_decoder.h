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

    // 0, with width * height * 3 produced for kBGR24, * 4 for all others, YUY2 too although it
    // fills half of that. -1 for a stream that is none, a frame that ends before its picture does
    // or a buffer without room for the picture.
    int Convert(const uint8_t* input, uint32_t& inputSize, uint8_t* output, uint32_t& outputSize,
                uint32_t flags) override;

private:
    int Prepare();
    int DecodeTo(std::span<const uint8_t> frame, uint8_t* output);
    void ToBottomUpRGB(uint8_t* output);

    HuffYUVFormat fStream;
    HuffYUVFrameDecoder fFrames;
    bool fUsable = false;  // as of the last preparation
};

}  // namespace kelvane
