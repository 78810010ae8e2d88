#include "engine/loop/tape_facts.h"

namespace kelvane {

void TapeFacts::Settle(std::span<const std::span<uint8_t>> frames)
{
    bool settled = false;
    for (const std::span<uint8_t> frame : frames) {
        fFrame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
        const int wide = fFrame.IsWidescreen();
        if (settled && wide < 0) continue;
        fIsDVCPRO = fFrame.IsDVCPRO();
        fIsWide = wide;
        settled = true;
        if (wide >= 0) return;
    }
}

void TapeFacts::LookAt(std::span<const std::span<uint8_t>> frames)
{
    if (!fKnowsFirst) Settle(frames);
    const std::span<uint8_t> frame = frames.front();
    fFrame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    Timecode timecode;
    if (fFrame.GetTimecode(timecode)) {
        if (!fKnowsFirst) fFirst = timecode;
        fLast = timecode;
    }
    fKnowsFirst = true;
}

}  // namespace kelvane
