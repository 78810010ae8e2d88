#pragma once

#include <cstdint>

#include "engine/options/conversion_settings.h"

namespace kelvane {

// Where the output frame being made lies on the source's time axis, in source frames.
class TimePosition {
public:
    TimePosition(const ConversionSettings& settings, bool sourceIsPAL, bool destinationIsPAL);

    double Position() const { return fPosition; }
    // Source frames from one output frame to the next.
    double Step() const { return fStep; }
    // Source frames to read before the frame at this position can be made.
    int64_t FramesToRead() const;
    // Moves on to the next output frame, after the one of this index was written or dropped.
    void Advance(int64_t outputIndex, uint64_t framesRead);

private:
    double fPosition = 0;
    double fPrevious = 0;
    double fStep = 1.0;
    bool fRepeatsFirst = false;  // pulldown with a change of field order starts a frame late
    // Reverse pulldown passes one source frame in each thousand read.
    bool fSkips = false;
    double fNextSkip = 0;
};

}  // namespace kelvane
