#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/options/conversion_options.h"

namespace kelvane {

enum class Command { kConvert, kDescribe, kListFormats, kListCodecs, kMakeSample };
enum class ProgressStyle { kBar, kPlain, kJSON, kNone };

struct SampleArguments {
    std::string path;
    bool pal = true;
    bool wide = false;
    int32_t seconds = 10;
    int32_t rate = 48000;  // hertz of the sound
};

// What the user asked for.
struct Arguments {
    Command command = Command::kConvert;
    std::vector<std::string> files;
    std::string output;         // of one source; empty: named after the source
    ConversionOptions options;  // names of codecs are empty where the default is meant
    Aspect source_aspect = Aspect::kAsSource;
    Aspect target_aspect = Aspect::kAsSource;
    std::string audio;  // companion audio file; empty: search beside the source
    bool search_companions = true;
    int32_t threads = 0;  // 0 is all cores
    ProgressStyle progress = ProgressStyle::kPlain;
    SampleArguments sample;
    std::vector<std::string> idle;  // lines about options that change nothing
};

// Exit statuses of the program.
enum ExitStatus : int { kExitDone = 0, kExitFileFailed = 1, kExitWrongUsage = 2 };

// Parses the command line. True when the program goes on with `arguments`; else it ends with
// `exitStatus`, and what there was to say has been said.
bool ParseArguments(int count, char** values, Arguments& arguments, int& exitStatus);

}  // namespace kelvane
