#pragma once

#include "codecs/huffyuv/huffyuv_format.h"
#include "codecs/huffyuv/huffyuv_frame_encoder.h"
#include "codecs/interface/frame_codec.h"
#include "format/bitmap_header.h"

namespace kelvane {

// Writes HuffYUV frames: the median method for YUV, the decorrelated gradient method for RGB, each
// with the published tables. RGB pictures come bottom row first, YUY2 and UYVY top row first. RGB
// is stored as YUV when the output format's colour space is none of RGB.
class HuffYUVEncoder : public FrameCodec {
public:
    HuffYUVEncoder() : FrameCodec(Descriptor()) {}
    static const CodecDescriptor& Descriptor();

    // The size of the frame; nothing for a picture that the format cannot hold (an odd width of
    // YUV), a short input or a buffer without room for the frame, up to 12 bytes a pixel.
    // From the first call on the output format names the header extension as its private data.
    std::optional<size_t> Convert(std::span<const uint8_t> input,
                                  std::span<uint8_t> output) override;

private:
    Status Prepare();
    const uint8_t* InStreamLayout(const uint8_t* input);

    HuffYUVFormat fStream;
    HuffYUVFrameEncoder fFrames;
    Bytes fExtension;
    bool fDirect = false;  // pictures are of the stream's own kind
    Bytes fStored;         // else: the picture, brought to it
    bool fUsable = false;  // as of the last preparation
};

// The bitmap header to store with frames of the encoder, whose output format this is: its extension
// counted, and at least 24 bits a pixel. The extension follows it in the file.
void ToHuffYUVHeader(const MediaFormat& format, BitmapHeader& header);

}  // namespace kelvane
