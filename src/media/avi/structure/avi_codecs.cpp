#include "media/avi/structure/avi_codecs.h"

#include <algorithm>
#include <iterator>

#include "base/four_cc.h"

namespace kelvane {

namespace {

constexpr uint32_t kDVHandlers[] = {
    "dvsd"_4cc, "DVSD"_4cc, "CDVC"_4cc, "cdvc"_4cc, "dv25"_4cc, "DV25"_4cc, "AVdv"_4cc,
    "dsvd"_4cc, "DSVD"_4cc, "CVDC"_4cc, "cvdc"_4cc, "52vd"_4cc, "52VD"_4cc,
};

constexpr uint32_t kPerhapsDVHandlers[] = {"PDVC"_4cc, "dvsl"_4cc, "dvis"_4cc, "dvc "_4cc};

constexpr uint32_t kRawHandlers[] = {
    0,          "ABGR"_4cc, "DIB "_4cc, "RAW "_4cc, "RGB "_4cc,
    "UYVY"_4cc, "YUY2"_4cc, "YVYU"_4cc, "YV12"_4cc,
};

struct CodecRow {
    uint32_t handler;
    const char* text;
};

constexpr CodecRow kDVCodecs[] = {
    {"CDVC"_4cc, "DV (Canopus)"},
    {"CVDC"_4cc, "DV (Canopus)"},
    {"DVSD"_4cc, "DV (DVMaster/DV500)"},
    {"DSVD"_4cc, "DV (DVMaster/DV500)"},
    {"dvsd"_4cc, "DV (Microsoft)"},
    {"dsvd"_4cc, "DV (Microsoft)"},
    {"dv25"_4cc, "DVCPRO25"},
    {"DV25"_4cc, "DVCPRO25"},
    {"dv50"_4cc, "DVCPRO50"},
    {"DV50"_4cc, "DVCPRO50"},
};

constexpr CodecRow kOtherCodecs[] = {
    {"HFYU"_4cc, "Huffyuv"},
    {"hfyu"_4cc, "Huffyuv"},
    {0, "uncompressed RGB"},
    {"ABGR"_4cc, "uncompressed RGB"},
    {"DIB "_4cc, "uncompressed RGB"},
    {"RAW "_4cc, "uncompressed RGB"},
    {"RGB "_4cc, "uncompressed RGB"},
    {"UYVY"_4cc, "uncompressed YUV 4:2:2 ('UYVY')"},
    {"YUY2"_4cc, "uncompressed YUV 4:2:2 ('YUY2')"},
    {"YVYU"_4cc, "uncompressed YUV 4:2:2 ('YVYU')"},
    {"YV12"_4cc, "uncompressed YUV 4:2:2 ('YV12')"},
    {"VYUY"_4cc, "uncompressed YUV 4:2:2 ('VYUY')"},
    {"MRLE"_4cc, "Microsoft RLE"},
    {"CRAM"_4cc, "Microsoft Video"},
    {"MSVC"_4cc, "Microsoft Video"},
    {"WHAM"_4cc, "Microsoft Video"},
    {"IV31"_4cc, "Intel Video 3.1"},
    {"IV32"_4cc, "Intel Video 3.2"},
    {"IV41"_4cc, "Intel Video 4.1"},
    {"IV50"_4cc, "Intel Video 5.0"},
    {"MJPG"_4cc, "Motion JPEG"},
    {"MPEG"_4cc, "MPEG"},
    {"MPG4"_4cc, "MPEG-4"},
    {"M263"_4cc, "H.263"},
    {"CVID"_4cc, "Cinepak (Radius)"},
    {"ULTI"_4cc, "Ultimotion (IBM)"},
    {"IJPG"_4cc, "Intergraph JPEG"},
    {"CYUV"_4cc, "Creative YUV"},
    {"YVU9"_4cc, "Intel Indeo Raw YUV9"},
    {"XMPG"_4cc, "Editable MPEG"},
    {"MPGI"_4cc, "Editable MPEG"},
    {"AVRn"_4cc, "AVID 'AVRn'"},
};

// Indexed by the handler. A wave format tag would tell the codec; that the handler is asked is
// deliberate.
constexpr const char* kAudioCodecs[] = {"unknown", "PCM",   "ADPCM", "IEEE float",
                                        nullptr,   nullptr, "A-law", "u-law"};

template <size_t N>
const char* Find(const CodecRow (&rows)[N], uint32_t handler)
{
    const auto* row = std::ranges::find(rows, handler, &CodecRow::handler);
    return row == std::end(rows) ? nullptr : row->text;
}

}  // namespace

bool IsDVHandler(uint32_t handler)
{
    return std::ranges::find(kDVHandlers, handler) != std::end(kDVHandlers);
}

bool MayBeDVHandler(uint32_t handler)
{
    return std::ranges::find(kPerhapsDVHandlers, handler) != std::end(kPerhapsDVHandlers);
}

bool IsRawHandler(uint32_t handler)
{
    return std::ranges::find(kRawHandlers, handler) != std::end(kRawHandlers);
}

VideoCodecName NameOfVideoHandler(uint32_t handler)
{
    if (const char* text = Find(kDVCodecs, handler)) return {text, true};
    const char* text = Find(kOtherCodecs, handler);
    return {text ? text : "Unrecognized codec", false};
}

const char* NameOfAudioHandler(uint32_t handler)
{
    const char* text = handler < std::size(kAudioCodecs) ? kAudioCodecs[handler] : nullptr;
    return text ? text : "Unrecognized audio codec";
}

}  // namespace kelvane
