#pragma once

#include <cstdint>
#include <memory>

#include "platform/codec_modules/codec_module.h"
#include "platform/codec_modules/libav/dv_planes.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace kelvane {

struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using ContextPtr = std::unique_ptr<AVCodecContext, FreeContext>;
using FramePtr = std::unique_ptr<AVFrame, FreeFrame>;
using PacketPtr = std::unique_ptr<AVPacket, FreePacket>;

// One kind of 25 Mbit/s DV frame.
struct DVKind {
    PictureLayout layout;
    AVPixelFormat pixels;
    AVRational tick;  // seconds a frame
    uint32_t size;    // bytes of a frame
    bool dvcpro;      // application id 1 in the header blocks, else 0
};

// The kind that a setup asks for; null when there is none of its size, depth and coding.
const DVKind* FindDVKind(const CodecSetup& setup);

// Turns pictures into DV frames. The bytes are the same on every run and processor.
class LibavDVEncoder {
public:
    [[nodiscard]] int Open(const CodecSetup& setup);
    [[nodiscard]] int Encode(const uint8_t* picture, uint8_t* frame, uint32_t* bytes);

private:
    const DVKind* fKind = nullptr;
    size_t fPixelBytes = 4;
    ContextPtr fContext;
    FramePtr fFrame;
    PacketPtr fPacket;
};

// Turns DV frames into pictures. Follows each frame's own header for DV or DVCPRO; a frame of
// another television system or size, or one that is no DV at all, is refused.
class LibavDVDecoder {
public:
    [[nodiscard]] int Open(const CodecSetup& setup);
    [[nodiscard]] int Decode(const uint8_t* frame, uint32_t bytes, uint8_t* picture,
                             uint32_t pictureBytes);

private:
    const DVKind* fKind = nullptr;
    size_t fPixelBytes = 4;
    ContextPtr fContext;
    FramePtr fFrame;
    PacketPtr fPacket;
};

}  // namespace kelvane
