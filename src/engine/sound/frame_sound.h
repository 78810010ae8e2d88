#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>

#include "base/status.h"
#include "dv/dif_frame.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/audio_setup.h"
#include "engine/sound/frame_audio_reader.h"
#include "engine/sound/frame_sound_map.h"
#include "engine/sound/resampler.h"

namespace kelvane {

// Sound of one rate on its way into a FIFO of another.
class RateBridge {
public:
    RateBridge(uint32_t channels, uint32_t from, uint32_t to);

    // What frames give goes here.
    AudioFifo& Input() { return fInput; }
    // Brings `bytes` that were put there across; how many bytes they become, now or later.
    uint64_t Cross(size_t bytes, AudioFifo& fifo);
    // What is still on its way.
    Status End(AudioFifo& fifo) { return fResampler.Run(fInput, true, fifo); }
    // True when the FIFO could not take all of what was brought last.
    bool Lost() const { return fStatus != kOK; }

private:
    size_t fGroup;
    uint32_t fFrom, fTo;              // hertz
    uint64_t fTaken = 0, fGiven = 0;  // samples
    Status fStatus = kOK;
    AudioFifo fInput;
    Resampler fResampler;
};

// The sound in the frames of a source, frame by frame into the FIFO. A place in it is counted in
// bytes from the beginning of all that ever went through it.
class FrameSound {
public:
    FrameSound(const AudioSetup& setup, AudioFifo& fifo, FrameSoundMap* map);

    uint32_t Channels() const { return fChannels; }
    // True when the frame has the first sound, and Begin is to be called before it is taken.
    bool IsFirst(DIFFrame& frame) const;
    // Silence stands for the frames so far, of which `past` samples were given out already. `info`
    // is what the first frame with sound says, or is assumed.
    void Begin(const AudioInfo& info, uint64_t past);
    // Takes the sound of the next frame.
    void Take(DIFFrame& frame);
    // The next frame stands for one that could not be had: silence.
    void TakeSilence();

    // No more frames come.
    Status Finish();

    // From a place on the sound has another rate, where the FIFO takes several.
    struct RateMark {
        uint64_t at;
        uint32_t rate;
    };
    std::deque<RateMark>& Marks() { return fMarks; }
    // Bytes that were given out before Begin.
    uint64_t Past() const { return fPast; }

    uint64_t LostBytes() const { return fLost; }
    // Seconds of frames that had no sound, where silence stands for it.
    double SilentSeconds() const;
    bool LeftOutSound() const { return fReader.LeftOutSound(); }

private:
    size_t Group() const { return size_t{2} * fChannels; }
    void ChangeRate(uint32_t rate);
    AudioFifo& Target() { return fBridge ? fBridge->Input() : fFifo; }
    void Count(size_t before, Status status);

    bool fPAL;
    bool fOneRate;  // in the FIFO, for good
    ChannelChoice fChoice;
    bool fWide;  // a track, which can hold four channels
    AudioFifo& fFifo;
    FrameSoundMap* fMap;  // null: nobody asks
    FrameAudioReader fReader;
    uint32_t fChannels = 2;
    uint32_t fFirstRate = 0;  // of the first sound, hertz; 0 while there was none
    uint32_t fRate = 0;       // of the frames now
    std::unique_ptr<RateBridge> fBridge;
    uint64_t fFramesBefore = 0;  // before the first with sound
    uint64_t fSilentFrames = 0;  // behind it, without any
    uint64_t fPut = 0;           // bytes
    uint64_t fPast = 0;
    uint64_t fLost = 0;  // bytes that the FIFO could not take
    std::deque<RateMark> fMarks;
};

}  // namespace kelvane
