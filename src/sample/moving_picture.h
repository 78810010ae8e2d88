#pragma once

#include <cstdint>
#include <vector>

#include "base/television.h"

namespace kelvane {

struct Scene {
    bool counter = true;     // a counter for people, a bar code of field numbers for programs
    double cut_seconds = 0;  // a hard cut to other colours each time so much has passed; 0 none
};

// Draws a scene that moves evenly in time: colour bars with a white bar running across them, a
// disc going round, a textured strip sliding by. Any moment can be drawn, so that the same motion
// can be had at any frame rate and as the truth to compare a conversion with.
class MovingPicture {
public:
    MovingPicture(int32_t width, int32_t height, Scene scene = {});

    // Draws frame `number` into width * height pixels of B, G, R, 0, top row first. The fields are
    // half a frame apart in time and carry the field numbers 2 * number and 2 * number + 1 in the
    // order of time; both are 2 * number when progressive.
    void DrawFrame(uint8_t* picture, int64_t number, double framesPerSecond,
                   FieldOrder order) const;
    // Draws every second line, beginning with `parity`, as seen at `seconds`.
    void DrawField(uint8_t* picture, int parity, double seconds) const;

    // The field number that the lines of this parity carry, as the bar code shows it; -1 when the
    // code cannot be read. For pictures of any size that hold the whole of a drawn one.
    static int64_t ReadFieldNumber(const uint8_t* picture, int32_t width, int32_t height,
                                   int parity);

private:
    using Row = std::vector<uint32_t>;

    // The middle of a row in the lines of a PAL picture: all heights show the same.
    double DrawnLine(int32_t y) const;
    void DrawBars(uint32_t* row, int32_t y, double seconds) const;
    void DrawDisc(uint32_t* row, int32_t y, double seconds) const;
    void DrawStrip(uint32_t* row, int32_t y, double seconds) const;
    void DrawNumbers(uint8_t* picture, int parity, int64_t number, int64_t field,
                     double framesPerSecond) const;

    int32_t fWidth;
    int32_t fHeight;
    Scene fScene;
    Row fBars;     // one row of colour bars
    Row fRamp;     // one row of grey from black to white
    Row fTexture;  // one period of the sliding strip
};

}  // namespace kelvane
