#include "platform/codec_modules/libav/libav_dv_codec.h"

#include <algorithm>
#include <cstring>

#include "base/four_cc.h"
#include "base/status.h"

namespace kelvane {

namespace {

constexpr uint32_t kSequenceSize = 12000;
constexpr uint32_t kMostThreads = 8;
constexpr DVKind kKinds[] = {
    {{720, 576, ChromaSampling::k420}, AV_PIX_FMT_YUV420P, {1, 25}, 144000, false},
    {{720, 576, ChromaSampling::k411}, AV_PIX_FMT_YUV411P, {1, 25}, 144000, true},
    {{720, 480, ChromaSampling::k411}, AV_PIX_FMT_YUV411P, {1001, 30000}, 120000, false},
    {{720, 480, ChromaSampling::k411}, AV_PIX_FMT_YUV411P, {1001, 30000}, 120000, true},
};

// The library marks every 4:1:1 frame as DVCPRO, so the application id is written here: the low
// three bits of four bytes in the header block of every sequence (IEC 61834-2, SMPTE 314M).
void SetApplicationId(uint8_t* frame, const DVKind& kind)
{
    for (uint32_t sequence = 0; sequence < kind.size; sequence += kSequenceSize)
        for (uint32_t i = 4; i < 8; i++) {
            uint8_t& byte = frame[sequence + i];
            byte = static_cast<uint8_t>((byte & ~7) | (kind.dvcpro ? 1 : 0));
        }
}

// The library decodes anything of about the right size; this tells DV from rubbish. Most sequences
// must have a video block where their first one belongs (section type 4), so that a frame with
// some damage still passes.
bool LooksLikeDV(const uint8_t* frame, uint32_t bytes)
{
    constexpr uint32_t kFirstVideoBlock = 560;
    uint32_t good = 0;
    for (uint32_t sequence = 0; sequence < bytes; sequence += kSequenceSize)
        if (frame[sequence + kFirstVideoBlock] >> 5 == 4) good++;
    return 2 * good > bytes / kSequenceSize;
}

// The library is told to be quiet and exact: integer transforms without the forms that differ
// between processors, and threads that share a frame's blocks, so that no frame is kept waiting.
ContextPtr NewContext(const AVCodec* codec, uint32_t threads)
{
    av_log_set_level(AV_LOG_QUIET);
    ContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context) return nullptr;
    context->thread_count = static_cast<int>(threads);
    context->thread_type = FF_THREAD_SLICE;
    context->flags |= AV_CODEC_FLAG_BITEXACT;
    return context;
}

// An open context, null when there is none to be had; `prepare` sets its fields. Where it does not
// open with so many threads it is tried with one, in a context of its own: one that failed is not
// opened again.
template <class Prepare>
ContextPtr OpenContext(const AVCodec* codec, uint32_t threads, Prepare prepare)
{
    for (const uint32_t count : {std::clamp(threads, 1u, kMostThreads), 1u}) {
        ContextPtr context = NewContext(codec, count);
        if (!context) return nullptr;
        prepare(*context);
        if (avcodec_open2(context.get(), nullptr, nullptr) >= 0) return context;
        if (count == 1) break;
    }
    return nullptr;
}

void MarkInterlaced(AVFrame* frame)
{
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 29, 100)
    frame->flags |= AV_FRAME_FLAG_INTERLACED;
    frame->flags &= ~AV_FRAME_FLAG_TOP_FIELD_FIRST;
#else
    frame->interlaced_frame = 1;
    frame->top_field_first = 0;
#endif
}

Planes PlanesOf(const AVFrame& frame)
{
    const auto row = [&](int i) { return PlaneRow{frame.data[i], frame.linesize[i]}; };
    return {row(0), row(1), row(2)};
}

}  // namespace

const DVKind* FindDVKind(const CodecSetup& setup)
{
    const bool dvcpro = setup.coded.compression == "dv25"_4cc;
    if (!dvcpro && setup.coded.compression != "dvsd"_4cc) return nullptr;
    if (setup.raw.compression != 0) return nullptr;
    if (setup.raw.bit_count != 24 && setup.raw.bit_count != 32) return nullptr;
    for (const DVKind& kind : kKinds)
        if (kind.dvcpro == dvcpro && kind.layout.width == setup.raw.width &&
            kind.layout.height == setup.raw.height && setup.coded.width == setup.raw.width &&
            setup.coded.height == setup.raw.height)
            return &kind;
    return nullptr;
}

