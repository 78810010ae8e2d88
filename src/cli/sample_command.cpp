#include "cli/sample_command.h"

#include <cmath>
#include <filesystem>
#include <iostream>

#include "base/status.h"
#include "cli/overwrite_question.h"
#include "sample/sample_clip.h"

namespace kelvane {

int MakeSample(const SampleArguments& arguments, int32_t overwrite, const CodecDrivers& drivers)
{
    std::error_code error;
    if (std::filesystem::exists(arguments.path, error) &&
        OverwriteQuestion(overwrite).Ask(arguments.path) != OverwriteAnswer::kOverwrite) {
        std::cerr << arguments.path << ": Skipped, file exists\n";
        return kExitFileFailed;
    }
    SampleOptions options;
    options.pal = arguments.pal;
    options.wide = arguments.wide;
    options.rate = static_cast<uint32_t>(arguments.rate);
    SampleClip clip(drivers, options);
    if (clip.InitCheck() != kOK) {
        std::cerr << "kelvane-convert: DV Encoder is not set.\n";
        return kExitFileFailed;
    }
    const auto frames =
        static_cast<int64_t>(std::lround(arguments.seconds * double(clip.System().rate)));
    const Status written = WriteSampleFile(arguments.path, clip, frames);
    if (written != kOK) {
        std::cerr << arguments.path << ": cannot be written" << written.Reason() << '\n';
        return kExitFileFailed;
    }
    return kExitDone;
}

}  // namespace kelvane
