#pragma once

#include <gmock/gmock.h>

#include <string>

#include "interop/peer_test.h"
#include "sample/sample_clip.h"

namespace kelvane {

// Conversions by the program, looked at with other people's programs.
class ConversionPeerTest : public PeerTest {
protected:
    // Writes clip.dv.
    void MakeClip(int64_t frames, const SampleOptions& options) const
    {
        SampleClip clip(LoadCodecDrivers(CodecFolder()), options);
        EXPECT_EQ(0, WriteSampleFile(Path("clip.dv"), clip, frames));
    }
    // The name of the result.
    std::string Converted(const std::string& source, const std::string& options,
                          const std::string& name) const
    {
        Run(KELVANE_CONVERT " --overwrite always --progress none " + options + " " + source +
            " -o " + name);
        return name;
    }
    // What ffmpeg decodes, one frame after the other.
    Bytes Pictures(const std::string& name, const std::string& pixels = "bgr0") const
    {
        return FromFfmpeg(name, "-map 0:v -vsync passthrough -f rawvideo -pix_fmt " + pixels);
    }
};

inline std::string To(bool pal)
{
    return pal ? "--to pal " : "--to ntsc ";
}

}  // namespace kelvane
