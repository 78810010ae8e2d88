// The picture kernels, plain form, fast form and fast form on two threads, with memcpy of the same
// bytes. Names are kernel/form/height; bench/table.py sets them beside their peers.

#include <cstring>
#include <string>

#include "base/four_cc.h"
#include "bench_picture.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/blend.h"
#include "picture/geometry.h"
#include "picture/motion_blur_deinterlace.h"
#include "picture/motion_interpolate.h"
#include "picture/packing.h"
#include "picture/rgb_to_yuv.h"
#include "picture/scaling.h"
#include "picture/yuv_to_rgb.h"

namespace kelvane {
namespace {

// What every kernel gets: two pictures that follow each other and room for a result.
struct Stage {
    explicit Stage(const benchmark::State& state, int threads)
        : height(static_cast<int32_t>(state.range(0))),
          bytes(BenchBytes(state)),
          a(BenchPicture(10)),
          b(BenchPicture(11)),
          out(2 * a.size()),
          pool(threads)
    {
    }
    PictureView View(const std::vector<uint8_t>& picture) const
    {
        return {picture.data(), kPitch, kBenchWidth, height};
    }
    PictureTarget Out() { return {out.data(), kPitch, kBenchWidth, height}; }

    static constexpr ptrdiff_t kPitch = 4 * kBenchWidth;
    int32_t height;
    size_t bytes;
    std::vector<uint8_t> a, b, out;
    WorkerPool pool;
    DeinterlaceState history;
    MotionState motion;
    int frame = 0;
};

using Kernel = void (*)(Stage&);

void Measure(benchmark::State& state, Kernel kernel, int threads)
{
    Stage stage(state, threads);
    kernel(stage);
    for (auto _ : state) {
        kernel(stage);
        benchmark::ClobberMemory();
    }
    CountPictures(state);
}

MediaFormat Raw(int32_t height)
{
    return MediaFormat(RawVideoFormat{kBGRX32, kBenchWidth, height, 25.0f, 1, 0});
}

int32_t OtherHeight(int32_t height)
{
    return height == 576 ? 480 : 576;
}

// From the other standard's height to this one's, by fields.
template <GeometryMode kMode>
void Geometry(Stage& s)
{
    GeometryConvert(s.a.data(), Raw(OtherHeight(s.height)), Raw(s.height), s.out.data(), kMode,
                    true, &s.pool);
}

template <int32_t kWidth>
void ScalePlain(Stage& s)
{
    const int32_t from = OtherHeight(s.height) / 2, left = (kBenchWidth - kWidth) / 2;
    for (int field = 0; field < 2; field++)
        plain::ScalePicture(
            {s.a.data() + field * Stage::kPitch + 4 * left, 2 * Stage::kPitch, kWidth, from},
            {s.out.data() + field * Stage::kPitch, 2 * Stage::kPitch, kBenchWidth, s.height / 2},
            kFullWeight, left);
}

// The deinterlacers work in place: each picture is copied first, and the copy is part of the
// figure.
uint8_t* NextPicture(Stage& s)
{
    memcpy(s.out.data(), (s.frame++ % 2 ? s.b : s.a).data(), s.bytes);
    return s.out.data();
}

using enum MotionDetail;

template <MotionDetail kDetail, bool kInterlaced = true>
void Motion(Stage& s)
{
    MotionInterpolate(s.motion, s.a.data(), s.b.data(), kBenchWidth, s.height, kInterlaced,
                      s.out.data(), 0.4f, kDetail, &s.pool);
}

template <MotionDetail kDetail, bool kInterlaced = true>
void MotionPlain(Stage& s)
{
    plain::MotionInterpolate(s.motion, s.a.data(), s.b.data(), kBenchWidth, s.height, kInterlaced,
                             s.out.data(), 0.4f, kDetail);
}

// No memory and no dependence: what two threads are worth on this machine at this time.
void Control(Stage& s)
{
    s.pool.ForEach(6, [](size_t part) {
        double x = static_cast<double>(part);
        for (int i = 0; i < 60000; i++)
            x = x * 1.0000001 + 0.1;
        benchmark::DoNotOptimize(x);
    });
}

struct Row {
    const char* name;
    Kernel plain, fast;
    bool splits;  // takes the pool
};

const Row kRows[] = {
    {"memcpy", nullptr, [](Stage& s) { memcpy(s.out.data(), s.a.data(), s.bytes); }, false},
    {"Control: arithmetic alone", nullptr, Control, true},
    {"Rgb24ToRgb32",
     [](Stage& s) { plain::Rgb24ToRgb32(s.a.data(), s.out.data(), s.bytes / 4, 0); },
     [](Stage& s) { Rgb24ToRgb32(s.a.data(), s.out.data(), s.bytes / 4, 0); }, false},
    {"Rgb32ToRgb24", [](Stage& s) { plain::Rgb32ToRgb24(s.a.data(), s.out.data(), s.bytes / 4); },
     [](Stage& s) { Rgb32ToRgb24(s.a.data(), s.out.data(), s.bytes / 4); }, false},
    {"SwapVertical", [](Stage& s) { plain::SwapVertical(s.a.data(), Stage::kPitch, s.height); },
     [](Stage& s) { SwapVertical(s.a.data(), Stage::kPitch, s.height); }, false},
    {"BlendPictures",
     [](Stage& s) { plain::BlendPictures(BlendMode::kWeight, 100, s.View(s.a), s.Out()); },
     [](Stage& s) { BlendPictures(BlendMode::kWeight, 100, s.View(s.a), s.Out(), &s.pool); }, true},
    {"BlendPictures alpha",
     [](Stage& s) { plain::BlendPictures(BlendMode::kSourceAlpha, 100, s.View(s.a), s.Out()); },
     [](Stage& s) { BlendPictures(BlendMode::kSourceAlpha, 100, s.View(s.a), s.Out(), &s.pool); },
     true},
    {"PictureDifference",
     [](Stage& s) {
         benchmark::DoNotOptimize(plain::PictureDifference(s.a.data(), s.b.data(), s.bytes / 4));
     },
     [](Stage& s) {
         benchmark::DoNotOptimize(PictureDifference(s.a.data(), s.b.data(), s.bytes / 4, &s.pool));
     },
     true},
    {"RgbToYuy2",
     [](Stage& s) {
         plain::RgbToYuv(s.a.data(), kBGRX32, s.out.data(), kYUY2, kBenchWidth, s.height);
     },
     [](Stage& s) { RgbToYuy2(s.a.data(), kBGRX32, s.out.data(), kBenchWidth, s.height, &s.pool); },
     true},
    {"RgbToVyu",
     [](Stage& s) {
         plain::RgbToYuv(s.a.data(), kBGRX32, s.out.data(), kVYU24, kBenchWidth, s.height);
     },
     [](Stage& s) { RgbToVyu(s.a.data(), kBGRX32, s.out.data(), kBenchWidth, s.height, &s.pool); },
     true},
    {"YuvToRgb",
     [](Stage& s) {
         plain::YuvToRgb(s.a.data(), kYUY2, s.out.data(), kBGRX32, kBenchWidth, s.height);
     },
     [](Stage& s) {
         YuvToRgb(s.a.data(), kYUY2, s.out.data(), kBGRX32, kBenchWidth, s.height, &s.pool);
     },
     true},
    {"YuvSignedToRgb",
     [](Stage& s) {
         plain::YuvSignedToRgb(s.a.data(), s.out.data(), kBGRX32, kBenchWidth, s.height);
     },
     [](Stage& s) {
         YuvSignedToRgb(s.a.data(), s.out.data(), kBGRX32, kBenchWidth, s.height, &s.pool);
     },
     true},
    {"Geometry Scale", ScalePlain<720>, nullptr, false},
    {"Geometry Pan and scan", ScalePlain<600>, nullptr, false},
    {"AdaptiveDeinterlace",
     [](Stage& s) {
         plain::AdaptiveDeinterlace(s.history, NextPicture(s), Stage::kPitch, kBenchWidth, s.height,
                                    true);
     },
     [](Stage& s) {
         AdaptiveDeinterlace(s.history, NextPicture(s), Stage::kPitch, kBenchWidth, s.height, true,
                             &s.pool);
     },
     true},
    {"MotionBlurDeinterlace",
     [](Stage& s) {
         plain::MotionBlurDeinterlace(NextPicture(s), Stage::kPitch, kBenchWidth, s.height, 16,
                                      false);
     },
     [](Stage& s) {
         MotionBlurDeinterlace(NextPicture(s), Stage::kPitch, kBenchWidth, s.height, 16, false,
                               &s.pool);
     },
     true},
    {"MotionInterpolate coarse", MotionPlain<kCoarse>, Motion<kCoarse>, true},
    {"MotionInterpolate medium", MotionPlain<kMedium>, Motion<kMedium>, true},
    {"MotionInterpolate fine", MotionPlain<kFine>, Motion<kFine>, true},
    {"MotionInterpolate coarse progressive", MotionPlain<kCoarse, false>, Motion<kCoarse, false>,
     true},
    {"MotionInterpolate fine progressive", MotionPlain<kFine, false>, Motion<kFine, false>, true},
};

struct GeometryRow {
    const char* name;
    Kernel run;
    int32_t height;  // of the destination
};

const GeometryRow kGeometry[] = {
    {"Scale", Geometry<GeometryMode::kScale>, 576},
    {"Letter box", Geometry<GeometryMode::kLetterBox>, 576},
    {"Pan and scan", Geometry<GeometryMode::kPanAndScan>, 576},
    {"Letter box plus pan and scan", Geometry<GeometryMode::kLetterBoxPanAndScan>, 576},
    {"Scale", Geometry<GeometryMode::kScale>, 480},
    {"Crop", Geometry<GeometryMode::kCrop>, 480},
};

void Register(const std::string& name, Kernel kernel, int threads, int32_t height)
{
    auto* benchmark = benchmark::RegisterBenchmark(
        name.c_str(), [=](benchmark::State& state) { Measure(state, kernel, threads); });
    benchmark->Arg(height)->Unit(benchmark::kMicrosecond);
    if (threads > 1) benchmark->UseRealTime();
}

void RegisterAll()
{
    for (const Row& row : kRows)
        for (const int32_t height : {576, 480}) {
            const std::string name = row.name;
            if (row.plain) Register(name + "/plain", row.plain, 1, height);
            if (row.fast) Register(name + "/fast", row.fast, 1, height);
            if (row.splits) Register(name + "/two threads", row.fast, 2, height);
        }
    for (const GeometryRow& row : kGeometry) {
        const std::string name = std::string("Geometry ") + row.name;
        Register(name + "/fast", row.run, 1, row.height);
        Register(name + "/two threads", row.run, 2, row.height);
    }
}

}  // namespace
}  // namespace kelvane

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    kelvane::RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
