#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/sound/frame_sound_map.h"
#include "engine/sound/picture_pace.h"

namespace kelvane {

// How many samples of a channel a frame takes.
struct SampleRange {
    uint32_t least, most;
};

// Sound against the pictures that it was recorded with. As long as they are less than a quarter of
// a frame apart nothing is done; from then on to the end sound follows its picture, without a jump.
// Asked once for each output frame that is written, in turn; bytes are those of the map.
class PictureSync {
public:
    // With a speed of their own sound follows the pictures from the beginning.
    explicit PictureSync(const PicturePace& pace);

    // The sound of the source's frames is told here, ahead of the pictures.
    FrameSoundMap& Map() { return fMap; }

    // To be asked before anything else of an output frame: true when its sound is to follow.
    // `given` bytes went to the frames before.
    bool Follows(uint64_t given);
    // How many samples of `group` bytes are to go into the frame: its own, and up to eight more or
    // less to come nearer, within what it can hold.
    uint32_t Samples(uint64_t given, size_t group, SampleRange range) const;
    // How fast a separate track is to go by the end of the frame, which lasts `seconds`; 1 is as
    // recorded. `given` bytes were played before. To be asked of each frame, for it measures.
    double Speed(double given, double bytes_a_second, double seconds);
    // The next frame.
    void Advance();

private:
    double Shown(uint64_t frame) const;
    double At(uint64_t frame) const { return fMap.ByteAt(Shown(frame)); }

    FrameSoundMap fMap;
    PicturePace fPace;
    bool fFollows;
    uint64_t fFrame = 0;

    // Of a separate track: what is measured goes through two equal low passes, so that the few
    // samples by which frames differ are not heard.
    struct Smooth {
        double first = 0, second = 0;
        void Take(double value, double share);
    };
    Smooth fMeasured, fLead;
    double fSpeed;
};

}  // namespace kelvane
