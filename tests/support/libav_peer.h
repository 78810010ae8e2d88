#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <utility>

#include "base/byte_cursor.h"
#include "format/media_format.h"

struct AVCodec;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace kelvane {

// libavcodec's codecs as peers: an independent coder and decoder of the same formats, one thread.
// Pictures are in the layouts kYUY2, kBGR24 and kBGRA32, top row first.

// What a container says of a stream.
struct PeerStream {
    const char* codec;  // by libavcodec's name
    int width, height;
    int bits;  // a pixel, as in the sample description
    Bytes extension;
};

// Throws std::runtime_error where libavcodec refuses.
class LibavPeer {
protected:
    LibavPeer(const AVCodec* codec, const char* name);
    void Open();

    template <class T>
    using Handle = std::unique_ptr<T, void (*)(T*)>;
    const char* fName;
    Handle<AVCodecContext> fContext;
    Handle<AVFrame> fFrame;
    Handle<AVPacket> fPacket;
};

class PeerEncoder : LibavPeer {
public:
    using Options = std::initializer_list<std::pair<const char*, const char*>>;

    PeerEncoder(const char* codec, uint32_t space, int width, int height, Options options = {});

    void SetPicture(std::span<const uint8_t> picture);
    // Codes the picture; the frame lives until the next call.
    std::span<const uint8_t> Encode();
    PeerStream Stream() const;

private:
    int64_t fTime = 0;
};

class PeerDecoder : LibavPeer {
public:
    explicit PeerDecoder(const PeerStream& stream);

    bool Decode(std::span<const uint8_t> frame);
    // The picture last decoded; empty when its layout is none of `space`.
    Bytes Picture(uint32_t space) const;
};

}  // namespace kelvane
