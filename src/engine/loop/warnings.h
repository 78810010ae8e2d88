#pragma once

#include <string>
#include <vector>

#include "engine/containers/destination.h"
#include "engine/containers/source.h"
#include "engine/loop/frame_loop.h"
#include "engine/options/conversion_settings.h"
#include "engine/sound/audio_transfer.h"

namespace kelvane {

// What a run has open.
struct OpenFiles {
    Source& source;
    Destination& destination;
    AudioTransfer& audio;
    const std::string& path;  // of the destination
};

// What a user should know of a run; what its end shows, only when it came to the film's end,
// `whole`.
std::vector<std::string> WarningsOf(const FrameLoop& loop, const OpenFiles& files,
                                    const ConversionSettings& settings, bool whole);

}  // namespace kelvane
