#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

using Picture = std::vector<uint8_t>;  // B, G, R, 0

// Gives the picture of a frame; false when there is none.
using Frames = std::function<bool(int64_t number, Picture& picture)>;

// An open DV encoder or decoder of the module for 32-bit pictures.
OpenedCodec OpenDVCodec(const CodecDrivers& drivers, bool pal, bool decoder);

// Compares clips of one television system, field by field in luma.
class FieldJudge {
public:
    FieldJudge(const CodecDrivers& drivers, bool pal, int64_t frames);

    // The frames of a raw DV file.
    Frames FileFrames(const std::string& path);
    // PSNR in dB over all fields, over those of the odd and those of the even lines; 0 when a frame
    // is missing. Some frames at either end are left out.
    std::array<double, 3> Compare(const Frames& shown, const Frames& expected);

private:
    class LumaOf;

    bool fPAL;
    int64_t fFrames;
    OpenedCodec fDecoder;
};

}  // namespace kelvane
