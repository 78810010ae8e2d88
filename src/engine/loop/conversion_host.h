#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvane {

// How far a conversion is.
struct ConversionProgress {
    uint64_t frames_written = 0;  // that stand in the output
    uint64_t frames_planned = 0;  // that the run will make; never less, and the same at the end
    uint64_t frames_read = 0;     // of the source, with the turns after its end
};

// What becomes of a conversion under way. However it ends, the file is finished cleanly.
enum class Wish {
    kGoOn,
    kStop,  // a person stops it
    kEnd    // the system ends the program, and nobody asked for it
};

// The surroundings of one conversion.
class ConversionHost {
public:
    virtual ~ConversionHost() = default;
    // Before anything is touched: the destination and all files beside it that will be written, and
    // replaced where they exist. False leaves everything as it is.
    virtual bool MayWrite(const std::vector<std::string>& files)
    {
        static_cast<void>(files);
        return true;
    }
    // After each output frame; once more at the end when fewer came than were planned, where the
    // answer does not count.
    virtual Wish Progress(const ConversionProgress& progress) = 0;
};

}  // namespace kelvane
