#include "quality/field_judge.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "format/media_format.h"
#include "platform/codec_modules/dv_setup.h"
#include "platform/codec_modules/libav/dv_planes.h"
#include "support/temp_folder.h"

namespace kelvane {

namespace {

constexpr int64_t kMargin = 8;  // frames at either end that are not judged

double PSNR(double squares, double count)
{
    return 10 * std::log10(255 * 255 * count / std::max(squares, 1e-9));
}

}  // namespace

OpenedCodec OpenDVCodec(const CodecDrivers& drivers, bool pal, bool decoder)
{
    const CodecSetup setup = DVSetup(pal, false, kBGRX32);
    OpenedCodec codec;
    for (const CodecDriver& driver : drivers.codecs)
        if ((driver.codec.is_decoder != 0) == decoder && driver.codec.handler == "dvsd"_4cc &&
            codec.Open(driver, setup) == kOK)
            break;
    return codec;
}

// Luma as the codec sees it.
class FieldJudge::LumaOf {
public:
    explicit LumaOf(const TelevisionSystem& system)
        : fSystem(system), fPlanes(3 * size_t(system.width) * size_t(system.height))
    {
    }

    const uint8_t* operator()(const Picture& picture)
    {
        const ptrdiff_t pitch = fSystem.width, plane = pitch * fSystem.height;
        uint8_t* const y = fPlanes.data();
        PictureToPlanes(picture.data(), 4, {fSystem.width, fSystem.height, ChromaSampling::k411},
                        {{y, pitch}, {y + plane, pitch}, {y + 2 * plane, pitch}});
        return y;
    }

private:
    const TelevisionSystem& fSystem;
    std::vector<uint8_t> fPlanes;
};

FieldJudge::FieldJudge(const CodecDrivers& drivers, bool pal, int64_t frames)
    : fPAL(pal), fFrames(frames), fDecoder(OpenDVCodec(drivers, pal, true))
{
}

Frames FieldJudge::FileFrames(const std::string& path)
{
    const auto bytes = std::make_shared<const std::vector<uint8_t>>(ReadWhole(path));
    const auto size = size_t(SystemFor(fPAL).dv_frame_size);
    return [this, bytes, size](int64_t number, Picture& picture) {
        const size_t at = size_t(number) * size;
        return at + size <= bytes->size() &&
               fDecoder.Decode(std::span(*bytes).subspan(at, size), picture) == kOK;
    };
}

std::array<double, 3> FieldJudge::Compare(const Frames& shown, const Frames& expected)
{
    const TelevisionSystem& system = SystemFor(fPAL);
    const auto width = size_t(system.width), pixels = width * size_t(system.height);
    LumaOf lumaOfShown(system), lumaOfExpected(system);
    Picture picture(pixels * 4);
    double squares[2] = {}, count = 0;  // of a parity
    for (int64_t number = kMargin; number < fFrames - kMargin; number++) {
        if (!shown(number, picture)) return {};
        const uint8_t* const a = lumaOfShown(picture);
        if (!expected(number, picture)) return {};
        const uint8_t* const b = lumaOfExpected(picture);
        for (size_t i = 0; i < pixels; i++)
            squares[i / width % 2] += (a[i] - b[i]) * (a[i] - b[i]);
        count += double(pixels) / 2;
    }
    return {PSNR(squares[0] + squares[1], 2 * count), PSNR(squares[1], count),
            PSNR(squares[0], count)};
}

}  // namespace kelvane
