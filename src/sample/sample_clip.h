#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"
#include "base/television.h"
#include "platform/codec_modules/codec_drivers.h"
#include "sample/moving_picture.h"
#include "sample/sample_sound.h"

namespace kelvane {

struct SampleOptions {
    bool pal = true;
    bool wide = false;    // 16:9, else 4:3
    bool dvcpro = false;  // DVCPRO25, else DV
    FieldOrder order = FieldOrder::kLowerFirst;
    Scene scene{};
    uint32_t rate = 48000;  // hertz of the sound: 32000, 44100 or 48000
    uint32_t channels = 2;  // four at 32000 only, in 12 bits
};

// Makes DV frames of a moving picture with sound, time code and display format packs. The time code
// counts from 00:00:00:00 without dropping numbers.
class SampleClip {
public:
    // Uses the first DV encoder among the codecs; InitCheck() is -1 when there is none.
    SampleClip(const CodecDrivers& codecs, const SampleOptions& options);

    int InitCheck() const { return fInitCheck; }
    const TelevisionSystem& System() const { return SystemFor(fOptions.pal); }
    // Frame `number`, System().dv_frame_size bytes; empty when the codec failed. Valid until the
    // next call.
    std::span<const uint8_t> Frame(int64_t number);
    // The picture that the last frame was made of, B, G, R, 0.
    std::span<const uint8_t> Picture() const { return fPicture; }

private:
    SampleOptions fOptions;
    MovingPicture fScene;
    SampleSound fSound;
    OpenedCodec fEncoder;
    int fInitCheck;
    std::vector<uint8_t> fPicture;
    std::vector<uint8_t> fFrame;
};

// Writes `frames` frames as a raw DV file. 0 or -1.
Status WriteSampleFile(const std::string& path, SampleClip& clip, int64_t frames);

}  // namespace kelvane
