#pragma once

#include <cstdint>

#include "base/result.h"
#include "engine/containers/source.h"
#include "engine/loop/frame_reader.h"
#include "engine/loop/frame_ring.h"
#include "engine/loop/losses.h"
#include "engine/sound/audio_transfer.h"

namespace kelvane {

// Brings the frames of a source into the ring, and their sound where it goes.
class FrameFeed {
public:
    FrameFeed(Source& source, AudioTransfer& audio);

    // The reads of one turn. Fails with the words for sound that cannot be used, and for a film
    // that does not begin.
    Result<> Read(int64_t frames);
    // True when the source has ended and the ring has run dry.
    bool IsOver() const;

    const FrameRing& Ring() const { return fRing; }
    const FrameReader& Reader() const { return fReader; }
    // What could not be had of the source's frames.
    const Losses& Lost() const { return fLosses; }
    // Frames that were to be read, with those behind the end of the source.
    uint64_t FramesRead() const { return fFramesRead; }
    // Of the last read of the source's audio stream.
    Status AudioStatus() const { return fAudioStatus; }

private:
    Result<> ReadFrame();
    Result<> CheckStart() const;

    AudioTransfer& fAudio;
    Losses fLosses;
    FrameReader fReader;
    FrameRing fRing;
    uint64_t fFramesRead = 0;
    Status fAudioStatus = kOK;
};

}  // namespace kelvane
