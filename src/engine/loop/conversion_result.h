#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/loop/losses.h"

namespace kelvane {

// How a run ended.
enum class Outcome {
    kDone,
    kStopped,  // a person stopped it
    kEnded,    // the system ended the program, and nobody asked for it
    kRefused,  // the host did not let it begin
    kFailed    // whatever else happened as well
};

// What happened to one file.
struct ConversionResult {
    Outcome outcome = Outcome::kFailed;
    uint64_t frames_read = 0;         // of the source, with the turns after its end
    uint64_t frames_written = 0;      // that stand in the output
    uint16_t first_timecode[4] = {};  // hours, minutes, seconds, frames; 0 without time code packs
    bool destination_is_pal = false;
    uint16_t last_timecode[4] = {};
    int32_t status = 0;
    std::string message;                // the error in words, shown to the user
    std::vector<std::string> warnings;  // what a user should know of a run that went well
    Losses losses;                      // what the output lacks of the source
    std::string audio_file_1, audio_file_2, audio_file_3, audio_file_4;  // companions in use
};

}  // namespace kelvane
