#include "engine/loop/tape_facts.h"

namespace kelvane {

void TapeFacts::LookAt(std::span<uint8_t> frame)
{
    fFrame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    Timecode timecode;
    const bool told = fFrame.GetTimecode(timecode);
    if (!fKnowsFirst) {
        fKnowsFirst = true;
        fIsDVCPRO = fFrame.IsDVCPRO();
        fIsWide = fFrame.IsWidescreen();
        if (told) fFirst = timecode;
    }
    if (told) fLast = timecode;
}

}  // namespace kelvane
