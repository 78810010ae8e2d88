#pragma once

#include <cstdint>
#include <vector>

#include "base/status.h"
#include "dv/dif_frame.h"
#include "engine/sound/audio_fifo.h"

namespace kelvane {

inline constexpr size_t kStereoSample = 4;  // bytes: two channels of 16 bits

// Moves the sound of source frames into the FIFO, two channels of 16 bits. Every frame gives one
// frame's length of sound, so that picture and sound stay in step whatever the tape has lost.
class FrameAudioReader {
public:
    explicit FrameAudioReader(bool source_is_pal) : fPAL(source_is_pal) {}

    // The rate of the frame's sound in hertz; 0 when it has no audio source pack.
    static uint32_t RateOf(DIFFrame& frame);
    // `rate` is that of the sound in the FIFO. A frame without sound or of another rate gives
    // silence; one whose number of samples cannot be right for its system is cut or padded to the
    // usual number. -1 when the FIFO is full: the sound is short by that much.
    Status ExtractFrameAudio(DIFFrame& frame, uint32_t rate, AudioFifo& fifo);

    // A frame's length of silence. -1 when the FIFO is full.
    Status PutSilence(uint32_t rate, AudioFifo& fifo);

private:
    size_t UsualSamples(uint32_t rate);

    bool fPAL;
    uint64_t fUsualFrames = 0;  // frames that were given the usual number
    std::vector<uint8_t> fScratch = std::vector<uint8_t>(10400);
};

// Puts whole samples of all channels into a frame: one channel is heard on both, of more than two
// the first two are taken. `sound` is overwritten on the way.
void EmbedFrameAudio(DIFFrame& frame, std::span<uint8_t> sound, uint32_t rate, uint32_t channels);

}  // namespace kelvane
