#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane {

// How the chroma planes of a DV picture are sampled. Sites are at the left pixel of each pair or
// four (IEC 61834-2). The lines of 4:2:0 chroma belong to the two fields in turn, so that each
// field is converted by itself and never mixes with the other.
enum class ChromaSampling { k420, k411 };

// Planes of 8-bit BT.601 luma (16 to 235) and chroma (16 to 240), one line after the other.
struct PictureLayout {
    int32_t width;   // pixels, a multiple of 4
    int32_t height;  // lines, a multiple of 4
    ChromaSampling chroma;
};

struct PlaneRow {
    uint8_t* data;
    ptrdiff_t pitch;  // bytes from line to line
};
struct Planes {
    PlaneRow y, u, v;
};

// Most pixels a line may have.
inline constexpr int32_t kMaxPlaneWidth = 720;

// Between a picture in memory, top row first, of 3 (B, G, R) or 4 (B, G, R, unused) bytes a pixel,
// and planes. Integer arithmetic, the same bytes on every machine; the unused byte is set to 0.
void PictureToPlanes(const uint8_t* picture, size_t pixelBytes, const PictureLayout& layout,
                     const Planes& planes);
void PlanesToPicture(const Planes& planes, const PictureLayout& layout, uint8_t* picture,
                     size_t pixelBytes);

}  // namespace kelvane
