// ffmpeg's yadif, bwdif and minterpolate through libavfilter, in this process and on one thread.
// They work on YUV 4:2:0, so on less than half of the bytes of a 32-bit picture.

#include "bench_picture.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
}

namespace kelvane {
namespace {

constexpr int kFrames = 12;  // that are sent round and round

// A chain of one filter. Frames are prepared before time runs.
class FilterChain {
public:
    FilterChain(const char* filter, int height) : fGraph(avfilter_graph_alloc())
    {
        fGraph->nb_threads = 1;
        char source[160];
        snprintf(source, sizeof source,
                 "video_size=%dx%d:pix_fmt=0:time_base=1/25:frame_rate=25:pixel_aspect=1/1",
                 kBenchWidth, height);
        avfilter_graph_create_filter(&fSource, avfilter_get_by_name("buffer"), "in", source,
                                     nullptr, fGraph);
        avfilter_graph_create_filter(&fSink, avfilter_get_by_name("buffersink"), "out", nullptr,
                                     nullptr, fGraph);
        AVFilterInOut* outputs = Pad("in", fSource);
        AVFilterInOut* inputs = Pad("out", fSink);
        fReady = avfilter_graph_parse_ptr(fGraph, filter, &inputs, &outputs, nullptr) >= 0 &&
                 avfilter_graph_config(fGraph, nullptr) >= 0;
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
        for (int i = 0; i < kFrames; i++)
            fFrames[i] = Frame(i, height);
    }
    ~FilterChain()
    {
        for (AVFrame*& frame : fFrames)
            av_frame_free(&frame);
        avfilter_graph_free(&fGraph);
    }

    bool Ready() const { return fReady; }

    // Sends one frame and gives the number of those that came out.
    int Turn()
    {
        AVFrame* frame = fFrames[fTime % kFrames];
        frame->pts = fTime++;
        if (av_buffersrc_add_frame_flags(fSource, frame, AV_BUFFERSRC_FLAG_KEEP_REF) < 0) return 0;
        int count = 0;
        AVFrame* out = av_frame_alloc();
        for (; av_buffersink_get_frame(fSink, out) >= 0; count++)
            av_frame_unref(out);
        av_frame_free(&out);
        return count;
    }

private:
    static AVFilterInOut* Pad(const char* name, AVFilterContext* filter)
    {
        AVFilterInOut* pad = avfilter_inout_alloc();
        pad->name = av_strdup(name);
        pad->filter_ctx = filter;
        return pad;
    }

    // Luma and chroma planes of the test picture; the colours do not matter.
    static AVFrame* Frame(int number, int height)
    {
        AVFrame* frame = av_frame_alloc();
        frame->width = kBenchWidth;
        frame->height = height;
        frame->format = AV_PIX_FMT_YUV420P;
        frame->interlaced_frame = 1;
        frame->top_field_first = 1;
        av_frame_get_buffer(frame, 0);
        const std::vector<uint8_t> picture = BenchPicture(10 + number);
        for (int plane = 0; plane < 3; plane++) {
            const int by = plane == 0 ? 1 : 2, channel = plane == 0 ? 1 : plane == 1 ? 0 : 2;
            for (int y = 0; y < height / by; y++)
                for (int x = 0; x < kBenchWidth / by; x++)
                    frame->data[plane][y * frame->linesize[plane] + x] =
                        picture[static_cast<size_t>(4 * (y * by * kBenchWidth + x * by) + channel)];
        }
        return frame;
    }

    AVFilterGraph* fGraph;
    AVFilterContext* fSource = nullptr;
    AVFilterContext* fSink = nullptr;
    AVFrame* fFrames[kFrames];
    int64_t fTime = 0;
    bool fReady = false;
};

void Filter(benchmark::State& state, const char* filter)
{
    FilterChain chain(filter, static_cast<int>(state.range(0)));
    if (!chain.Ready()) return state.SkipWithError("the filter is not in this libavfilter");
    for (int i = 0; i < 6; i++)  // until the filter's delay is over
        chain.Turn();
    int64_t pictures = 0;
    for (auto _ : state)
        pictures += chain.Turn();
    state.SetItemsProcessed(pictures);
}

BENCHMARK_CAPTURE(Filter, yadif, "yadif")->Name("AdaptiveDeinterlace/yadif")->Arg(576)->Arg(480);
BENCHMARK_CAPTURE(Filter, bwdif, "bwdif=mode=send_frame")
    ->Name("AdaptiveDeinterlace/bwdif")
    ->Arg(576)
    ->Arg(480);
BENCHMARK_CAPTURE(Filter, minterpolate, "minterpolate=fps=30000/1001:mi_mode=mci")
    ->Name("MotionInterpolate fine/minterpolate mci")
    ->Arg(576)
    ->Arg(480);

}  // namespace
}  // namespace kelvane
