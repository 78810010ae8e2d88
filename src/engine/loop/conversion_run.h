#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/status.h"
#include "dv/dif_frame.h"
#include "engine/containers/destination.h"
#include "engine/containers/source.h"
#include "engine/loop/conversion_host.h"
#include "engine/loop/frame_reader.h"
#include "engine/loop/frame_ring.h"
#include "engine/options/conversion_settings.h"
#include "engine/pictures/conversion_state.h"
#include "engine/pictures/picture_decoder.h"
#include "engine/pictures/picture_encoder.h"
#include "engine/pictures/time_resampler.h"
#include "engine/sound/audio_transfer.h"
#include "engine/timing/time_position.h"

namespace kelvane {

// The numbers of the source frames that a picture takes its lines from.
struct WovenFrames {
    int64_t even, odd;
    bool operator==(const WovenFrames&) const = default;
};

// One conversion under way: everything that is open and everything that is counted.
struct ConversionRun {
    ConversionRun(const ConversionSettings& settings, Source& source, Destination& destination,
                  AudioTransfer& audio, ConversionHost* host, ConversionState& state);
    ConversionRun(const ConversionRun&) = delete;
    ConversionRun& operator=(const ConversionRun&) = delete;

    const ConversionSettings& settings;
    Source& source;
    Destination& destination;
    AudioTransfer& audio;
    ConversionHost* host;  // may be null
    ConversionState& state;

    Losses losses;
    FrameReader reader;
    FrameRing ring;
    TimePosition time;
    PictureDecoder decoder;
    PictureEncoder encoder;
    TimeResampler resampler;
    std::vector<uint8_t> picture;      // the output picture
    std::optional<WovenFrames> woven;  // what it is, when it is nothing more
    int32_t drop_counter = 0;          // output frames dropped by pulldown

    uint64_t frames_planned = 0;  // that the run will write
    uint64_t frames_written = 0;
    uint64_t frames_read = 0;   // turns that tried to read, also after the end of the source
    int64_t frames_output = 0;  // turns, whether they wrote or not
    Status audio_status = kOK;  // of the last read of the source's audio stream
    Wish wish = Wish::kGoOn;    // of the host

    DIFFrame frame;            // looks at one frame after another
    bool knows_first = false;  // the first DV frame was looked at
    bool is_dvcpro = false;    // what it said, for the whole file
    bool is_wide = false;
    Timecode first_timecode, last_timecode;

    std::string message;       // why the run failed
    Status write_error = kOK;  // of the destination
};

}  // namespace kelvane
