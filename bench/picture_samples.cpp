// Writes pictures before and after each picture kernel, as PPM files, for docs/pictures.md.
//     picture_samples FOLDER

#include <cstdio>
#include <string>

#include "base/four_cc.h"
#include "moving_picture.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/blend.h"
#include "picture/geometry.h"
#include "picture/motion_blur_deinterlace.h"
#include "picture/motion_interpolate.h"

namespace kelvane {
namespace {

constexpr int32_t kWidth = 720, kPAL = 576, kNTSC = 480;
constexpr size_t kPitch = 4 * kWidth;
constexpr double kField = 0.5;  // frames between the fields of a picture

using Picture = std::vector<uint8_t>;

class Samples {
public:
    explicit Samples(std::string folder) : fFolder(std::move(folder)) {}

    void Write(const std::string& name, const Picture& picture, int32_t height)
    {
        FILE* file = fopen((fFolder + "/" + name + ".ppm").c_str(), "wb");
        if (!file) {
            fFailed = true;
            return;
        }
        fprintf(file, "P6 %d %d 255\n", kWidth, height);
        for (size_t i = 0; i < static_cast<size_t>(kWidth * height); i++) {
            const uint8_t rgb[] = {picture[4 * i + 2], picture[4 * i + 1], picture[4 * i]};
            fwrite(rgb, 1, sizeof rgb, file);
        }
        if (fclose(file) != 0) fFailed = true;
    }
    bool Failed() const { return fFailed; }

private:
    std::string fFolder;
    bool fFailed = false;
};

Picture Interlaced(int32_t height, double frame)
{
    return DrawMovingPicture(kWidth, height, frame, frame + kField);
}

Picture Progressive(int32_t height, double frame)
{
    return DrawMovingPicture(kWidth, height, frame, frame);
}

MediaFormat Raw(int32_t height)
{
    return MediaFormat(RawVideoFormat{kBGRX32, kWidth, height, 25.0f, 0, 0});
}

void Geometry(Samples& samples)
{
    const struct {
        const char* name;
        GeometryMode mode;
        int32_t from, to;
        bool interlaced = true;
    } rows[] = {
        {"scale-up", GeometryMode::kScale, kNTSC, kPAL},
        {"letter-box", GeometryMode::kLetterBox, kNTSC, kPAL},
        {"pan-and-scan", GeometryMode::kPanAndScan, kNTSC, kPAL},
        {"letter-box-pan-and-scan", GeometryMode::kLetterBoxPanAndScan, kNTSC, kPAL, false},
        {"letter-box-pan-and-scan-fields", GeometryMode::kLetterBoxPanAndScan, kNTSC, kPAL},
        {"scale-down", GeometryMode::kScale, kPAL, kNTSC},
        {"crop", GeometryMode::kCrop, kPAL, kNTSC},
    };
    for (const auto& row : rows) {
        const Picture source = Interlaced(row.from, 10);
        Picture out(2 * kPitch * kPAL);
        GeometryConvert(source.data(), Raw(row.from), Raw(row.to), out.data(), row.mode,
                        row.interlaced);
        samples.Write(std::string("geometry-") + row.name, out, row.to);
    }
    samples.Write("geometry-ntsc", Interlaced(kNTSC, 10), kNTSC);
    samples.Write("geometry-pal", Interlaced(kPAL, 10), kPAL);
}

void Deinterlacing(Samples& samples)
{
    samples.Write("deinterlace-before", Interlaced(kPAL, 10), kPAL);
    for (const bool keep_even : {true, false}) {
        DeinterlaceState state;
        Picture picture;
        for (const double frame : {9.0, 10.0}) {
            picture = Interlaced(kPAL, frame);
            AdaptiveDeinterlace(state, picture.data(), kPitch, kWidth, kPAL, keep_even);
        }
        samples.Write(keep_even ? "deinterlace-adaptive-even" : "deinterlace-adaptive-odd", picture,
                      kPAL);
    }
    Picture picture = Interlaced(kPAL, 10);
    MotionBlurDeinterlace(picture.data(), kPitch, kWidth, kPAL, 16, true);
    samples.Write("deinterlace-motion-blur", picture, kPAL);
}

void Motion(Samples& samples)
{
    constexpr float kTime = 0.5f;
    const Picture a = Progressive(kPAL, 10), b = Progressive(kPAL, 11);
    samples.Write("motion-a", a, kPAL);
    samples.Write("motion-b", b, kPAL);
    samples.Write("motion-drawn", Progressive(kPAL, 10 + kTime), kPAL);
    Picture out = a;
    BlendPictures(BlendMode::kWeight, 127, {b.data(), kPitch, kWidth, kPAL},
                  {out.data(), kPitch, kWidth, kPAL});
    samples.Write("motion-blend", out, kPAL);
    MotionState state;
    const char* const names[] = {"motion-fine", "motion-medium", "motion-coarse"};
    for (const MotionDetail detail :
         {MotionDetail::kFine, MotionDetail::kMedium, MotionDetail::kCoarse}) {
        MotionInterpolate(state, a.data(), b.data(), kWidth, kPAL, false, out.data(), kTime,
                          detail);
        samples.Write(names[static_cast<size_t>(detail)], out, kPAL);
    }
    const Picture fields_a = Interlaced(kPAL, 10), fields_b = Interlaced(kPAL, 11);
    MotionInterpolate(state, fields_a.data(), fields_b.data(), kWidth, kPAL, true, out.data(),
                      kTime, MotionDetail::kFine);
    samples.Write("motion-fields", out, kPAL);
}

}  // namespace
}  // namespace kelvane

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: picture_samples FOLDER\n");
        return 2;
    }
    kelvane::Samples samples(argv[1]);
    kelvane::Geometry(samples);
    kelvane::Deinterlacing(samples);
    kelvane::Motion(samples);
    if (samples.Failed()) fprintf(stderr, "picture_samples: cannot write to %s\n", argv[1]);
    return samples.Failed() ? 1 : 0;
}
