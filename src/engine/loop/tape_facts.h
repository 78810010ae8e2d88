#pragma once

#include <cstdint>
#include <span>

#include "dv/dif_frame.h"

namespace kelvane {

// What the DV frames of a source tell: one at its beginning of the whole file, every one of the
// time.
class TapeFacts {
public:
    // To be called with each frame in turn; `frames` is that one and those behind it that are
    // known. The first time the first of them that has video auxiliary data tells what the file is,
    // or else the frame itself: tapes can begin with a blank one.
    void LookAt(std::span<const std::span<uint8_t>> frames);

    bool IsDVCPRO() const { return fIsDVCPRO; }
    bool IsWide() const { return fIsWide; }
    // Zeros without time code packs.
    const Timecode& FirstTimecode() const { return fFirst; }
    const Timecode& LastTimecode() const { return fLast; }

private:
    void Settle(std::span<const std::span<uint8_t>> frames);

    DIFFrame fFrame;
    bool fKnowsFirst = false;
    bool fIsDVCPRO = false;
    bool fIsWide = false;
    Timecode fFirst, fLast;
};

}  // namespace kelvane
