#include "format/media_format.h"

#include <algorithm>
#include <iterator>

#include "base/four_cc.h"
#include "base/television.h"

namespace kelvane {

namespace {

const char* const kSampleNames[] = {"UNKNOWN", "PCM",  "PCM_UNSIGNED", "PCM_FLOAT",
                                    "ULAW",    "ALAW", "ADPCM",        "IMA4"};

struct EncodingRow {
    const char* name;      // null: prints as "???"
    uint32_t compression;  // in a bitmap header
};

// Indexed by VideoEncoding.
constexpr EncodingRow kEncodings[] = {
    {"UNKNOWN", 0},          {"DV", "dvsd"_4cc},    {"MPEG1", "mpeg"_4cc}, {"MPEG2", "mmes"_4cc},
    {"MPEG4", "mpg4"_4cc},   {"PJPEG", "JPEG"_4cc}, {"MJPEG", "mjpg"_4cc}, {"PNG", "png "_4cc},
    {"CINEPAK", "cvid"_4cc}, {nullptr, "dv25"_4cc}, {nullptr, "dv50"_4cc}, {nullptr, 0},
    {nullptr, "HFYU"_4cc},
};

struct ColourRow {
    uint32_t cspace;
    uint32_t bytes;        // a pixel, in the size rule
    uint32_t compression;  // in a bitmap header
    uint16_t bit_count;
};

// The codes without a name in ColourSpace are those that no codec reads or writes. kRGB24 has 32
// bits for three bytes a pixel: files rely on it.
constexpr ColourRow kColours[] = {
    {kBGR24, 3, 0, 24},          {kRGB24, 3, 0, 32},           {kRGBX32, 4, 0, 32},
    {kBGRX32, 4, 0, 32},         {kBGRA32, 4, "RGBA"_4cc, 32}, {0x4000, 2, "UYVY"_4cc, 16},
    {0x4001, 2, "UYVY"_4cc, 16}, {0x4003, 3, "UYVY"_4cc, 16},  {0x4004, 2, "UYVY"_4cc, 16},
    {kYUY2, 4, "YUY2"_4cc, 16},  {kUYVY, 2, "UYVY"_4cc, 16},   {0x4021, 2, "UYVY"_4cc, 16},
    {kVYU24, 3, "UYVY"_4cc, 16}, {0x4024, 2, "UYVY"_4cc, 16},  {kYUVSigned, 4, 0, 32},
};
constexpr ColourRow kOtherColour = {0, 4, 0, 32};

const ColourRow& ColourOf(uint32_t cspace)
{
    const auto* row = std::find_if(std::begin(kColours), std::end(kColours),
                                   [&](const ColourRow& r) { return r.cspace == cspace; });
    return row == std::end(kColours) ? kOtherColour : *row;
}

uint32_t PixelCount(const MediaFormat& format)
{
    return static_cast<uint32_t>(format.Width()) * static_cast<uint32_t>(format.Height());
}

// `known` is where the check of the table ends, which can be before its last row.
const char* SampleName(uint32_t format, size_t known)
{
    return format < known ? kSampleNames[format] : "???";
}

const char* EncodingName(uint32_t encoding)
{
    if (encoding >= std::size(kEncodings) || !kEncodings[encoding].name) return "???";
    return kEncodings[encoding].name;
}

}  // namespace

int32_t MediaFormat::Width() const
{
    return kind == kRawVideo ? raw_video.width : kind == kEncodedVideo ? encoded_video.w : 0;
}

int32_t MediaFormat::Height() const
{
    return kind == kRawVideo ? raw_video.height : kind == kEncodedVideo ? encoded_video.h : 0;
}

float MediaFormat::FrameRate() const
{
    return kind == kRawVideo ? raw_video.frate : kind == kEncodedVideo ? encoded_video.frate : 0.0f;
}

uint32_t MediaFormat::Space() const
{
    return kind == kRawVideo ? raw_video.cspace : kind == kEncodedVideo ? encoded_video.cspace : 0;
}

void MediaFormat::SetPicture(int32_t width, int32_t height, float rate)
{
    if (kind == kRawVideo) {
        raw_video.width = width;
        raw_video.height = height;
        raw_video.frate = rate;
    } else if (kind == kEncodedVideo) {
        encoded_video.w = width;
        encoded_video.h = height;
        encoded_video.frate = rate;
    }
}

MediaFormat DVFormat(bool pal, VideoEncoding encoding)
{
    const TelevisionSystem& system = SystemFor(pal);
    EncodedVideoFormat view{};
    view.cspace = kBGR24;
    view.w = system.width;
    view.h = system.height;
    view.frate = system.rate;
    view.ilace = 1;
    view.encoding = encoding;
    view.bitrate = 28800000.0f;
    view.framesize = system.dv_frame_size;
    return MediaFormat(view);
}

void PrintFormat(const MediaFormat& format, FILE* out, int indent)
{
    if (!out) out = stdout;
    if (indent > 0) fprintf(out, "%*s", std::min(indent, 32), "");
    switch (format.kind) {
        case kUnknownFormat:
            fprintf(out, "MediaFormat(AV_UNKNOWN_FORMAT)\n");
            break;
        case kRawAudio: {
            const RawAudioFormat& a = format.raw_audio;
            fprintf(out,
                    "MediaFormat(AV_RAW_AUDIO_FORMAT) : format=%s  ch=%d  bitspersample=%d  "
                    "srate=%ld\n",
                    SampleName(a.format, std::size(kSampleNames)), a.ch, a.bitspersample,
                    static_cast<long>(a.srate));
            break;
        }
        case kRawVideo: {
            const RawVideoFormat& v = format.raw_video;
            fprintf(out,
                    "MediaFormat(AV_RAW_VIDEO_FORMAT) : cspace=0x%lX  width=%ld  height=%ld  "
                    "frate=%.2f  ilace=%ld\n",
                    static_cast<unsigned long>(v.cspace), static_cast<long>(v.width),
                    static_cast<long>(v.height), static_cast<double>(v.frate),
                    static_cast<long>(v.ilace));
            break;
        }
        case kEncodedAudio: {
            const EncodedAudioFormat& a = format.encoded_audio;
            // The output format's check stops at 6 although there are names beyond: deliberate,
            // reports have always shown "???" there.
            fprintf(out,
                    "MediaFormat(AV_ENCODED_AUDIO_FORMAT) : encoding=%s  bitrate=%.2f  OUTPUT: "
                    "format=%s  ch=%d  bitspersample=%d  srate=%ld\n",
                    SampleName(a.encoding, std::size(kSampleNames)), static_cast<double>(a.bitrate),
                    SampleName(a.output.format, 6), a.output.ch, a.output.bitspersample,
                    static_cast<long>(a.output.srate));
            break;
        }
        case kEncodedVideo: {
            const EncodedVideoFormat& v = format.encoded_video;
            // Reports have always shown the number that the file's own byte order makes of a code.
            const uint32_t code =
                v.encoding == kEncodingQTRLE ? v.codec : __builtin_bswap32(v.codec);
            fprintf(out,
                    "MediaFormat(AV_ENCODED_VIDEO_FORMAT) : encoding=%s  codec=0x%lX "
                    "bitrate=%.2f  framesize=%ld  OUTPUT: cspace=0x%lX  w=%ld  h=%ld  "
                    "frate=%.2f  ilace=%ld\n",
                    EncodingName(v.encoding), static_cast<unsigned long>(code),
                    static_cast<double>(v.bitrate), static_cast<long>(v.framesize),
                    static_cast<unsigned long>(v.cspace), static_cast<long>(v.w),
                    static_cast<long>(v.h), static_cast<double>(v.frate),
                    static_cast<long>(v.ilace));
            break;
        }
        default:
            fprintf(out, "MediaFormat(INVALID)\n");
    }
}

uint32_t BytesOfPicture(const MediaFormat& format)
{
    if (!format.IsVideo()) return 0;
    return PixelCount(format) * ColourOf(format.Space()).bytes;
}

bool SameKind(const MediaFormat& a, const MediaFormat& b)
{
    if (a.kind != b.kind) return false;
    switch (a.kind) {
        case kRawAudio:
            return a.raw_audio.format == b.raw_audio.format;
        case kRawVideo:
            return a.raw_video.cspace == b.raw_video.cspace;
        case kEncodedAudio:
            return a.encoded_audio.encoding == b.encoded_audio.encoding;
        case kEncodedVideo:
            return a.encoded_video.encoding == b.encoded_video.encoding;
        default:
            return false;
    }
}

bool SameSize(const MediaFormat& a, const MediaFormat& b)
{
    return a.IsVideo() && b.IsVideo() && a.Width() == b.Width() && a.Height() == b.Height();
}

void ToBitmapHeaderRaw(const MediaFormat& format, BitmapHeader& header)
{
    const ColourRow& colour = ColourOf(format.Space());
    header = BitmapHeader{};
    header.width = format.Width();
    header.height = format.Height();
    header.bit_count = colour.bit_count;
    header.compression = colour.compression;
    header.size_image = colour.bit_count / 8u * PixelCount(format);
}

void ToBitmapHeaderEncoded(const MediaFormat& format, BitmapHeader& header)
{
    const EncodedVideoFormat& v = format.encoded_video;
    header = BitmapHeader{};
    header.width = v.w;
    header.height = v.h;
    header.bit_count = 24;
    header.compression =
        v.encoding < std::size(kEncodings) ? kEncodings[v.encoding].compression : 0;
    header.size_image =
        v.framesize > 0 ? static_cast<uint32_t>(v.framesize) : 3 * PixelCount(format);
    if (v.codec != 0) header.compression = v.codec;
    if (v.encoding == kEncodingHuffYUV)
        header.bit_count = v.cspace == kBGR24                           ? 24
                           : v.cspace == kBGRX32 || v.cspace == kBGRA32 ? 32
                                                                        : 16;
}

uint32_t SampleFormatOfTag(uint16_t tag)
{
    switch (tag) {
        case 1:
            return kSamplePCM;
        case 2:
            return kSampleADPCM;
        case 3:
            return kSampleFloat;
        case 6:
            return kSampleALaw;
        case 7:
            return kSampleULaw;
        default:
            return kSampleUnknown;
    }
}

uint16_t TagOfSampleFormat(uint32_t format)
{
    switch (format) {
        case kSamplePCM:
        case kSamplePCMUnsigned:
            return 1;
        case kSampleADPCM:
            return 2;
        case kSampleFloat:
            return 3;
        case kSampleALaw:
            return 6;
        case kSampleULaw:
            return 7;
        default:
            return 0;
    }
}

}  // namespace kelvane
