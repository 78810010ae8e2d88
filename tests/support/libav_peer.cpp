#include "support/libav_peer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <cstring>
#include <stdexcept>
#include <string>

namespace kelvane {

namespace {

// The places of the bytes of a packed pixel; `bytes` 0 for planar 4:2:2.
struct Layout {
    AVPixelFormat format;
    uint32_t space;
    int bytes;
    int b, g, r, a;
};
constexpr Layout kLayouts[] = {
    {AV_PIX_FMT_YUV422P, kYUY2, 0, 0, 0, 0, 0}, {AV_PIX_FMT_RGB24, kBGR24, 3, 2, 1, 0, -1},
    {AV_PIX_FMT_BGR24, kBGR24, 3, 0, 1, 2, -1}, {AV_PIX_FMT_BGRA, kBGRA32, 4, 0, 1, 2, 3},
    {AV_PIX_FMT_BGR0, kBGRA32, 4, 0, 1, 2, 3},  {AV_PIX_FMT_ARGB, kBGRA32, 4, 3, 2, 1, 0},
};

const Layout* LayoutOf(int format)
{
    for (const Layout& layout : kLayouts)
        if (layout.format == format) return &layout;
    return nullptr;
}

// The first of the codec's formats in which it takes pictures of a colour space.
AVPixelFormat FormatFor(const AVCodec* codec, uint32_t space)
{
    for (const AVPixelFormat* f = codec->pix_fmts; f && *f != AV_PIX_FMT_NONE; f++) {
        const Layout* layout = LayoutOf(*f);
        if (layout && layout->space == space) return *f;
    }
    return AV_PIX_FMT_NONE;
}

// Calls move(byte in our picture, byte in the frame) for every byte of the picture, which has
// `bytes` a pixel.
template <class Picture, class Move>
void ForEachByte(const AVFrame& frame, const Layout& layout, int bytes, Picture* picture, Move move)
{
    const int places[] = {layout.b, layout.g, layout.r, layout.a};
    for (int y = 0; y < frame.height; y++) {
        const auto row = [&](int plane) { return frame.data[plane] + y * frame.linesize[plane]; };
        for (int x = 0; x < frame.width; x++) {
            if (layout.bytes == 0) {
                move(*picture++, row(0)[x]);
                move(*picture++, row(1 + x % 2)[x / 2]);
                continue;
            }
            for (int k = 0; k < bytes; k++)
                move(*picture++, row(0)[layout.bytes * x + places[k]]);
        }
    }
}

void Need(bool fine, const char* what)
{
    if (!fine) throw std::runtime_error(std::string("libavcodec refuses ") + what);
}

}  // namespace

LibavPeer::LibavPeer(const AVCodec* codec, const char* name)
    : fName(name),
      fContext(avcodec_alloc_context3(codec), [](AVCodecContext* c) { avcodec_free_context(&c); }),
      fFrame(av_frame_alloc(), [](AVFrame* f) { av_frame_free(&f); }),
      fPacket(av_packet_alloc(), [](AVPacket* p) { av_packet_free(&p); })
{
    Need(codec, name);
    av_log_set_level(AV_LOG_ERROR);
    fContext->thread_count = 1;
}

void LibavPeer::Open()
{
    Need(avcodec_open2(fContext.get(), nullptr, nullptr) >= 0, fName);
}

PeerEncoder::PeerEncoder(const char* codec, uint32_t space, int width, int height, Options options)
    : LibavPeer(avcodec_find_encoder_by_name(codec), codec)
{
    AVCodecContext& c = *fContext;
    c.width = fFrame->width = width;
    c.height = fFrame->height = height;
    fFrame->format = c.pix_fmt = FormatFor(c.codec, space);
    c.time_base = {1, 25};
    for (const auto& [name, value] : options)
        Need(av_opt_set(&c, name, value, AV_OPT_SEARCH_CHILDREN) >= 0, name);
    Open();
    Need(av_frame_get_buffer(fFrame.get(), 0) >= 0, codec);
}

void PeerEncoder::SetPicture(std::span<const uint8_t> picture)
{
    Need(av_frame_make_writable(fFrame.get()) >= 0, fName);
    const Layout& layout = *LayoutOf(fFrame->format);
    ForEachByte(*fFrame, layout, layout.bytes, picture.data(),
                [](uint8_t ours, uint8_t& theirs) { theirs = ours; });
}

std::span<const uint8_t> PeerEncoder::Encode()
{
    av_packet_unref(fPacket.get());
    fFrame->pts = fTime++;
    Need(avcodec_send_frame(fContext.get(), fFrame.get()) >= 0 &&
             avcodec_receive_packet(fContext.get(), fPacket.get()) >= 0,
         fName);
    return {fPacket->data, static_cast<size_t>(fPacket->size)};
}

PeerStream PeerEncoder::Stream() const
{
    const AVCodecContext& c = *fContext;
    const int bits = c.bits_per_coded_sample;
    return {fName, c.width, c.height, bits, Bytes(c.extradata, c.extradata + c.extradata_size)};
}

PeerDecoder::PeerDecoder(const PeerStream& stream)
    : LibavPeer(avcodec_find_decoder_by_name(stream.codec), stream.codec)
{
    AVCodecContext& c = *fContext;
    c.width = stream.width;
    c.height = stream.height;
    c.bits_per_coded_sample = stream.bits;
    if (!stream.extension.empty()) {
        const size_t size = stream.extension.size();
        c.extradata = static_cast<uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
        c.extradata_size = static_cast<int>(size);
        memcpy(c.extradata, stream.extension.data(), size);
    }
    Open();
}

bool PeerDecoder::Decode(std::span<const uint8_t> frame)
{
    av_packet_unref(fPacket.get());
    if (av_new_packet(fPacket.get(), static_cast<int>(frame.size())) < 0) return false;
    memcpy(fPacket->data, frame.data(), frame.size());
    return avcodec_send_packet(fContext.get(), fPacket.get()) >= 0 &&
           avcodec_receive_frame(fContext.get(), fFrame.get()) >= 0;
}

Bytes PeerDecoder::Picture(uint32_t space) const
{
    const Layout* layout = LayoutOf(fFrame->format);
    if (!layout) return {};
    // Some decoders give pictures without alpha four bytes a pixel.
    const bool narrow = space == kBGR24 && layout->format == AV_PIX_FMT_BGR0;
    if (!narrow && layout->space != space) return {};
    const int pixel = narrow ? 3 : layout->bytes == 0 ? 2 : layout->bytes;
    Bytes picture(static_cast<size_t>(fFrame->width * fFrame->height * pixel));
    ForEachByte(*fFrame, *layout, pixel, picture.data(),
                [](uint8_t& ours, uint8_t theirs) { ours = theirs; });
    return picture;
}

}  // namespace kelvane
