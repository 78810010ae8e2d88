#include "engine/options/output_codecs.h"

#include <iterator>

#include "base/four_cc.h"
#include "base/television.h"
#include "engine/options/conversion_settings.h"

namespace kelvane {

namespace {

using enum CodecKind;

// A DV row names the codec in the file; it does not choose one for coding.
constexpr OutputCodec kAVICodecs[] = {
    {"microsoft-dv", "Microsoft DV", "dvsd"_4cc},
    {"mainconcept-dv", "Main Concept DV", "dvsd"_4cc},
    {"matrox-dv", "Matrox DV", "dvsd"_4cc},
    {"vaio-dv", "VAIO DV", "dvsd"_4cc},
    {"adaptec-dv", "Adaptec DV", "dvsd"_4cc},
    {"miro-dv", "Miro DV", "dvsd"_4cc},
    {"canopus-dv", "Canopus DV", "CDVC"_4cc},
    {"dv500", "DV500/DVMaster", "DVSD"_4cc},
    {"dvcpro25", "DVCPRO25", "dv25"_4cc},
    {"rgb24", "Uncompressed RGB 24-bit", "DIB "_4cc, kRaw, kBGR24},
    {"rgb32", "Uncompressed RGB 32-bit", "DIB "_4cc, kRaw, kBGRX32},
    {"yuy2", "Uncompressed YUV 4:2:2 ('YUY2')", "YUY2"_4cc, kRaw, kYUY2},
    {"uyvy", "Uncompressed YUV 4:2:2 ('UYVY')", "UYVY"_4cc, kRaw, kUYVY},
    {"huffyuv-rgb", "Huffyuv RGB", "HFYU"_4cc, kHuffYUV, kBGR24},
    {"huffyuv-yuv", "Huffyuv YUV", "HFYU"_4cc, kHuffYUV, kYUY2},
};

constexpr OutputCodec kQuickTimeCodecs[] = {
    {"apple-dv", "Apple DV Codec", "dvc "_4cc, kDV, {}, kOptionDVCP},
    {"apple-dvcpro", "Apple DVCPRO Codec", "dvpp"_4cc, kDV, {}, 0, kOptionDVCP},
    {"avid-dv", "AVID DV Codec", "AVdv"_4cc},
    {"softdv", "Radius SoftDV Codec", "dvc "_4cc, kDV, {}, kOptionSoftDV | kOptionDVCP},
    {"animation", "Animation Codec", "rle "_4cc, kAnimation, kBGR24},
    {"rgb24", "Uncompressed RGB 24-bit", "raw "_4cc, kRaw, kRGB24},
    {"rgb32", "Uncompressed RGB 32-bit", "raw "_4cc, kRaw, kRGBX32},
    {"yuv422", "Component YCbCr 8-bit 4:2:2", "2vuy"_4cc, kRaw, kYUVSigned},
};

constexpr OutputCodec kMatroxCodecs[] = {
    {"matrox-dv", "Matrox DV Codec", "dvsd"_4cc},
    {"matrox-dvcpro25", "Matrox DVCPRO25 Codec", "dv25"_4cc},
};

}  // namespace

std::span<const OutputCodec> OutputCodecs(CodecMenu menu)
{
    switch (menu) {
        case CodecMenu::kAVI:
            return kAVICodecs;
        case CodecMenu::kQuickTime:
            return kQuickTimeCodecs;
        case CodecMenu::kMatrox:
            return kMatroxCodecs;
        default:
            return {};
    }
}

const OutputCodec* FindOutputCodec(CodecMenu menu, int32_t row)
{
    const std::span<const OutputCodec> rows = OutputCodecs(menu);
    if (row >= 0 && static_cast<size_t>(row) < rows.size()) return &rows[static_cast<size_t>(row)];
    // A number that is no row: the first of QuickTime, the last of Matrox, and none of AVI.
    if (menu == CodecMenu::kQuickTime) return &rows.front();
    return menu == CodecMenu::kMatrox ? &rows.back() : nullptr;
}

MediaFormat PictureFormat(const OutputCodec& codec, bool to_pal, bool to_ntsc)
{
    if (codec.kind == kDV) return {};
    // For a plain file conversion animation takes the PAL size and all others the NTSC size,
    // deliberately. The engine replaces both by the source's.
    const TelevisionSystem& system = SystemFor(codec.kind == kAnimation ? !to_ntsc : to_pal);
    if (codec.kind == kRaw)
        return MediaFormat(
            RawVideoFormat{codec.space, system.width, system.height, system.rate, 1, 0});
    EncodedVideoFormat view{};
    view.cspace = codec.space;
    view.w = system.width;
    view.h = system.height;
    view.frate = system.rate;
    view.bitrate = -1.0f;
    view.framesize = -1;
    view.encoding = kEncodingQTRLE;
    if (codec.kind == kHuffYUV) {
        view.ilace = 1;
        view.encoding = kEncodingHuffYUV;
        view.codec = codec.code;
    }
    return MediaFormat(view);
}

}  // namespace kelvane
