#pragma once

#include <cstdint>
#include <string>

#include "engine/options/conversion_choices.h"
#include "engine/sound/picture_pace.h"

namespace kelvane {

// What is settled about the sound of one conversion before its frame loop begins.
struct AudioSetup {
    bool source_is_pal = false;
    bool destination_is_pal = false;
    bool source_is_dv = false;    // its frames can carry sound
    bool separate_track = false;  // sound goes to a track of its own and not into frames
    int32_t interleave = 1;       // frames between two chunks of that track
    bool companions = false;      // look for companion files on the first frame
    std::string source_path;      // beside which they lie
    std::string companion;        // a file named by the user, instead of the search
    bool follows = false;         // its pictures, see PictureSync
    bool untouched = false;       // audio blocks go from frame to frame as they are
    bool nowhere = false;         // the destination has no place for sound
    ChannelChoice channels = ChannelChoice::kAuto;
    PicturePace pace;

    bool FramesToFrames() const { return source_is_dv && !separate_track; }
    bool SameStandard() const { return source_is_pal == destination_is_pal; }
    // The pictures run so fast that frames cannot hold the sound that belongs to them.
    bool OutrunsFrames() const { return follows && pace.speed > 1.01; }
    // Of four channels in frames, the other two keep their blocks.
    bool KeepsOtherPair() const
    {
        const bool wanted = channels == ChannelChoice::kAuto || channels == ChannelChoice::kAll;
        return wanted && FramesToFrames() && SameStandard();
    }
};

}  // namespace kelvane
