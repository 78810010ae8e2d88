#pragma once

#include <cstdint>
#include <vector>

namespace kelvane {

// A moment of the clip maker's scene as a 32-bit picture, B, G, R, 0. Even lines show the moment
// `even`, odd lines the moment `odd`, in frames; a progressive picture has both alike.
std::vector<uint8_t> DrawMovingPicture(int32_t width, int32_t height, double even, double odd);

}  // namespace kelvane
