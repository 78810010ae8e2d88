#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/containers/source.h"
#include "engine/loop/losses.h"

namespace kelvane {

// What came of reading the next frame.
struct FrameArrival {
    enum Kind {
        kFrame,
        kRepeat,   // the frame before stands for this one, without its sound
        kNothing,  // nothing more comes
    };
    Kind kind = kNothing;
    size_t size = 0;  // bytes of a frame
};

// The frames of a source in order, whatever is wrong with some of them. What cannot be had is
// counted, and a frame before it takes its place, so that a scratched disk gives all that it has.
class FrameReader {
public:
    FrameReader(Source& source, Losses& losses);

    // Reads the next frame into `buffer`.
    FrameArrival Next(std::span<uint8_t> buffer);

    // Frames that came so far, repeats among them.
    uint64_t Given() const { return static_cast<uint64_t>(fNext); }
    // Frames that the source promises.
    uint64_t Promised() const { return static_cast<uint64_t>(fPromised); }
    // kOK as long as frames come; then what the end of the film was like: kEnd, kMissing, kUnread
    // (nothing readable behind, or the first frame, or ten seconds of frames that are none of this
    // film), or kReferenceMissing.
    Status EndStatus() const { return fEnd; }
    // What the system said first; kOK when it said nothing.
    Status Reason() const { return fReason.SystemError() ? fReason : fSource.Trouble(); }
    // Frames that were larger than one of their system is, and of which the first bytes were taken.
    uint64_t CutFrames() const { return fCutFrames; }

private:
    // What is the matter with a frame.
    enum class Fault { kNone, kHeld, kUnread, kShort, kBad, kMissing, kReferenceMissing, kEnd };

    // What a read gave of a frame.
    struct Reading {
        Fault fault;
        size_t size = 0;  // of a frame without fault
    };

    Reading Read(int64_t number, std::span<uint8_t> buffer);
    Reading CheckDV(std::span<const uint8_t> chunk);
    FrameArrival Give(size_t size);
    FrameArrival FirstGood(std::span<uint8_t> buffer, Fault first);
    FrameArrival PassGap(std::span<uint8_t> buffer, Fault first);
    FrameArrival Repeat(Fault fault);
    FrameArrival End(Fault fault);
    void Count(Fault fault, uint64_t frames);

    Source& fSource;
    Losses& fLosses;
    int64_t fPromised;
    size_t fFrameBytes = 0;  // of a DV frame; 0 for other pictures
    size_t fLeastBytes;      // of another frame
    int64_t fSecond;         // frames
    int64_t fNext = 0;
    int64_t fGapEnd = 0;            // frames from fNext to here cannot be had
    std::vector<Fault> fGapFaults;  // of the first of them
    size_t fGapAt = 0;
    int64_t fBadInARow = 0;
    bool fCut = false;  // the frame just read was longer than a frame
    uint64_t fCutFrames = 0;
    Status fStatus = kOK;  // of the last read
    Status fReason = kOK;
    Status fEnd = kOK;
};

}  // namespace kelvane
