#include "cli/conversion_batch.h"

#include <unistd.h>

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
#include "engine/convert_file.h"
#include "engine/output_formats.h"
#include "media/audio_file.h"

namespace kelvane {

namespace {

int ShowProgress(uint32_t framesRead, uint64_t total, uintptr_t cookie)
{
    reinterpret_cast<ProgressDisplay*>(cookie)->Frames(framesRead, total);
    return StopRequested() ? 1 : 0;
}

class Batch {
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
        fSettings.progress = ShowProgress;
        fSettings.progress_cookie = reinterpret_cast<uintptr_t>(&fDisplay);
    }

    int Run()
    {
        bool allDone = true;
        for (const std::string& file : fArguments.files) {
            if (fCancelled || StopRequested()) return kExitFileFailed;
            fDisplay.Start(file);
            allDone = ConvertOne(file) && allDone;
        }
        return allDone ? kExitDone : kExitFileFailed;
    }

private:
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

    // Asks what must be asked before anything is touched.
    bool MayWrite(const std::string& source, const std::string& output)
    {
        std::string missing;
        if (!CodecsAreSet(fSettings, missing)) return Fail(missing);
        if (IsSameFile(source, output)) return Fail("The output is the source file itself.");
        std::error_code error;
        if (!std::filesystem::is_regular_file(output, error)) return true;
        switch (fQuestion.Ask(output)) {
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
        if (!MayRead(file) || !MayWrite(file, output)) return false;
        ConversionResult result;
        const int32_t type = TypeOfDestination(fArguments.options.selection);
        if (ConvertFile(file, output, type, fSettings, &result, fState) != kOK)
            return Fail(result.message);
        if (StopRequested()) return Fail("Interrupted.");
        if (!result.warning.empty()) fDisplay.Warn(result.warning);
        fDisplay.Done(output);
        return true;
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
    CatchStopRequests();
    return Batch(arguments, drivers).Run();
}

}  // namespace kelvane
