#pragma once

#include <string>

#include "cli/arguments.h"

namespace kelvane {

// The command line as the parser fills it: words, checked one by one but not yet together.
struct ParsedOptions {
    std::string to = "same";
    std::string format;
    std::string overwrite;
    std::string folder;
    std::string progress;
    std::string sampleSystem = "pal";
    std::string sampleAspect = "4:3";
    bool describe = false, listFormats = false, listCodecs = false;
    std::string codec, mode = "scale", resample = "blend", detail = "coarse";
    std::string sourceInterlace = "lower", targetInterlace = "same";
    std::string sourceAspect = "auto", targetAspect = "same";
    std::string data = "same";
    std::string sync = "auto", sound = "adjusted", channels = "auto";
    bool fieldOrderChange = false, deinterlaceSource = true, lines486 = false;
    bool idx1 = true, dvcp = true, noCompanionAudio = false;
    std::string dvEncoder, dvDecoder, dvcproEncoder, dvcproDecoder;
};

// Fills the arguments from the words. Empty when all is well, else why they cannot be taken.
std::string TranslateOptions(const ParsedOptions& parsed, Arguments& arguments);

}  // namespace kelvane
