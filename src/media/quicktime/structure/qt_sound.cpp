#include "media/quicktime/structure/qt_sound.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "base/four_cc.h"

namespace kelvane {

namespace {

struct SoundRow {
    uint32_t type;
    uint32_t format;    // SampleFormat
    uint16_t bits = 0;  // of a sample, whatever the description says; 0: as it says
};
// Big-endian where the description does not say otherwise.
constexpr SoundRow kRows[] = {
    {"twos"_4cc, kSamplePCM},       {"sowt"_4cc, kSamplePCM},     {"raw "_4cc, kSamplePCMUnsigned},
    {"in24"_4cc, kSamplePCM, 24},   {"in32"_4cc, kSamplePCM, 32}, {"fl32"_4cc, kSampleFloat, 32},
    {"fl64"_4cc, kSampleFloat, 64},
};

// "lpcm" in a description of version 2.
enum LinearFlag : uint32_t {
    kIsFloat = 1,
    kIsBigEndian = 2,
    kIsSigned = 4,
    kIsAlignedHigh = 16,
    kIsNotInterleaved = 32,
};

constexpr uint32_t kVersion2 = 2;

uint32_t VersionOf(const QTSampleDescription& description)
{
    return static_cast<uint32_t>(description.fields.Get(kDescriptionHead["version"]));
}

RawAudioFormat RecordOf(const QTSampleDescription& description)
{
    const auto get = [&](const HeaderField& field) {
        return static_cast<uint32_t>(description.fields.Get(field));
    };
    if (VersionOf(description) != kVersion2)
        return {kSampleUnknown, static_cast<uint16_t>(get(kSoundDescription["number of channels"])),
                static_cast<uint16_t>(get(kSoundDescription["sample size"])),
                static_cast<int32_t>(get(kSoundDescription["sample rate"]) >> 16)};
    const auto wide = [&](const HeaderField& field) {
        return std::min<uint64_t>(description.wide.Get(field), 0xFFFF);
    };
    const auto rate = std::bit_cast<double>(description.wide.Get(kWideSound["sample rate"]));
    const bool plausible = rate > 0 && rate < std::numeric_limits<int32_t>::max();
    return {kSampleUnknown, static_cast<uint16_t>(wide(kWideSound["channels"])),
            static_cast<uint16_t>(wide(kWideSound["bits"])),
            plausible ? static_cast<int32_t>(rate) : 0};
}

// Samples that fill their bytes, or stand at their top.
SampleCoding LinearCoding(const QTSampleDescription& description, const RawAudioFormat& format)
{
    const auto get = [&](const HeaderField& field) {
        return static_cast<uint32_t>(description.wide.Get(field));
    };
    const uint32_t flags = get(kWideSound["flags"]);
    const uint32_t frame = get(kWideSound["bytes per packet"]);
    const uint32_t bytes = format.ch > 0 ? frame / format.ch : 0;
    const bool fills = format.bitspersample == 8 * bytes || flags & kIsAlignedHigh;
    if (VersionOf(description) != kVersion2 || flags & kIsNotInterleaved || bytes == 0 ||
        bytes > 8 || frame != bytes * format.ch || get(kWideSound["frames per packet"]) != 1 ||
        !fills)
        return kNoSampleCoding;
    return {.bits = static_cast<uint16_t>(8 * bytes),
            .is_float = (flags & kIsFloat) != 0,
            .is_unsigned = (flags & (kIsFloat | kIsSigned)) == 0,
            .big_endian = (flags & kIsBigEndian) != 0};
}

}  // namespace

uint32_t QTSound::FrameBytes() const
{
    return static_cast<uint32_t>(format.raw_audio.ch * coding.Bytes());
}

QTSound QTSoundOf(const QTTrack& track)
{
    const QTSampleDescription* description = track.Description();
    if (!description || track.video_header) return {};
    RawAudioFormat format = RecordOf(*description);
    const uint32_t type = track.Format();
    if (type == "lpcm"_4cc) {
        const SampleCoding coding = LinearCoding(*description, format);
        if (coding.bits == 0) return {MediaFormat(EncodedAudioFormat{format, kSampleUnknown, 0})};
        format.format = coding.is_float ? kSampleFloat : kSamplePCM;
        return {MediaFormat(format), coding};
    }
    if (const auto* row = std::ranges::find(kRows, type, &SoundRow::type); row != std::end(kRows)) {
        format.format = row->format;
        if (row->bits) format.bitspersample = row->bits;
        const bool little = description->little_endian && row->bits != 0;
        // "raw " of more than 8 bits is written as "twos" is.
        return {MediaFormat(format),
                {.bits = format.bitspersample,
                 .is_float = row->format == kSampleFloat,
                 .is_unsigned = row->format == kSamplePCMUnsigned && format.bitspersample <= 8,
                 .big_endian = type != "sowt"_4cc && !little}};
    }
    uint32_t encoding = kSampleUnknown;
    if (type == "ulaw"_4cc) encoding = kSampleULaw;
    if (type == "ima4"_4cc) encoding = kSampleIMA4;
    if (encoding != kSampleUnknown) format.format = kSamplePCM;
    return {MediaFormat(EncodedAudioFormat{format, encoding, 0})};
}

}  // namespace kelvane
