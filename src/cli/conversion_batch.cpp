#include "cli/conversion_batch.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "base/status.h"
#include "cli/output_path.h"
#include "cli/overwrite_question.h"
#include "cli/progress_display.h"
#include "cli/run_settings.h"
#include "cli/stop_request.h"
#include "engine/loop/convert_file.h"
#include "engine/options/output_formats.h"
#include "media/samples/audio_file.h"

namespace kelvane {

namespace {

class Batch : private ConversionHost {
public:
    Batch(const Arguments& arguments, const CodecDrivers& drivers)
        : fArguments(arguments),
          fCodecs(ListDVCodecs(drivers)),
          fRegistry(MakeCodecRegistry(drivers)),
          fState(fRegistry, arguments.threads),
          fDisplay(arguments.progress),
          fQuestion(arguments.options.overwrite),
          fSettings(SettingsFor(arguments, fCodecs))
    {
    }

    int Run()
    {
        bool allDone = true;
        for (const std::string& file : fArguments.files) {
            if (fCancelled || RequestedWish() != Wish::kGoOn) return kExitFileFailed;
            fDisplay.Start(file);
            allDone = ConvertOne(file) && allDone;
        }
        return allDone ? kExitDone : kExitFileFailed;
    }

private:
    Wish Progress(const ConversionProgress& progress) override
    {
        fDisplay.Frames(progress.frames_written, progress.frames_planned);
        return RequestedWish();
    }

    bool Fail(const std::string& message)
    {
        fDisplay.Failed(message);
        return false;
    }

    // What cannot be read at all is told in the system's words.
    bool MayRead(const std::string& source)
    {
        std::error_code error;
        const auto status = std::filesystem::status(source, error);
        if (error) return Fail(error.message());
        if (!std::filesystem::is_regular_file(status)) return Fail("Not a regular file.");
        if (access(source.c_str(), R_OK) != 0) return Fail(strerror(errno));
        return true;
    }

    bool MayConvert(const std::string& source, const std::string& output)
    {
        if (const auto set = CodecsAreSet(fSettings); !set) return Fail(set.Error().message);
        if (IsSameFile(source, output)) return Fail("The output is the source file itself.");
        return true;
    }

    bool MayWrite(const std::vector<std::string>& files) override
    {
        return std::ranges::all_of(files,
                                   [this](const std::string& file) { return MayReplace(file); });
    }

    bool MayReplace(const std::string& file)
    {
        std::error_code error;
        if (!std::filesystem::is_regular_file(file, error)) return true;
        switch (fQuestion.Ask(file)) {
            case OverwriteAnswer::kOverwrite:
                return true;
            case OverwriteAnswer::kCancel:
                fCancelled = true;
                [[fallthrough]];
            default:
                fDisplay.Skipped("Skipped, file exists");
                return false;
        }
    }

    bool ConvertOne(const std::string& file)
    {
        const std::string output = OutputPath(fArguments, file);
        if (!MayRead(file) || !MayConvert(file, output)) return false;
        ConversionResult result;
        const int32_t type = TypeOfDestination(fArguments.options.selection);
        // Its status is the outcome's.
        static_cast<void>(ConvertFile(file, output, type, fSettings, this, &result, fState));
        for (const std::string& warning : result.warnings)
            fDisplay.Warn(warning);
        switch (result.outcome) {
            case Outcome::kStopped:
                fDisplay.Failed("Interrupted.", &result);
                return false;
            case Outcome::kEnded:
                fDisplay.Failed("Interrupted by the system.", &result);
                return false;
            case Outcome::kRefused:
                return false;  // told already
            case Outcome::kFailed:
                fDisplay.Failed(result.message, &result);
                return false;
            case Outcome::kDone:
                fDisplay.Done(output, result);
        }
        return !result.losses.Any();
    }

    const Arguments& fArguments;
    DVCodecLists fCodecs;
    CodecRegistry fRegistry;
    ConversionState fState;
    ProgressDisplay fDisplay;
    OverwriteQuestion fQuestion;
    ConversionSettings fSettings;
    bool fCancelled = false;
};

}  // namespace

int ConvertFiles(const Arguments& arguments, const CodecDrivers& drivers)
{
    if (!arguments.audio.empty() && AudioFileTypeOf(arguments.audio.c_str()) == kNoAudioFile) {
        std::cerr << arguments.audio << ": cannot be read or is neither WAV nor AIFF\n";
        return kExitFileFailed;
    }
    for (const std::string& line : arguments.idle)
        std::cerr << "kelvane-convert: " << line << '\n';
    return Batch(arguments, drivers).Run();
}

}  // namespace kelvane
