#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/idle_options.h"
#include "cli/parsed_options.h"

namespace kelvane {

namespace {

// Options that the command line knows but that nothing serves yet.
struct FutureOption {
    const char* flag;
    bool takesValue;
};
constexpr FutureOption kFutureOptions[] = {
    {"--output-name", true},
    {"--dump", false},
    {"--omf-revision", true},
    {"--omf-audio", true},
};

CLI::Option* AddChoice(CLI::App& app, const std::string& flags, std::string& value,
                       const std::vector<std::string>& choices, const std::string& help)
{
    std::string names;
    for (const std::string& choice : choices)
        names += (names.empty() ? "" : "|") + choice;
    return app.add_option(flags, value, help)
        ->check(CLI::IsMember(choices, CLI::ignore_case).description(""))
        ->type_name(names);
}

void AddOutputOptions(CLI::App& app, ParsedOptions& parsed, Arguments& arguments)
{
    const std::string group = "Output";
    app.add_option("-o,--output", arguments.output,
                   "Write to this file (one source only). Without --format its extension picks the "
                   "format: .dv .dif .dvsd raw DV, .avi AVI Type 2 OpenDML, .mov QuickTime")
        ->type_name("FILE")
        ->group(group);
    app.add_option("--output-folder", parsed.folder,
                   "Write to this folder instead of the one of the source")
        ->type_name("FOLDER")
        ->group(group);
    AddChoice(app, "--overwrite", parsed.overwrite, {"never", "ask", "always"},
              "When the output exists: never, ask or always replace it. Default: ask on a "
              "terminal, else never")
        ->group(group);
    app.add_option("--format", parsed.format,
                   "Format of the output; --list-formats shows all. Default: mov-audio-64")
        ->type_name("NAME")
        ->group(group);
}

void AddConversionOptions(CLI::App& app, ParsedOptions& parsed, Arguments& arguments)
{
    const std::string group = "Conversion";
    AddChoice(app, "--to", parsed.to, {"pal", "ntsc", "same"},
              "Television standard of the output. Default: same as the source")
        ->group(group);
    AddChoice(app, "--mode", parsed.mode,
              {"scale", "crop", "letterbox", "panscan", "letterbox-panscan"},
              "How the picture fits the other standard: scale; to NTSC also crop; to PAL also "
              "letterbox, panscan, letterbox-panscan. Default: scale")
        ->group(group);
    AddChoice(app, "--resample", parsed.resample, {"nearest", "blend", "motion", "pulldown"},
              "How the frame rate is changed: repeat or drop the nearest fields, blend them, "
              "follow the motion, or 2:3:3:2:2 pulldown and its reverse. Default: blend")
        ->group(group);
    AddChoice(app, "--detail", parsed.detail, {"fine", "medium", "coarse"},
              "Detail of the motion search; fine is slower. Default: coarse")
        ->group(group);
    AddChoice(app, "--source-interlace", parsed.sourceInterlace, {"progressive", "upper", "lower"},
              "Which field of the source is first, if any. Default: lower, as DV has it")
        ->group(group);
    AddChoice(app, "--target-interlace", parsed.targetInterlace,
              {"same", "upper", "lower", "adaptive", "blur"},
              "Field order of the output, or a deinterlacer: adaptive rebuilds what moves, blur "
              "softens it. Default: same")
        ->group(group);
    app.add_flag("--allow-field-order-change", parsed.fieldOrderChange,
                 "With --resample blend: let fields change places where that blends less")
        ->group(group);
    app.add_flag("--deinterlace-source,!--no-deinterlace-source", parsed.deinterlaceSource,
                 "With --resample pulldown: deinterlace the source first, or not. Default: on")
        ->group(group);
    AddChoice(app, "--source-aspect", parsed.sourceAspect, {"auto", "4:3", "16:9"},
              "Picture format of the source. Default: auto")
        ->group(group);
    AddChoice(app, "--target-aspect", parsed.targetAspect, {"same", "4:3", "16:9"},
              "Picture format of the output. Default: same")
        ->group(group);
    AddChoice(app, "--data", parsed.data, {"same", "dv", "dvcpro25"},
              "Kind of DV data of the output. Default: same as the source")
        ->group(group);
    app.add_flag("--lines-486", parsed.lines486,
                 "Write 486 lines for NTSC when the output is not DV")
        ->group(group);
    app.add_option("--threads", arguments.threads, "Threads to work with; 0 is all cores")
        ->check(CLI::Range(0, 256).description(""))
        ->type_name("N")
        ->group(group);
}

void AddCodecOptions(CLI::App& app, ParsedOptions& parsed)
{
    const std::string group = "Codecs";
    app.add_option("--codec", parsed.codec,
                   "Codec of the output. AVI: microsoft-dv, mainconcept-dv, matrox-dv, vaio-dv, "
                   "adaptec-dv, miro-dv, canopus-dv, dv500, dvcpro25, rgb24, rgb32, yuy2, uyvy, "
                   "huffyuv-rgb, huffyuv-yuv. QuickTime: apple-dv, apple-dvcpro, avid-dv, softdv, "
                   "animation, rgb24, rgb32, yuv422. Matrox: matrox-dv, matrox-dvcpro25. Default: "
                   "the first of the format")
        ->type_name("NAME")
        ->group(group);
    const struct {
        const char *flag, *help;
        std::string& name;
    } rows[] = {
        {"--dv-encoder", "Codec that makes DV frames, or none; see --list-codecs",
         parsed.dvEncoder},
        {"--dv-decoder", "Codec that reads DV frames, or none", parsed.dvDecoder},
        {"--dvcpro-encoder", "Codec that makes DVCPRO25 frames, or none", parsed.dvcproEncoder},
        {"--dvcpro-decoder", "Codec that reads DVCPRO25 frames, or none", parsed.dvcproDecoder},
    };
    for (const auto& row : rows)
        app.add_option(row.flag, row.name, row.help)->type_name("NAME")->group(group);
    app.add_flag("--dvcp,!--no-dvcp", parsed.dvcp,
                 "QuickTime: name PAL DV \"dvcp\" rather than \"dvc \". Default: on")
        ->group(group);
    app.add_flag("--idx1,!--no-idx1", parsed.idx1, "AVI: write an \"idx1\" index. Default: on")
        ->group(group);
}

void AddSoundOptions(CLI::App& app, ParsedOptions& parsed, Arguments& arguments)
{
    const std::string group = "Sound";
    app.add_option("--interleave", arguments.options.aileave,
                   "Frames between two pieces of sound in a separate track: 1, 2, 3, 4, 5, 8, 10, "
                   "15, 20, 25 or 30. Default: 5")
        ->check(CLI::IsMember({1, 2, 3, 4, 5, 8, 10, 15, 20, 25, 30}).description(""))
        ->type_name("N")
        ->group(group);
    app.add_option("--audio", arguments.audio,
                   "WAV or AIFF file with the sound, instead of looking for one beside the source")
        ->type_name("FILE")
        ->group(group);
    AddChoice(
        app, "--sync", parsed.sync, {"auto", "off"},
        "Keep sound with its picture on tapes whose sound runs a little fast or slow, or only "
        "count its samples. Default: auto")
        ->group(group);
    AddChoice(
        app, "--sound", parsed.sound, {"adjusted", "untouched"},
        "In a copy into DV frames: put the sound anew into each frame, or leave what the tape "
        "has in it bit for bit. Default: adjusted")
        ->group(group);
    AddChoice(
        app, "--channels", parsed.channels, {"auto", "1+2", "3+4", "mix", "all"},
        "Which of a tape's four channels go on: auto keeps all in DV frames of the same "
        "standard and else takes 1+2; mix is 1 with 3 and 2 with 4; all makes a track of four. "
        "Default: auto")
        ->group(group);
    app.add_flag("--no-companion-audio", parsed.noCompanionAudio,
                 "Do not look for a WAV or AIFF file beside the source")
        ->group(group);
}

void AddReportOptions(CLI::App& app, ParsedOptions& parsed)
{
    const std::string group = "Information";
    app.add_flag("--describe", parsed.describe, "Say in one line what each file is")->group(group);
    app.add_flag("--list-formats", parsed.listFormats, "List the output formats")->group(group);
    app.add_flag("--list-codecs", parsed.listCodecs, "List the codecs found on this system")
        ->group(group);
    AddChoice(app, "--progress", parsed.progress, {"bar", "plain", "json", "none"},
              "How to show progress; json prints one object a line on standard output. Default: "
              "bar on a terminal, else plain")
        ->group(group);
    app.set_version_flag("--version", "kelvane-convert " KELVANE_VERSION, "Print the version")
        ->group(group);
    app.get_help_ptr()->description("Print this help")->group(group);
}

void AddSampleOptions(CLI::App& app, ParsedOptions& parsed, Arguments& arguments)
{
    const std::string group = "Sample clips";
    app.add_option("--make-sample", arguments.sample.path,
                   "Make a raw DV file with a moving test picture to try things out")
        ->type_name("FILE")
        ->group(group);
    AddChoice(app, "--sample-system", parsed.sampleSystem, {"pal", "ntsc"},
              "Television standard of the sample. Default: pal")
        ->group(group);
    AddChoice(app, "--sample-aspect", parsed.sampleAspect, {"4:3", "16:9"},
              "Picture format of the sample. Default: 4:3")
        ->group(group);
    app.add_option("--sample-seconds", arguments.sample.seconds,
                   "Length of the sample. Default: 10")
        ->check(CLI::Range(1, 86400).description(""))
        ->type_name("N")
        ->group(group);
    app.add_option("--sample-rate", arguments.sample.rate,
                   "Sampling rate of the sample's sound: 32000, 44100 or 48000. Default: 48000")
        ->check(CLI::IsMember({32000, 44100, 48000}).description(""))
        ->type_name("HZ")
        ->group(group);
}

// Accepts them so that the refusal can be clear.
void AddFutureOptions(CLI::App& app, std::optional<std::string>& used)
{
    for (const FutureOption& future : kFutureOptions) {
        const auto note = [&used, future](const CLI::results_t&) {
            used = future.flag;
            return true;
        };
        CLI::Option* option = app.add_option(future.flag, note, "");
        option->group("")->expected(future.takesValue ? 1 : 0);
    }
}

}  // namespace

bool ParseArguments(int count, char** values, Arguments& arguments, int& exitStatus)
{
    CLI::App app(
        "Converts DV video files: from one container to another bit for bit, and from PAL "
        "to NTSC and back.",
        "kelvane-convert");
    app.footer(
        "Exit status: 0 when all files are done and nothing was lost; 1 when one failed, was\n"
        "skipped or stopped, or is done with losses; 2 for wrong usage. A frame that can't be\n"
        "read is replaced by the one before it: the film goes on and ends as failed, with the\n"
        "number of frames that are missing. Ctrl-C finishes the file under way, a second one\n"
        "ends at once.");
    ParsedOptions parsed;
    std::optional<std::string> future;
    app.add_option("files", arguments.files, "Files to convert")->type_name("FILE");
    AddOutputOptions(app, parsed, arguments);
    AddConversionOptions(app, parsed, arguments);
    AddCodecOptions(app, parsed);
    AddSoundOptions(app, parsed, arguments);
    AddReportOptions(app, parsed);
    AddSampleOptions(app, parsed, arguments);
    AddFutureOptions(app, future);
    exitStatus = kExitWrongUsage;
    try {
        app.parse(count, values);
    } catch (const CLI::Success& asked) {
        std::ostringstream out;
        exitStatus = app.exit(asked, out, std::cerr) == 0 ? kExitDone : kExitWrongUsage;
        std::cout << out.str();  // flushed, and looked at, at the end
        return false;
    } catch (const CLI::Error& error) {
        std::cerr << "kelvane-convert: " << error.what() << '\n';
        return false;
    }
    const std::string refusal =
        future ? "Option " + *future + ": not available yet." : TranslateOptions(parsed, arguments);
    if (refusal.empty()) {
        if (arguments.command == Command::kConvert)
            arguments.idle =
                IdleOptions(arguments, [&](const char* name) { return app.count(name) > 0; });
        return true;
    }
    std::cerr << "kelvane-convert: " << refusal << '\n';
    return false;
}

}  // namespace kelvane
