#include "cli/idle_options.h"

#include "engine/options/output_formats.h"

namespace kelvane {

namespace {

bool HasSoundTrack(const OutputFormat& format)
{
    switch (format.type) {
        case kDestinationAVI2:
        case kDestinationAVI2OpenDML:
        case kDestinationAVI2Reference:
            return true;
        default:
            return std::string(format.name).starts_with("mov-audio");
    }
}

// True where a DV file has an "idx1" by choice; others have one always, or never.
bool LeavesOldIndex(int32_t type)
{
    return type == kDestinationAVI1 || type == kDestinationAVI2 ||
           type == kDestinationAVI1Reference || type == kDestinationAVI2Reference;
}

}  // namespace

std::vector<std::string> IdleOptions(const Arguments& arguments,
                                     const std::function<bool(const char*)>& given)
{
    const ConversionOptions& options = arguments.options;
    const OutputFormat* format = FindOutputFormat(options.selection);
    if (!format) return {};
    const bool quicktime = format->codecs == CodecMenu::kQuickTime;
    const OutputCodec* codec =
        FindOutputCodec(format->codecs, quicktime ? options.qcodec : options.codec);
    const bool dv = !codec || codec->kind == CodecKind::kDV;
    const bool converts = options.opselection != kOperationConvert;
    const auto method = static_cast<ResamplingMethod>(options.blendmode);
    const struct {
        const char* option;
        bool acts;
        const char* needs;
    } rows[] = {
        {"--mode", converts, "--to pal or --to ntsc"},
        {"--resample", converts, "--to pal or --to ntsc"},
        {"--detail", converts && method == ResamplingMethod::kMotion,
         "--resample motion and another standard"},
        {"--allow-field-order-change", converts && method == ResamplingMethod::kBlend,
         "--resample blend and another standard"},
        {"--deinterlace-source", converts && method == ResamplingMethod::kPulldown,
         "--resample pulldown and another standard"},
        {"--lines-486", !dv && options.opselection != kOperationToPAL,
         "pictures that are not DV, in NTSC"},
        {"--data", dv, "DV as the codec of the output"},
        {"--dvcp", quicktime && dv, "QuickTime with a DV codec"},
        {"--idx1", dv && LeavesOldIndex(format->type),
         "avi1, avi2 or a reference AVI with a DV codec"},
        {"--audio", dv || HasSoundTrack(*format), "a format with sound"},
        {"--sync", dv || HasSoundTrack(*format), "a format with sound"},
        {"--channels", dv || HasSoundTrack(*format), "a format with sound"},
        {"--sound", dv && !converts && !HasSoundTrack(*format),
         "a copy into DV frames of the same standard"},
        {"--interleave", HasSoundTrack(*format), "a format with a separate sound track"},
    };
    std::vector<std::string> lines;
    for (const auto& row : rows)
        if (!row.acts && given(row.option))
            lines.push_back(std::string(row.option) + " has no effect here: it needs " + row.needs +
                            ".");
    return lines;
}

}  // namespace kelvane
