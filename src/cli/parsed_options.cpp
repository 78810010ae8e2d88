#include "cli/parsed_options.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <map>

#include "base/four_cc.h"
#include "engine/containers/container.h"
#include "engine/options/output_formats.h"

namespace kelvane {

namespace {

std::string Lower(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    });
    return text;
}

// A format by its name, its four-character code or its exact menu text.
const OutputFormat* FormatCalled(const std::string& name)
{
    for (const OutputFormat& format : OutputFormats())
        if (Lower(name) == format.name || name == format.text ||
            Lower(name) == FourCCText(format.selection))
            return &format;
    return nullptr;
}

const OutputFormat* FormatOfExtension(const std::string& path)
{
    static const std::map<std::string, const char*> kByExtension = {
        {".mov", "mov-audio-64"}, {".avi", "avi2-odml"}, {".dv", "dv"},   {".dif", "dv"},
        {".dvsd", "dv"},          {".dvd", "du1"},       {".omf", "omf"},
    };
    const auto row = kByExtension.find(Lower(std::filesystem::path(path).extension().string()));
    return row == kByExtension.end() ? nullptr : FormatCalled(row->second);
}

bool IsBuilt(const OutputFormat& format)
{
    return ContainerFor(format.type) != nullptr;
}

// The functions below answer with a refusal, or with an empty text when all is well.

// A codec by its name, its exact menu text or its four-character code.
std::string ChooseCodecRow(const std::string& name, const OutputFormat& format,
                           ConversionOptions& options)
{
    const auto rows = OutputCodecs(format.codecs);
    size_t row = 0;
    while (!name.empty() && row < rows.size() && Lower(name) != rows[row].name &&
           name != rows[row].text && Lower(name) != Lower(FourCCText(rows[row].code)))
        row++;
    if (!name.empty() && row >= rows.size())
        return "Format " + std::string(format.name) + " has no codec " + name + "; see --help.";
    int32_t& chosen = format.codecs == CodecMenu::kQuickTime ? options.qcodec
                      : format.codecs == CodecMenu::kMatrox  ? options.mcodec
                                                             : options.codec;
    chosen = static_cast<int32_t>(row);
    return {};
}

std::string ChooseFormat(const ParsedOptions& parsed, Arguments& arguments)
{
    const bool named = !parsed.format.empty();
    const OutputFormat* format = named                      ? FormatCalled(parsed.format)
                                 : arguments.output.empty() ? FormatCalled("mov-audio-64")
                                                            : FormatOfExtension(arguments.output);
    if (!format && named) return "Unknown format " + parsed.format + "; see --list-formats.";
    if (!format)
        return "No format goes with the extension of " + arguments.output +
               "; name one with --format.";
    if (!IsBuilt(*format)) return std::string("Format ") + format->name + ": not available yet.";
    arguments.options.selection = format->selection;
    arguments.options.last_output_file = std::string("<source>") + format->extension;
    return ChooseCodecRow(parsed.codec, *format, arguments.options);
}

// Where a name stands in a list; the parser has checked that it does.
int32_t IndexIn(const std::string& name, std::initializer_list<const char*> names)
{
    int32_t index = 0;
    for (const char* known : names) {
        if (Lower(name) == known) return index;
        index++;
    }
    return 0;
}

std::string ChooseMode(const ParsedOptions& parsed, ConversionOptions& options)
{
    const std::string mode = Lower(parsed.mode);
    if (options.opselection == kOperationToNTSC) {
        options.mode = mode == "crop";
        return mode == "scale" || mode == "crop" ? "" : "--mode " + mode + " goes with --to pal.";
    }
    options.mode = IndexIn(mode, {"scale", "letterbox", "panscan", "letterbox-panscan"});
    return mode == "crop" ? "--mode crop goes with --to ntsc." : "";
}

