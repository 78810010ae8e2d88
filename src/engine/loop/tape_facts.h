#pragma once

#include <cstdint>
#include <span>

#include "dv/dif_frame.h"

namespace kelvane {

// What the DV frames of a source tell: the first one of the whole file, every one of the time.
class TapeFacts {
public:
    // To be called with each frame in turn.
    void LookAt(std::span<uint8_t> frame);

    bool IsDVCPRO() const { return fIsDVCPRO; }
    bool IsWide() const { return fIsWide; }
    // Zeros without time code packs.
    const Timecode& FirstTimecode() const { return fFirst; }
    const Timecode& LastTimecode() const { return fLast; }

private:
    DIFFrame fFrame;
    bool fKnowsFirst = false;
    bool fIsDVCPRO = false;
    bool fIsWide = false;
    Timecode fFirst, fLast;
};

}  // namespace kelvane
