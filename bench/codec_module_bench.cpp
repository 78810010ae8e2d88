// The codec module beside its parts: bare libavcodec, between frames and planes, and the colour
// conversion, between planes and pictures. Pictures a second is "items_per_second".

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "base/four_cc.h"
#include "platform/codec_modules/dv_setup.h"
#include "platform/codec_modules/libav/libav_dv_codec.h"
#include "sample/sample_clip.h"

namespace kelvane {
namespace {

constexpr int kFrames = 10;

// A few moving frames and their pictures, made once for each standard.
struct Clip {
    explicit Clip(bool isPAL) : pal(isPAL)
    {
        SampleOptions options;
        options.pal = pal;
        SampleClip clip(LoadCodecDrivers(CodecFolder()), options);
        if (clip.InitCheck() != 0) std::abort();
        for (int i = 0; i < kFrames; i++) {
            const auto frame = clip.Frame(i);
            frames.emplace_back(frame.begin(), frame.end());
            pictures.emplace_back(clip.Picture().begin(), clip.Picture().end());
        }
    }
    bool pal;
    std::vector<std::vector<uint8_t>> frames, pictures;
};

const Clip& ClipFor(bool pal)
{
    static const Clip kPALClip(true), kNTSCClip(false);
    return pal ? kPALClip : kNTSCClip;
}

OpenedCodec OpenCodec(bool pal, bool decoder)
{
    OpenedCodec codec;
    for (const CodecDriver& driver : LoadCodecDrivers(CodecFolder()).codecs)
        if ((driver.codec.is_decoder != 0) == decoder && driver.codec.handler == "dvsd"_4cc &&
            codec.Open(driver, DVSetup(pal, false, kBGRX32)) == 0)
            return codec;
    std::abort();
}

void ModuleDecode(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    OpenedCodec codec = OpenCodec(clip.pal, true);
    std::vector<uint8_t> picture(clip.pictures[0].size());
    size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(codec.Decode(clip.frames[i++ % kFrames], picture));
    state.SetItemsProcessed(state.iterations());
}

void ModuleEncode(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    OpenedCodec codec = OpenCodec(clip.pal, false);
    std::vector<uint8_t> frame(clip.frames[0].size());
    size_t i = 0;
    uint32_t bytes = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(codec.Encode(clip.pictures[i++ % kFrames].data(), frame, bytes));
    state.SetItemsProcessed(state.iterations());
}

struct Bare {
    explicit Bare(bool pal, bool decoder)
        : kind(FindDVKind(DVSetup(pal, false, kBGRX32))),
          frame(av_frame_alloc()),
          packet(av_packet_alloc())
    {
        const AVCodec* codec = decoder ? avcodec_find_decoder(AV_CODEC_ID_DVVIDEO)
                                       : avcodec_find_encoder(AV_CODEC_ID_DVVIDEO);
        context.reset(avcodec_alloc_context3(codec));
        context->thread_count = 1;
        context->flags |= AV_CODEC_FLAG_BITEXACT;
        context->dct_algo = FF_DCT_INT;
        context->idct_algo = FF_IDCT_SIMPLE;
        if (!decoder) {
            context->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
            context->width = frame->width = kind->layout.width;
            context->height = frame->height = kind->layout.height;
            context->pix_fmt = kind->pixels;
            frame->format = kind->pixels;
            context->time_base = kind->tick;
            av_frame_get_buffer(frame.get(), 0);
        }
        if (avcodec_open2(context.get(), nullptr, nullptr) < 0) std::abort();
    }
    const DVKind* kind;
    ContextPtr context;
    FramePtr frame;
    PacketPtr packet;
};

Planes PlanesOf(AVFrame* frame)
{
    return {{frame->data[0], frame->linesize[0]},
            {frame->data[1], frame->linesize[1]},
            {frame->data[2], frame->linesize[2]}};
}

void BareDecode(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    Bare bare(clip.pal, true);
    size_t i = 0;
    for (auto _ : state) {
        const auto& frame = clip.frames[i++ % kFrames];
        av_new_packet(bare.packet.get(), static_cast<int>(frame.size()));
        memcpy(bare.packet->data, frame.data(), frame.size());
        avcodec_send_packet(bare.context.get(), bare.packet.get());
        avcodec_receive_frame(bare.context.get(), bare.frame.get());
        av_packet_unref(bare.packet.get());
        av_frame_unref(bare.frame.get());
    }
    state.SetItemsProcessed(state.iterations());
}

void BareEncode(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    Bare bare(clip.pal, false);
    PictureToPlanes(clip.pictures[3].data(), 4, bare.kind->layout, PlanesOf(bare.frame.get()));
    for (auto _ : state) {
        avcodec_send_frame(bare.context.get(), bare.frame.get());
        avcodec_receive_packet(bare.context.get(), bare.packet.get());
        av_packet_unref(bare.packet.get());
    }
    state.SetItemsProcessed(state.iterations());
}

void ColourToPlanes(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    Bare bare(clip.pal, false);
    size_t i = 0;
    for (auto _ : state)
        PictureToPlanes(clip.pictures[i++ % kFrames].data(), 4, bare.kind->layout,
                        PlanesOf(bare.frame.get()));
    state.SetItemsProcessed(state.iterations());
}

void ColourToPicture(benchmark::State& state)
{
    const Clip& clip = ClipFor(state.range(0));
    Bare bare(clip.pal, false);
    PictureToPlanes(clip.pictures[3].data(), 4, bare.kind->layout, PlanesOf(bare.frame.get()));
    std::vector<uint8_t> picture(clip.pictures[0].size());
    for (auto _ : state)
        PlanesToPicture(PlanesOf(bare.frame.get()), bare.kind->layout, picture.data(), 4);
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BareDecode)->Arg(1)->Arg(0)->ArgName("pal");
BENCHMARK(ColourToPicture)->Arg(1)->Arg(0)->ArgName("pal");
BENCHMARK(ModuleDecode)->Arg(1)->Arg(0)->ArgName("pal");
BENCHMARK(BareEncode)->Arg(1)->Arg(0)->ArgName("pal");
BENCHMARK(ColourToPlanes)->Arg(1)->Arg(0)->ArgName("pal");
BENCHMARK(ModuleEncode)->Arg(1)->Arg(0)->ArgName("pal");

}  // namespace
}  // namespace kelvane