void FillConversion(const ParsedOptions& parsed, Arguments& arguments)
{
    ConversionOptions& options = arguments.options;
    options.blendmode = IndexIn(parsed.resample, {"nearest", "blend", "motion", "pulldown"});
    options.motiondetail = IndexIn(parsed.detail, {"fine", "medium", "coarse"});
    options.srcint = IndexIn(parsed.sourceInterlace, {"progressive", "upper", "lower"});
    options.dstint =
        IndexIn(parsed.targetInterlace, {"same", "upper", "lower", "adaptive", "blur"});
    options.dataconv = IndexIn(parsed.data, {"same", "dv", "dvcpro25"});
    arguments.source_aspect =
        static_cast<Aspect>(IndexIn(parsed.sourceAspect, {"auto", "4:3", "16:9"}));
    arguments.target_aspect =
        static_cast<Aspect>(IndexIn(parsed.targetAspect, {"same", "4:3", "16:9"}));
    options.Bafoch = parsed.fieldOrderChange;
    options.deintPD = parsed.deinterlaceSource;
    options.wr486 = parsed.lines486;
    options.add_idx1 = parsed.idx1;
    options.qt_dvcp = parsed.dvcp;
    options.sync = Lower(parsed.sync) == "auto";
    options.sndkeep = Lower(parsed.sound) == "untouched";
    options.channels = IndexIn(parsed.channels, {"auto", "1+2", "3+4", "mix", "all"});
    arguments.search_companions = !parsed.noCompanionAudio;
    // Empty: the default, which depends on what is installed.
    options.DVencoder = parsed.dvEncoder;
    options.DVdecoder = parsed.dvDecoder;
    options.DVCPROencoder = parsed.dvcproEncoder;
    options.DVCPROdecoder = parsed.dvcproDecoder;
}

void FillBehaviour(const ParsedOptions& parsed, Arguments& arguments)
{
    const bool terminal = isatty(STDERR_FILENO);
    ConversionOptions& options = arguments.options;
    const std::string overwrite =
        parsed.overwrite.empty() ? terminal ? "ask" : "never" : parsed.overwrite;
    options.overwrite = IndexIn(overwrite, {"never", "ask", "always"});
    const std::string to = Lower(parsed.to);
    options.opselection = to == "pal"    ? kOperationToPAL
                          : to == "ntsc" ? kOperationToNTSC
                                         : kOperationConvert;
    if (!parsed.folder.empty()) options.last_output_folder = parsed.folder;
    constexpr ProgressStyle kStyles[] = {ProgressStyle::kBar, ProgressStyle::kPlain,
                                         ProgressStyle::kJSON, ProgressStyle::kNone};
    const std::string progress =
        parsed.progress.empty() ? terminal ? "bar" : "plain" : parsed.progress;
    arguments.progress = kStyles[IndexIn(progress, {"bar", "plain", "json", "none"})];
    arguments.sample.pal = Lower(parsed.sampleSystem) == "pal";
    arguments.sample.wide = parsed.sampleAspect == "16:9";
}

std::string ChooseCommand(const ParsedOptions& parsed, Arguments& arguments)
{
    if (!arguments.sample.path.empty()) arguments.command = Command::kMakeSample;
    if (parsed.listCodecs) arguments.command = Command::kListCodecs;
    if (parsed.listFormats) arguments.command = Command::kListFormats;
    if (parsed.describe) arguments.command = Command::kDescribe;
    const bool wantsFiles =
        arguments.command == Command::kConvert || arguments.command == Command::kDescribe;
    if (wantsFiles && arguments.files.empty()) return "No file given; see --help.";
    if (!wantsFiles && !arguments.files.empty())
        return "This option takes no file: " + arguments.files.front() + ".";
    if (!arguments.output.empty() && arguments.files.size() > 1)
        return "-o takes one source file only; use --output-folder for several.";
    if (parsed.noCompanionAudio && !arguments.audio.empty())
        return "--audio and --no-companion-audio exclude each other.";
    if (Lower(parsed.sound) == "untouched" && !arguments.audio.empty())
        return "--audio and --sound untouched exclude each other.";
    return {};
}

}  // namespace

std::string TranslateOptions(const ParsedOptions& parsed, Arguments& arguments)
{
    FillBehaviour(parsed, arguments);
    FillConversion(parsed, arguments);
    std::string refusal = ChooseCommand(parsed, arguments);
    if (!refusal.empty() || arguments.command != Command::kConvert) return refusal;
    refusal = ChooseMode(parsed, arguments.options);
    return refusal.empty() ? ChooseFormat(parsed, arguments) : refusal;
}

}  // namespace kelvane
