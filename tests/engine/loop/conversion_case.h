#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/byte_cursor.h"
#include "dv/dif_frame.h"
#include "engine/containers/source.h"
#include "engine/loop/convert_file.h"
#include "engine/options/conversion_options.h"
#include "sample/sample_clip.h"
#include "support/picture_noise.h"
#include "support/temp_folder.h"

namespace kelvane {

using ProgressCall = std::function<Wish(const ConversionProgress&)>;

// Files made by the test and the conversions of them, chosen as on the command line: by the names
// of formats and codecs.
class ConversionCase : public testing::Test {
protected:
    // Codec modules come from `folder`.
    explicit ConversionCase(const std::string& folder = CodecFolder());

    // Frames of a clip as raw DV.
    std::string MakeClip(const std::string& name, int64_t frames, const SampleOptions& options);
    std::string MakeClip(int64_t frames, bool pal = true)
    {
        return MakeClip("source.dv", frames, {.pal = pal});
    }
    // The format and codec of the output; "" is the first row.
    void Choose(const std::string& format, const std::string& codec = "");
    int Convert(const std::string& source, const std::string& destination);
    // For all conversions of a way that must succeed; the path of the destination.
    std::string Converted(const std::string& source, const std::string& name);
    std::string Converted(const std::string& source, const std::string& name,
                          const std::string& format, const std::string& codec = "")
    {
        Choose(format, codec);
        return Converted(source, name);
    }

    TempFolder fFolder;
    CodecDrivers fDrivers;
    DVCodecLists fCodecs;
    CodecRegistry fRegistry;
    ConversionState fState;
    ConversionOptions fOptions;
    ConversionResult fResult;
    // Last changes to the settings.
    std::function<void(ConversionSettings&)> fAdjust;
    ProgressCall fAtProgress;
};

inline DIFFrame View(Bytes& frame)
{
    return DIFFrame(frame.data(), uint32_t(frame.size()));
}

// What stands in a file, as its own reader gives it.
struct Film {
    explicit Film(const std::string& path);

    std::unique_ptr<Source> source;
    std::vector<Bytes> frames;
    Bytes track;  // of a separate stream
    // Sound of the frames, two channels.
    Bytes SoundOfFrames();
    // All frames, with the sound of DV frames cleared: it is always embedded anew.
    Bytes Pictures() const;
};

// A frame of a file as a picture of B, G, R, X, top row first; empty when it cannot be decoded.
Bytes DecodedFrame(const std::string& path, size_t number, ConversionState& state);

}  // namespace kelvane