int LibavDVEncoder::Open(const CodecSetup& setup)
{
    fKind = FindDVKind(setup);
    if (!fKind) return kError;
    fPixelBytes = setup.raw.bit_count / 8;
    fContext = OpenContext(avcodec_find_encoder(AV_CODEC_ID_DVVIDEO), setup.threads,
                           [this](AVCodecContext& context) {
                               context.width = fKind->layout.width;
                               context.height = fKind->layout.height;
                               context.pix_fmt = fKind->pixels;
                               context.time_base = fKind->tick;
                               context.flags |= AV_CODEC_FLAG_INTERLACED_DCT;
                               context.dct_algo = FF_DCT_INT;
                           });
    fFrame.reset(av_frame_alloc());
    fPacket.reset(av_packet_alloc());
    if (!fContext || !fFrame || !fPacket) return kError;
    fFrame->width = fKind->layout.width;
    fFrame->height = fKind->layout.height;
    fFrame->format = fKind->pixels;
    MarkInterlaced(fFrame.get());
    return av_frame_get_buffer(fFrame.get(), 0) < 0 ? kError : kOK;
}

int LibavDVEncoder::Encode(const uint8_t* picture, uint8_t* frame, uint32_t* bytes)
{
    if (*bytes < fKind->size || av_frame_make_writable(fFrame.get()) < 0) return kError;
    PictureToPlanes(picture, fPixelBytes, fKind->layout, PlanesOf(*fFrame));
    if (avcodec_send_frame(fContext.get(), fFrame.get()) < 0 ||
        avcodec_receive_packet(fContext.get(), fPacket.get()) < 0)
        return kError;
    const bool whole = static_cast<uint32_t>(fPacket->size) == fKind->size;
    if (whole) memcpy(frame, fPacket->data, fKind->size);
    av_packet_unref(fPacket.get());
    if (!whole) return kError;
    SetApplicationId(frame, *fKind);
    *bytes = fKind->size;
    return kOK;
}

int LibavDVDecoder::Open(const CodecSetup& setup)
{
    fKind = FindDVKind(setup);
    if (!fKind) return kError;
    fPixelBytes = setup.raw.bit_count / 8;
    fContext = OpenContext(avcodec_find_decoder(AV_CODEC_ID_DVVIDEO), setup.threads,
                           [](AVCodecContext& context) { context.idct_algo = FF_IDCT_SIMPLE; });
    fFrame.reset(av_frame_alloc());
    fPacket.reset(av_packet_alloc());
    if (!fContext || !fFrame || !fPacket) return kError;
    return av_new_packet(fPacket.get(), static_cast<int>(fKind->size)) < 0 ? kError : kOK;
}

int LibavDVDecoder::Decode(const uint8_t* frame, uint32_t bytes, uint8_t* picture,
                           uint32_t pictureBytes)
{
    const PictureLayout& asked = fKind->layout;
    const size_t needed = size_t(asked.width) * size_t(asked.height) * fPixelBytes;
    if (bytes != fKind->size || pictureBytes != needed || !LooksLikeDV(frame, bytes)) return kError;
    // The packet is kept from frame to frame, with the padding that the library wants.
    if (av_packet_make_writable(fPacket.get()) < 0) return kError;
    memcpy(fPacket->data, frame, bytes);
    if (avcodec_send_packet(fContext.get(), fPacket.get()) < 0 ||
        avcodec_receive_frame(fContext.get(), fFrame.get()) < 0)
        return kError;
    PictureLayout got = {fFrame->width, fFrame->height, ChromaSampling::k411};
    if (fFrame->format == AV_PIX_FMT_YUV420P) got.chroma = ChromaSampling::k420;
    const bool fits = got.width == asked.width && got.height == asked.height &&
                      (got.chroma == ChromaSampling::k420 || fFrame->format == AV_PIX_FMT_YUV411P);
    if (fits) PlanesToPicture(PlanesOf(*fFrame), got, picture, fPixelBytes);
    av_frame_unref(fFrame.get());
    return fits ? kOK : kError;
}

}  // namespace kelvane
