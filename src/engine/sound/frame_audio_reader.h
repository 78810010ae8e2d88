#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/status.h"
#include "dv/dif_frame.h"
#include "engine/options/conversion_choices.h"
#include "engine/sound/audio_fifo.h"

namespace kelvane {

inline constexpr size_t kStereoSample = 4;  // bytes: two channels of 16 bits

// Moves the sound of source frames into a FIFO, channels of 16 bits. Every frame gives one frame's
// length of sound, so that picture and sound stay in step whatever the tape has lost.
class FrameAudioReader {
public:
    // `bridged`: lost samples of 16 bits are bridged, as those of 12 bits always are.
    FrameAudioReader(bool source_is_pal, ChannelChoice choice, bool bridged)
        : fPAL(source_is_pal), fChoice(choice), fBridged(bridged)
    {
    }

    // What the frame says of its sound; a rate of 0 when that is nothing.
    static AudioInfo InfoOf(DIFFrame& frame);

    // Channels that go into the FIFO: two, or four where all of a tape's are wanted.
    void SetChannels(uint32_t channels) { fChannels = channels; }
    // `rate` is that of the sound in the FIFO. A frame without sound or of another rate gives
    // silence; one whose number of samples cannot be right for its system is cut or padded to the
    // usual number. -1 when the FIFO is full: the sound is short by that much.
    Status ExtractFrameAudio(DIFFrame& frame, uint32_t rate, AudioFifo& fifo);

    // A frame's length of silence. -1 when the FIFO is full.
    Status PutSilence(uint32_t rate, AudioFifo& fifo);

    // True when frames had something to hear on channels that nobody asked to leave out.
    bool LeftOutSound() const { return fLeftOutSound; }

private:
    size_t Group() const { return size_t{2} * fChannels; }
    size_t Extract(DIFFrame& frame, const AudioInfo& info);
    size_t UsualSamples(uint32_t rate);

    bool fPAL;
    ChannelChoice fChoice;
    bool fBridged;
    bool fLeftOutSound = false;
    uint32_t fChannels = 2;
    uint64_t fUsualFrames = 0;  // frames that were given the usual number
    std::vector<uint8_t> fScratch = std::vector<uint8_t>(15552);
};

// Puts whole samples of all channels into a frame: one channel is heard on both, of more than two
// the first two are taken. `sound` is overwritten on the way.
void EmbedFrameAudio(DIFFrame& frame, std::span<uint8_t> sound, uint32_t rate, uint32_t channels);

}  // namespace kelvane
