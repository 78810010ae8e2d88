#pragma once

#include <cstdint>

namespace kelvane {

// When the two fields of a frame are seen: at once, or those of the upper or lower lines first.
enum class FieldOrder : uint32_t { kProgressive = 0, kUpperFirst = 1, kLowerFirst = 2 };

// The two television systems of DV, each with the figures that follow from it.
struct TelevisionSystem {
    int32_t width;
    int32_t height;
    float rate;             // frames a second; 29.97 and not 30000/1001
    int32_t dv_frame_size;  // bytes of one 25 Mbit/s DV frame (IEC 61834-2, SMPTE 314M)
};

inline constexpr TelevisionSystem kPAL = {720, 576, 25.0f, 144000};
inline constexpr TelevisionSystem kNTSC = {720, 480, 29.97f, 120000};
// Of a whole NTSC picture; DV keeps 480 of them.
inline constexpr int32_t kLinesOfWholeNTSC = 486;

constexpr const TelevisionSystem& SystemFor(bool pal)
{
    return pal ? kPAL : kNTSC;
}

}  // namespace kelvane
