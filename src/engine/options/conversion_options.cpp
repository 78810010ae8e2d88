#include "engine/options/conversion_options.h"

#include <cstdlib>

#include "base/four_cc.h"
#include "base/television.h"
#include "engine/options/output_formats.h"

namespace kelvane {

namespace {

int32_t ChannelMask(int32_t channeloptions)
{
    static constexpr int32_t kMasks[] = {1, 2, 4, 8, 3, 12, 15};
    constexpr auto kCount = static_cast<int32_t>(std::size(kMasks));
    return channeloptions >= 0 && channeloptions < kCount ? kMasks[channeloptions] : 3;
}

// Only the two spellings each are words; "End" is converted as a number, to 0.
int64_t Limit(const std::string& text, bool inFrames)
{
    if (text == "start" || text == "START") return 0;
    if (text == "end" || text == "END") return -1;
    if (inFrames) return std::atoll(text.c_str());
    const double seconds = std::atof(text.c_str());
    constexpr double kMost = 1e15;  // beyond any tape, and far inside 64 bits
    if (!(seconds > -kMost && seconds < kMost)) return 0;
    return static_cast<int64_t>(seconds);
}

// Geometry modes are numbered by operation; the last of each takes all other numbers.
GeometryMode ModeOf(uint32_t operation, int32_t number)
{
    using enum GeometryMode;
    if (operation == kOperationToNTSC) return number == 0 ? kScale : kCrop;
    if (operation != kOperationToPAL) return kScale;
    constexpr GeometryMode kToPAL[] = {kScale, kLetterBox, kPanAndScan};
    const bool listed = number >= 0 && number < static_cast<int32_t>(std::size(kToPAL));
    return listed ? kToPAL[number] : kLetterBoxPanAndScan;
}

uint32_t OptionBits(const ConversionOptions& options)
{
    const uint32_t selection = options.selection;
    const bool omf = selection == "comf"_4cc;
    const struct {
        bool set;
        uint32_t bit;
    } rows[] = {
        {options.inplace != 0, kOptionInPlace},
        {options.add_idx1 != 0, kOptionIdx1},
        {options.add_ptc == 0, kOptionNoPTC},
        {selection == "cq64"_4cc || selection == "cqa6"_4cc, kOptionOffsets64},
        {selection == "cqa_"_4cc || selection == "cqa6"_4cc, kOptionAudioTrack},
        {options.qt_dvcp != 0, kOptionDVCP},
        {omf && options.omfspec == 2, kOptionOMF2},
        {omf && options.omfaudi == 1, kOptionOMFEmbedAudio},
        {omf && options.omfaudi == 2, kOptionOMFAudioFile},
        {options.qcodec == 3, kOptionSoftDV},
        {options.wr486 != 0, kOptionLines486},
        {options.Bafoch != 0, kOptionFieldOrderChange},
    };
    uint32_t bits = 0;
    for (const auto& row : rows)
        if (row.set) bits |= row.bit;
    return bits;
}

void ChooseAVICodec(const ConversionOptions& options, ConversionSettings& settings)
{
    if (AVIDVCodec(options.codec, settings.codec)) return;
    const bool pal = options.opselection == kOperationToPAL;
    if (!AVIBuiltInCodec(options.codec - kAVIDVRows, pal, settings.codec,
                         settings.destination_format))
        settings.codec = 0;
}

MediaFormat RawQuickTime(uint32_t cspace, const TelevisionSystem& system)
{
    return MediaFormat(RawVideoFormat{cspace, system.width, system.height, system.rate, 1, 0});
}

MediaFormat AnimationFormat(const TelevisionSystem& system)
{
    EncodedVideoFormat view{};
    view.cspace = kBGR24;
    view.w = system.width;
    view.h = system.height;
    view.frate = system.rate;
    view.encoding = kEncodingQTRLE;
    view.bitrate = -1.0f;
    view.framesize = -1;
    return MediaFormat(view);
}

void ChooseQuickTimeCodec(const ConversionOptions& options, ConversionSettings& settings)
{
    // The two families differ for a plain file conversion, deliberately: animation then takes the
    // PAL size and raw pictures the NTSC size. The engine replaces both by the source's.
    const TelevisionSystem& raw = SystemFor(options.opselection == kOperationToPAL);
    const TelevisionSystem& animation = SystemFor(options.opselection != kOperationToNTSC);
    uint32_t& bits = settings.conversion_options;
    switch (options.qcodec) {
        case 1:
            settings.codec = "dvpp"_4cc;
            bits &= ~static_cast<uint32_t>(kOptionDVCP);
            break;
        case 2:
            settings.codec = "AVdv"_4cc;
            break;
        case 3:
            settings.codec = "dvc "_4cc;
            bits |= kOptionSoftDV | kOptionDVCP;
            break;
        case 4:
            settings.codec = "rle "_4cc;
            settings.destination_format = AnimationFormat(animation);
            break;
        case 5:
            settings.codec = "raw "_4cc;
            settings.destination_format = RawQuickTime(kRGB24, raw);
            break;
        case 6:
            settings.codec = "raw "_4cc;
            settings.destination_format = RawQuickTime(kRGBX32, raw);
            break;
        case 7:
            settings.codec = "2vuy"_4cc;
            settings.destination_format = RawQuickTime(kYUVSigned, raw);
            break;
        default:
            settings.codec = "dvc "_4cc;
            bits |= kOptionDVCP;
    }
}

void ChooseCodec(const ConversionOptions& options, ConversionSettings& settings)
{
    settings.codec = 0;
    settings.destination_format = MediaFormat();
    const OutputFormat* format = FindOutputFormat(options.selection);
    switch (format ? format->codecs : CodecMenu::kNone) {
        case CodecMenu::kAVI:
            ChooseAVICodec(options, settings);
            break;
        case CodecMenu::kQuickTime:
            ChooseQuickTimeCodec(options, settings);
            break;
        case CodecMenu::kMatrox:
            settings.codec = options.mcodec == 0 ? "dvsd"_4cc : "dv25"_4cc;
            break;
        case CodecMenu::kNone:
            break;
    }
}

}  // namespace

void FillConversionSettings(const ConversionOptions& options, const DVCodecLists& codecs,
                            ConversionSettings& settings)
{
    settings.limits_are_in_frame = options.frameortime != 0;
    settings.from_video_frame = Limit(options.from, settings.limits_are_in_frame);
    settings.to_video_frame = Limit(options.to, settings.limits_are_in_frame);
    settings.four_channel_options = ChannelMask(options.channeloptions);
    settings.conversion_options = OptionBits(options);
    settings.audio_interleave_factor = options.aileave;
    settings.audio_search = CompanionSearch::kByName;
    settings.dv_data_conversion = static_cast<DataConversion>(options.dataconv);
    settings.dv_encoder = FindByName(codecs.encoders, options.DVencoder);
    settings.dv_decoder = FindByName(codecs.decoders, options.DVdecoder);
    settings.dvcpro_encoder = FindByName(codecs.encoders, options.DVCPROencoder);
    settings.dvcpro_decoder = FindByName(codecs.decoders, options.DVCPROdecoder);
    settings.op = static_cast<Operation>(options.opselection);
    settings.mode = ModeOf(options.opselection, options.mode);
    settings.timeresampling = static_cast<ResamplingMethod>(options.blendmode);
    settings.src_interlace = static_cast<FieldOrder>(options.srcint);
    settings.dst_interlace = static_cast<FieldTarget>(options.dstint);
    const bool pulldown = settings.timeresampling == ResamplingMethod::kPulldown &&
                          (settings.op == Operation::kToPAL || settings.op == Operation::kToNTSC);
    settings.deinterlace_source_first = pulldown ? options.deintPD : 0;
    settings.motiondetail = static_cast<MotionDetail>(options.motiondetail);
    ChooseCodec(options, settings);
}

}  // namespace kelvane
