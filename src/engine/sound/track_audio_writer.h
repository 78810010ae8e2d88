#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/status.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/audio_track.h"

namespace kelvane {

// Hands sound from the FIFO to a separate track, a chunk after so many frames. What the FIFO
// lacks in mid-run stays owed and comes with a later chunk, so that the track ends with the
// pictures.
class TrackAudioWriter {
public:
    explicit TrackAudioWriter(int32_t interleave) : fInterleave(interleave) {}

    // Bytes of one sample of all channels; chunks hold whole ones as long as the sound goes on.
    void SetGroup(size_t bytes) { fGroup = bytes; }
    // Bytes owed to the next chunk.
    size_t Pending() const { return fPending; }
    // Bytes of silence in place of what the FIFO lacked.
    uint64_t Padded() const { return fPadded; }
    void Owe(uint64_t bytes) { fPending += static_cast<size_t>(bytes); }
    // A frame was written, and its sound is owed. When it is a chunk's turn, writes one; `ended`
    // says that nothing will come into the FIFO any more, so that silence takes the place of what
    // it lacks. The status of the write.
    Status FrameWritten(AudioFifo& fifo, bool ended, AudioTrack& track);
    // The last chunk: what is owed, with silence for what the FIFO lacks, and what else the FIFO
    // holds, up to `one_frame` bytes more.
    Status Finish(AudioFifo& fifo, size_t one_frame, AudioTrack& track);

private:
    Status WriteOwed(AudioFifo& fifo, bool pad, AudioTrack& track);

    int32_t fInterleave;  // frames between two chunks
    int32_t fFramesSinceChunk = 0;
    size_t fGroup = 1;
    size_t fPending = 0;  // bytes
    uint64_t fPadded = 0;
    std::vector<uint8_t> fBuffer = std::vector<uint8_t>(288000);
};

}  // namespace kelvane
