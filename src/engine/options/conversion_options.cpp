#include "engine/options/conversion_options.h"

#include <cstdlib>

#include "base/four_cc.h"
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

int32_t RowOf(const ConversionOptions& options, CodecMenu menu)
{
    if (menu == CodecMenu::kQuickTime) return options.qcodec;
    return menu == CodecMenu::kMatrox ? options.mcodec : options.codec;
}

void ChooseCodec(const ConversionOptions& options, ConversionSettings& settings)
{
    settings.codec = 0;
    settings.destination_format = MediaFormat();
    const OutputFormat* format = FindOutputFormat(options.selection);
    const CodecMenu menu = format ? format->codecs : CodecMenu::kNone;
    const OutputCodec* codec = FindOutputCodec(menu, RowOf(options, menu));
    if (!codec) return;
    settings.codec = codec->code;
    settings.destination_format =
        PictureFormat(*codec, settings.op == Operation::kToPAL, settings.op == Operation::kToNTSC);
    settings.conversion_options |= codec->options_set;
    settings.conversion_options &= ~codec->options_clear;
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
    settings.sound_follows = options.sync != 0;
    settings.sound_untouched = options.sndkeep != 0;
    settings.channels = static_cast<ChannelChoice>(options.channels);
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
