#include "media/quicktime/structure/qt_formats.h"

#include <algorithm>
#include <cmath>

#include "base/four_cc.h"
#include "base/television.h"
#include "media/quicktime/structure/qt_fields.h"

namespace kelvane {

namespace {

struct EncodedFormat {
    uint32_t format;
    uint32_t encoding;
    uint32_t codec;
};
constexpr EncodedFormat kEncodedFormats[] = {
    {"jpeg"_4cc, kEncodingPJPEG, 0},
    {"mjpa"_4cc, kEncodingMJPEG, 0},
    {"png "_4cc, kEncodingPNG, 0},
    {"cvid"_4cc, kEncodingCinepak, 0},
    {"rle "_4cc, kEncodingQTRLE, "rle "_4cc},
};

struct ReadRawFormat {
    uint32_t format;
    uint32_t cspace;
};
constexpr ReadRawFormat kReadRawFormats[] = {
    {"yuv2"_4cc, 16421}, {"yuvu"_4cc, 16421}, {"2vuy"_4cc, 16416},
    {"yuvs"_4cc, 16389}, {"yuv4"_4cc, 16420}, {"v308"_4cc, 16419},
};

struct WrittenRawFormat {
    uint32_t cspace;
    QTVideoChoice choice;
};
constexpr WrittenRawFormat kWrittenRawFormats[] = {
    {3, {"raw "_4cc, 24}},     {5, {"raw "_4cc, 24}},     {6, {"raw "_4cc, 32}},
    {8, {"raw "_4cc, 32}},     {8200, {"raw "_4cc, 32}},  {16384, {"yuv2"_4cc, 24}},
    {16421, {"yuv2"_4cc, 24}}, {16389, {"yuvs"_4cc, 24}}, {16416, {"2vuy"_4cc, 24}},
    {16385, {"y411"_4cc, 16}}, {16417, {"y411"_4cc, 16}}, {16387, {"v308"_4cc, 16}},
    {16419, {"v308"_4cc, 16}}, {16388, {"yuv4"_4cc, 16}}, {16420, {"yuv4"_4cc, 16}},
};

// The first row whose `key` is `value`; null when there is none.
template <class Rows, class Key>
auto Find(const Rows& rows, Key key, uint32_t value)
{
    const auto found = std::ranges::find(rows, value, key);
    return found == std::end(rows) ? nullptr : &*found;
}

uint32_t SpaceOfDepth(uint64_t depth, uint32_t of24, uint32_t of32)
{
    return depth == 32 ? of32 : depth == 24 ? of24 : 0;
}

MediaFormat DVVideoFormat(int32_t height)
{
    MediaFormat format = DVFormat(height == kPAL.height);
    format.encoded_video.cspace = kBGRX32;
    format.encoded_video.ilace = 0;
    return format;
}

float FrameRateOf(const QTTrack& track)
{
    const uint32_t duration = track.samples.UsualDuration();
    return duration ? static_cast<float>(track.TimeScale()) / static_cast<float>(duration) : 0;
}

uint32_t DVFormatCode(float rate, uint32_t options)
{
    if (options & kQTAvidDV) return "AVdv"_4cc;
    if (options & kQTDVCPRO) return "dvpp"_4cc;
    return rate == kPAL.rate && options & kQTDVCP ? "dvcp"_4cc : "dvc "_4cc;
}

constexpr uint32_t kIMA4PacketBytes = 34;
constexpr uint32_t kIMA4PacketSamples = 64;

}  // namespace

bool IsQTDVFormat(uint32_t format)
{
    return format == "dvc "_4cc || format == "dvcp"_4cc || format == "AVdv"_4cc ||
           format == "dvpp"_4cc;
}

bool MayBeQTDVFormat(uint32_t format)
{
    return format == "DVC "_4cc || format == "dv5n"_4cc;
}

bool HasQTSwappedWords(uint32_t format, uint64_t bits)
{
    return format == "twos"_4cc && bits > 8 && bits <= 16;
}

bool IsQTPackedSound(uint32_t format)
{
    return format == "ulaw"_4cc || format == "ima4"_4cc;
}

MediaFormat QTVideoFormat(const QTTrack& track)
{
    const uint32_t code = track.Format();
    const uint64_t depth = track.Described(kVideoDescription["depth"]);
    MediaFormat format;
    // What is shown may have another size than what is coded.
    const auto coded_width = static_cast<int32_t>(track.Described(kVideoDescription["width"]));
    const auto coded_height = static_cast<int32_t>(track.Described(kVideoDescription["height"]));
    const bool is_coded = coded_width > 0 && coded_height > 0;
    const int32_t width = is_coded ? coded_width : track.Width();
    const int32_t height = is_coded ? coded_height : track.Height();
    if (IsQTDVFormat(code)) return DVVideoFormat(height);
    if (const auto* encoded = Find(kEncodedFormats, &EncodedFormat::format, code)) {
        format.kind = kEncodedVideo;
        format.encoded_video.cspace = SpaceOfDepth(depth, kBGR24, kBGRX32);
        format.encoded_video.encoding = encoded->encoding;
        format.encoded_video.codec = encoded->codec;
    } else if (const auto* raw = Find(kReadRawFormats, &ReadRawFormat::format, code)) {
        format.kind = kRawVideo;
        format.raw_video.cspace = raw->cspace;
    } else if (code == "raw "_4cc) {
        format.kind = kRawVideo;
        format.raw_video.cspace = SpaceOfDepth(depth, kRGB24, kRGBX32);
    } else {
        return format;
    }
    format.SetPicture(width, height, FrameRateOf(track));
    return format;
}

QTFrameTime QTFrameTimeOf(const QTTrack& track, const MediaFormat& format)
{
    const QTFrameTime usual{track.samples.UsualDuration()};
    if (!format.IsDV() || usual.ticks == 0) return usual;
    const bool pal = format.FrameRate() == kPAL.rate;
    const uint64_t scale = track.TimeScale();
    const QTFrameTime standard = pal ? QTFrameTime{scale, 25} : QTFrameTime{scale * 1001, 30000};
    // A clock may be too coarse for the standard's own duration, as one of 600 is for NTSC.
    const double ratio = double(usual.ticks) * double(standard.parts) / double(standard.ticks);
    return track.samples.HasOneDuration() && std::abs(ratio - 1) < 0.01 ? usual : standard;
}

uint64_t QTSoundBytes(uint32_t format, uint64_t samples, uint32_t channels, uint32_t bits)
{
    if (format == "ulaw"_4cc) return samples * channels;
    if (format == "ima4"_4cc) return samples / kIMA4PacketSamples * kIMA4PacketBytes * channels;
    return samples * channels * (bits / 8);
}

uint64_t QTSoundSamples(uint32_t format, uint64_t bytes, uint32_t channels, uint32_t bits)
{
    if (channels == 0) return 0;
    if (format == "ulaw"_4cc) return bytes / channels;
    if (format == "ima4"_4cc) return bytes / kIMA4PacketBytes / channels * kIMA4PacketSamples;
    return bits < 8 ? 0 : bytes / (uint64_t{bits / 8} * channels);
}

QTVideoChoice ChooseQTVideo(const MediaFormat& format, uint32_t options)
{
    if (format.kind == kRawVideo) {
        const auto* raw = Find(kWrittenRawFormats, &WrittenRawFormat::cspace, format.Space());
        return raw ? raw->choice : QTVideoChoice{};
    }
    if (format.kind != kEncodedVideo) return {};
    if (format.IsDV25()) return {DVFormatCode(format.FrameRate(), options)};
    const uint32_t encoding = format.encoded_video.encoding;
    const auto* encoded = Find(kEncodedFormats, &EncodedFormat::encoding, encoding);
    if (!encoded) return {};
    // Animation copied from a file of 32 bits stays that.
    if (encoding == kEncodingQTRLE && format.Space() == kBGRX32) return {encoded->format, 32};
    return {encoded->format};
}

uint32_t ChooseQTSound(const MediaFormat& format)
{
    if (format.kind == kRawAudio) return format.raw_audio.format == kSamplePCM ? "twos"_4cc : 0;
    if (format.kind != kEncodedAudio) return 0;
    switch (format.encoded_audio.encoding) {
        case kSamplePCM:
            return "twos"_4cc;
        case kSampleULaw:
            return "ulaw"_4cc;
        case kSampleIMA4:
            return "ima4"_4cc;
        default:
            return 0;
    }
}

QTCompressor QTCompressorOf(uint32_t format, int32_t height, uint32_t options)
{
    const auto by_height = [height](const char* pal, const char* ntsc, const char* other) {
        return height == kPAL.height ? pal : height == kNTSC.height ? ntsc : other;
    };
    switch (format) {
        case "dvc "_4cc:
        case "dvcp"_4cc:
            if (options & kQTSoftDV)
                return {by_height("Radius SoftDV - PAL", "Radius SoftDV - NTSC", "Radius SoftDV"),
                        "Rads"_4cc};
            return {by_height("DV - PAL", "DV - NTSC", "DV"), "appl"_4cc};
        case "AVdv"_4cc:
            return {"Avid DV Codec", "AVID"_4cc};
        case "dvpp"_4cc:
            return {by_height("DVCPRO - PAL", "DVCPRO - NTSC", "DVCPRO"), "appl"_4cc};
        case "rle "_4cc:
            return {"Animation", "appl"_4cc};
        case "raw "_4cc:
            return {"None", "appl"_4cc};
        case "yuv2"_4cc:
            return {"Component Video", "appl"_4cc};
        default:
            return {"QuickTime", "appl"_4cc};
    }
}

QTTimeScale QTTimeScaleOf(float rate)
{
    constexpr double kMovieScale = 600, kLargest = 0x7FFFFFFF;
    if (!(rate > 0) || !(double{rate} * 1001 < kLargest)) return {};
    const auto whole = [](double value) { return value == std::floor(value); };
    double scale = std::floor(double{rate} * 1001 + 0.5);
    if (whole(rate))
        scale = whole(kMovieScale / rate) ? kMovieScale : std::floor(rate * 100.0 + 0.5);
    QTTimeScale result{static_cast<uint32_t>(scale), static_cast<uint32_t>(scale / rate)};
    if (result.frame == 0) result.scale = 0;
    return result;
}

}  // namespace kelvane
