// libswscale and libyuv on the same pictures, one thread.

#include <string>

#include "bench_picture.h"

#ifdef KELVANE_HAVE_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#endif
#ifdef KELVANE_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace kelvane {
namespace {

constexpr int kPitch = 4 * kBenchWidth;

int Height(const benchmark::State& state)
{
    return static_cast<int>(state.range(0));
}

[[maybe_unused]] int OtherHeight(int height)
{
    return height == 576 ? 480 : 576;
}

#ifdef KELVANE_HAVE_SWSCALE

constexpr int kAccurate =
    SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;

void Swscale(benchmark::State& state, AVPixelFormat from, int from_height, AVPixelFormat to,
             int flags)
{
    const auto pitch = [](AVPixelFormat format) {
        return format == AV_PIX_FMT_YUYV422 ? kBenchWidth * 2 : kPitch;
    };
    SwsContext* context = sws_getContext(kBenchWidth, from_height, from, kBenchWidth, Height(state),
                                         to, flags, nullptr, nullptr, nullptr);
    const std::vector<uint8_t> picture = BenchPicture(10);
    std::vector<uint8_t> out(picture.size());
    const uint8_t* const planes[] = {picture.data()};
    uint8_t* const out_planes[] = {out.data()};
    const int pitches[] = {pitch(from)}, out_pitches[] = {pitch(to)};
    for (auto _ : state)
        sws_scale(context, planes, pitches, 0, from_height, out_planes, out_pitches);
    sws_freeContext(context);
    CountPictures(state);
}

void ToYuy2(benchmark::State& state)
{
    Swscale(state, AV_PIX_FMT_BGR0, Height(state), AV_PIX_FMT_YUYV422, kAccurate);
}
void FromYuy2(benchmark::State& state)
{
    Swscale(state, AV_PIX_FMT_YUYV422, Height(state), AV_PIX_FMT_BGR0, kAccurate);
}
void ScaleBGRA(benchmark::State& state)
{
    Swscale(state, AV_PIX_FMT_BGRA, OtherHeight(Height(state)), AV_PIX_FMT_BGRA, SWS_BILINEAR);
}
BENCHMARK(ToYuy2)->Name("RgbToYuy2/libswscale accurate")->Arg(576)->Arg(480);
BENCHMARK(FromYuy2)->Name("YuvToRgb/libswscale accurate")->Arg(576)->Arg(480);
BENCHMARK(ScaleBGRA)->Name("Geometry Scale/libswscale bilinear")->Arg(576)->Arg(480);

#endif

#ifdef KELVANE_HAVE_LIBYUV

using YuvKernel = void (*)(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b,
                           std::vector<uint8_t>& out, int height);

void Libyuv(benchmark::State& state, YuvKernel kernel)
{
    const std::vector<uint8_t> a = BenchPicture(10), b = BenchPicture(11);
    std::vector<uint8_t> out(2 * a.size());
    for (auto _ : state) {
        kernel(a, b, out, Height(state));
        benchmark::ClobberMemory();
    }
    CountPictures(state);
}

struct YuvRow {
    const char* name;
    YuvKernel run;
};

const YuvRow kYuvRows[] = {
    {"RgbToYuy2",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::ARGBToYUY2(a.data(), kPitch, out.data(), kPitch / 2, kBenchWidth, height);
     }},
    {"YuvToRgb",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::YUY2ToARGB(a.data(), kPitch / 2, out.data(), kPitch, kBenchWidth, height);
     }},
    {"Rgb24ToRgb32",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::RGB24ToARGB(a.data(), 3 * kBenchWidth, out.data(), kPitch, kBenchWidth, height);
     }},
    {"Rgb32ToRgb24",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::ARGBToRGB24(a.data(), kPitch, out.data(), 3 * kBenchWidth, kBenchWidth, height);
     }},
    {"BlendPictures",
     [](auto& a, auto& b, auto& out, int height) {
         libyuv::ARGBInterpolate(a.data(), kPitch, b.data(), kPitch, out.data(), kPitch,
                                 kBenchWidth, height, 100);
     }},
    {"Geometry Scale",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::ARGBScale(a.data(), kPitch, kBenchWidth, OtherHeight(height), out.data(), kPitch,
                           kBenchWidth, height, libyuv::kFilterBilinear);
     }},
    {"Geometry Pan and scan",
     [](auto& a, auto&, auto& out, int height) {
         libyuv::ARGBScale(a.data(), kPitch, 600, OtherHeight(height), out.data(), kPitch,
                           kBenchWidth, height, libyuv::kFilterBilinear);
     }},
};

[[maybe_unused]] const bool kRegistered = [] {
    for (const YuvRow& row : kYuvRows)
        for (const int height : {576, 480})
            benchmark::RegisterBenchmark(
                (std::string(row.name) + "/libyuv").c_str(),
                [&row](benchmark::State& state) { Libyuv(state, row.run); })
                ->Arg(height)
                ->Unit(benchmark::kMicrosecond);
    return true;
}();

#endif

}  // namespace
}  // namespace kelvane
