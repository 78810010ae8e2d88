#include "engine/sound/frame_sound_map.h"

#include <algorithm>
#include <cmath>

namespace kelvane {

void FrameSoundMap::Forget(double frame)
{
    while (fEdges.size() > 2 && static_cast<double>(fFirst + 1) < frame) {
        fEdges.pop_front();
        fFirst++;
    }
}

// Bytes of a known frame.
double FrameSoundMap::Length(size_t index) const
{
    if (fEdges.size() < 2) return 1;
    return std::max(1.0, static_cast<double>(fEdges[index + 1] - fEdges[index]));
}

double FrameSoundMap::FrameAt(double byte) const
{
    const auto next = std::ranges::upper_bound(
        fEdges, byte, {}, [](uint64_t edge) { return static_cast<double>(edge); });
    const auto place = std::max<std::ptrdiff_t>(next - fEdges.begin() - 1, 0);
    const size_t index = std::min(static_cast<size_t>(place), Last());
    return static_cast<double>(fFirst + index) +
           (byte - static_cast<double>(fEdges[index])) / Length(index);
}

double FrameSoundMap::ByteAt(double frame) const
{
    const double place = frame - static_cast<double>(fFirst);
    const auto index =
        static_cast<size_t>(std::clamp(std::floor(place), 0.0, static_cast<double>(Last())));
    return static_cast<double>(fEdges[index]) +
           (place - static_cast<double>(index)) * Length(index);
}

}  // namespace kelvane
