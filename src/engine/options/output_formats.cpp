#include "engine/options/output_formats.h"

#include <algorithm>
#include <iterator>

#include "base/four_cc.h"
#include "base/television.h"

namespace kelvane {

namespace {

constexpr OutputFormat kFormats[] = {
    {"mov-audio-64", "cqa6"_4cc, "QuickTime With Audio Track (64-bit Offsets)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov-audio", "cqa_"_4cc, "QuickTime With Audio Track (4 GB Limit)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov-64", "cq64"_4cc, "QuickTime Without Audio Track (64-bit Offsets)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov", "cqt_"_4cc, "QuickTime Without Audio Track (4 GB Limit)", ".mov", kDestinationQuickTime,
     CodecMenu::kQuickTime},
    {"avi1", "ct1_"_4cc, "AVI Type1 (4 GB Limit)", ".avi", kDestinationAVI1, CodecMenu::kAVI},
    {"avi1-odml", "ct1o"_4cc, "AVI Type1/OpenDML", ".avi", kDestinationAVI1OpenDML,
     CodecMenu::kAVI},
    {"avi2", "ct2_"_4cc, "AVI Type2 (4 GB Limit)", ".avi", kDestinationAVI2, CodecMenu::kAVI},
    {"avi2-odml", "ct2o"_4cc, "AVI Type2/OpenDML", ".avi", kDestinationAVI2OpenDML,
     CodecMenu::kAVI},
    {"avi1-ref", "ct1r"_4cc, "Reference AVI Type1", ".avi", kDestinationAVI1Reference,
     CodecMenu::kAVI},
    {"avi2-ref", "ct2r"_4cc, "Reference AVI Type2", ".avi", kDestinationAVI2Reference,
     CodecMenu::kAVI},
    {"canopus1", "cbeo"_4cc, "Canopus AVI Type 1 (4 GB Limit)", ".avi", kDestinationCanopus1,
     CodecMenu::kNone},
    {"canopus2", "cbe2"_4cc, "Canopus AVI Type 2 (4 GB Limit)", ".avi", kDestinationCanopus2,
     CodecMenu::kNone},
    {"matrox", "cmat"_4cc, "Matrox DigiSuite/RT2500 AVI", ".avi", kDestinationMatrox,
     CodecMenu::kMatrox},
    {"dv", "crdv"_4cc, "Raw DV (.dv/.dif/.dvsd)", ".dv", kDestinationRawDV, CodecMenu::kNone},
    {"es3", "ces3"_4cc, "Sony ES-3 DV clip (.dv)", ".dv", kDestinationES3, CodecMenu::kNone},
    {"du1", "cmxf"_4cc, "Sony DSR-DU1/DR1000P file (.dvd)", ".dvd", kDestinationDU1,
     CodecMenu::kNone},
    {"omf", "comf"_4cc, "OMF (.omf)", ".omf", kDestinationOMF, CodecMenu::kNone},
};

constexpr OutputCodec kAVICodecs[] = {
    {"microsoft-dv", "Microsoft DV", "dvsd"},
    {"mainconcept-dv", "Main Concept DV", "dvsd"},
    {"matrox-dv", "Matrox DV", "dvsd"},
    {"vaio-dv", "VAIO DV", "dvsd"},
    {"adaptec-dv", "Adaptec DV", "dvsd"},
    {"miro-dv", "Miro DV", "dvsd"},
    {"canopus-dv", "Canopus DV", "CDVC"},
    {"dv500", "DV500/DVMaster", "DVSD"},
    {"dvcpro25", "DVCPRO25", "dv25"},
    {"rgb24", "Uncompressed RGB 24-bit", "DIB "},
    {"rgb32", "Uncompressed RGB 32-bit", "DIB "},
    {"yuy2", "Uncompressed YUV 4:2:2 ('YUY2')", "YUY2"},
    {"uyvy", "Uncompressed YUV 4:2:2 ('UYVY')", "UYVY"},
    {"huffyuv-rgb", "Huffyuv RGB", "HFYU"},
    {"huffyuv-yuv", "Huffyuv YUV", "HFYU"},
};

constexpr OutputCodec kQuickTimeCodecs[] = {
    {"apple-dv", "Apple DV Codec", "dvc "},       {"apple-dvcpro", "Apple DVCPRO Codec", "dvc "},
    {"avid-dv", "AVID DV Codec", "AVdv"},         {"softdv", "Radius SoftDV Codec", "AVdv"},
    {"animation", "Animation Codec", "rle "},     {"rgb24", "Uncompressed RGB 24-bit", "rle "},
    {"rgb32", "Uncompressed RGB 32-bit", "raw "}, {"yuv422", "Component YCbCr 8-bit 4:2:2", "raw "},
};

constexpr OutputCodec kMatroxCodecs[] = {
    {"matrox-dv", "Matrox DV Codec", "dvsd"},
    {"matrox-dvcpro25", "Matrox DVCPRO25 Codec", "dv25"},
};

// Indexed by the row of the AVI menu.
constexpr uint32_t kAVIDVHandlers[kAVIDVRows] = {
    "dvsd"_4cc, "dvsd"_4cc, "dvsd"_4cc, "dvsd"_4cc, "dvsd"_4cc,
    "dvsd"_4cc, "CDVC"_4cc, "DVSD"_4cc, "dv25"_4cc,
};

struct BuiltInRow {
    uint32_t handler;
    uint32_t cspace;
    bool huffyuv;
};
constexpr BuiltInRow kAVIBuiltIn[] = {
    {"DIB "_4cc, kBGR24, false}, {"DIB "_4cc, kBGRX32, false}, {"YUY2"_4cc, kYUY2, false},
    {"UYVY"_4cc, kUYVY, false},  {"HFYU"_4cc, kBGR24, true},   {"HFYU"_4cc, kYUY2, true},
};

MediaFormat HuffYUVFormat(uint32_t cspace, const TelevisionSystem& system)
{
    EncodedVideoFormat view{};
    view.cspace = cspace;
    view.w = system.width;
    view.h = system.height;
    view.frate = system.rate;
    view.ilace = 1;
    view.encoding = kEncodingHuffYUV;
    view.codec = "HFYU"_4cc;
    view.bitrate = -1.0f;
    view.framesize = -1;
    return MediaFormat(view);
}

}  // namespace

std::span<const OutputFormat> OutputFormats()
{
    return kFormats;
}

const OutputFormat* FindOutputFormat(uint32_t selection)
{
    const auto* row = std::ranges::find(kFormats, selection, &OutputFormat::selection);
    return row == std::end(kFormats) ? nullptr : row;
}

int32_t TypeOfDestination(uint32_t selection)
{
    const OutputFormat* row = FindOutputFormat(selection);
    return row ? row->type : kDestinationNone;
}

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

bool AVIDVCodec(int32_t row, uint32_t& handler)
{
    if (row < 0 || row >= kAVIDVRows) return false;
    handler = kAVIDVHandlers[row];
    return true;
}

bool AVIBuiltInCodec(int32_t row, bool pal, uint32_t& handler, MediaFormat& format)
{
    if (row < 0 || static_cast<size_t>(row) >= std::size(kAVIBuiltIn)) return false;
    const BuiltInRow& builtIn = kAVIBuiltIn[row];
    const TelevisionSystem& system = SystemFor(pal);
    handler = builtIn.handler;
    format = builtIn.huffyuv ? HuffYUVFormat(builtIn.cspace, system)
                             : MediaFormat(RawVideoFormat{builtIn.cspace, system.width,
                                                          system.height, system.rate, 1, 0});
    return true;
}

}  // namespace kelvane
