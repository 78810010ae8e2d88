#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"

namespace kelvane {

// What a result lacks of its source. What the chosen options imply is no loss.
struct Losses {
    uint64_t frames_unread = 0;   // in the file, but the system could not read them: repeated
    uint64_t frames_missing = 0;  // promised, but beyond the end of the file
    uint64_t frames_short = 0;    // smaller than a frame is: repeated
    uint64_t frames_undecodable = 0;
    uint64_t frames_salvaged = 0;  // found without the index or header that should name them
    uint64_t frames_left_out = 0;  // shorter than half a frame of the film
    double sound_unread = 0;       // seconds that could not be read: silence
    double sound_silenced = 0;     // seconds that had no place in the output: silence
    int64_t first_frame = -1;      // of those unread, missing or short; from 0

    // Frames that make a run fail: they were to be had and were not.
    uint64_t FramesNotRead() const { return frames_unread + frames_missing + frames_short; }
    bool FailTheRun() const { return FramesNotRead() > 0 || sound_unread > 0; }
    bool Any() const
    {
        return FailTheRun() || frames_undecodable > 0 || frames_salvaged > 0 ||
               frames_left_out > 0 || sound_silenced > 0;
    }
};

// The losses that do not fail a run, as a sentence; empty when there are none.
std::string LossesInWords(const Losses& losses);

inline constexpr char kVideoReadError[] = "Error reading source file (video) !";

// "1 frame", "2 frames".
std::string FramesInWords(uint64_t count);
// Of a film that has too few frames to be converted.
std::string TooShortInWords(uint64_t frames);
// " 52 of 100 frames are missing, the first is number 48."; empty when none is.
std::string FramesMissing(const Losses& losses, uint64_t promised);
// Why a run failed that could not read all of its source: how many of the `promised` frames are
// missing and the first one's number, how much sound, and what the system said.
std::string ReadErrorInWords(const Losses& losses, uint64_t promised, Status reason);

}  // namespace kelvane
