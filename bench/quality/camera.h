#pragma once

#include <cstdint>
#include <vector>

#include "base/television.h"
#include "sample/moving_picture.h"

namespace kelvane {

// Shoots the moving scene as an interlaced camera does: each line of a field gathers the light of
// two lines of the frame (field integration) for the time that the shutter is open. Without that
// every edge is harder, in place and in time, than in any picture that a person converts.
class Camera {
public:
    // `tempo` 1 is the scene's own: what moves fastest goes 22 pixels in a PAL frame.
    Camera(bool pal, double tempo);

    const TelevisionSystem& System() const { return fSystem; }

    // The lines of one parity, in the middle of the exposure at `seconds`: B, G, R, 0.
    void ShootField(uint8_t* picture, int parity, double seconds);
    // Both fields of a frame, half a frame apart, lower field first.
    void ShootFrame(uint8_t* picture, int64_t number);

private:
    static constexpr double kExposure = 1.0 / 60;  // seconds
    static constexpr int32_t kRowsALine = 4;       // of the drawn scene
    static constexpr int kMoments = 4;             // in an exposure; each sees every second row

    void GatherLine(uint8_t* line, int32_t y);

    const TelevisionSystem& fSystem;
    double fTempo;
    MovingPicture fScene;
    std::vector<uint8_t> fDrawn;   // one picture for each moment
    std::vector<uint16_t> fLight;  // sums of the samples of one line
};

}  // namespace kelvane
