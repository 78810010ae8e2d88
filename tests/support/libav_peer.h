#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <utility>

#include "base/byte_cursor.h"
#include "codecs/media_format.h"

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace kelvane {

// libavcodec's codecs as peers: an independent coder and decoder of the same formats, one thread.
// Pictures are in the layouts kYUY2, kBGR24 and kBGRA32, top row first.

struct LibavDeleter {
    void operator()(AVCodecContext* context) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
};
template <class T>
using LibavHandle = std::unique_ptr<T, LibavDeleter>;

// What a container says of a stream.
struct PeerStream {
    const char* codec;  // by libavcodec's name
    int width, height;
    int bits;  // a pixel, as in the sample description
    Bytes extension;
};

class PeerEncoder {
public:
    using Options = std::initializer_list<std::pair<const char*, const char*>>;

    // Throws std::runtime_error when the codec does not take this.
    PeerEncoder(const char* codec, uint32_t space, int width, int height, Options options = {});

    void SetPicture(std::span<const uint8_t> picture);
    // Codes the picture; the frame lives until the next call.
    std::span<const uint8_t> Encode();
    PeerStream Stream() const;

private:
    const char* fCodec;
    LibavHandle<AVCodecContext> fContext;
    LibavHandle<AVFrame> fFrame;
    LibavHandle<AVPacket> fPacket;
    int64_t fTime = 0;
};

class PeerDecoder {
public:
    explicit PeerDecoder(const PeerStream& stream);

    bool Decode(std::span<const uint8_t> frame);
    // The picture last decoded; empty when its layout is none of `space`.
    Bytes Picture(uint32_t space) const;

private:
    LibavHandle<AVCodecContext> fContext;
    LibavHandle<AVFrame> fFrame;
    LibavHandle<AVPacket> fPacket;
};

}  // namespace kelvane
