#include "cli/run_settings.h"

namespace kelvane {

namespace {

// Puts codec names where the user gave none: the settings' default if it is installed, else the
// first found.
ConversionOptions WithCodecs(ConversionOptions options, const DVCodecLists& codecs)
{
    const ConversionOptions defaults;
    const auto choose = [](std::string& name, const std::string& usual, const DVCodecList& list) {
        if (!name.empty()) return;
        const bool first = !FindByName(list, usual) && !list.empty();
        name = first ? list.front().long_name : usual;
    };
    choose(options.DVencoder, defaults.DVencoder, codecs.encoders);
    choose(options.DVdecoder, defaults.DVdecoder, codecs.decoders);
    choose(options.DVCPROencoder, defaults.DVCPROencoder, codecs.encoders);
    choose(options.DVCPROdecoder, defaults.DVCPROdecoder, codecs.decoders);
    return options;
}

}  // namespace

ConversionSettings SettingsFor(const Arguments& arguments, const DVCodecLists& codecs)
{
    ConversionSettings settings;
    FillConversionSettings(WithCodecs(arguments.options, codecs), codecs, settings);
    settings.src_aspect = arguments.source_aspect;
    settings.dst_aspect = arguments.target_aspect;
    if (!arguments.search_companions) settings.audio_search = CompanionSearch::kNone;
    if (!arguments.audio.empty()) {
        settings.audio_search = CompanionSearch::kInFile;
        settings.audio_file = arguments.audio.c_str();
    }
    return settings;
}

}  // namespace kelvane
