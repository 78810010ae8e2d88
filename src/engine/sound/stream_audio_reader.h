#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/status.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/audio_stream.h"
#include "engine/sound/sample_converter.h"

namespace kelvane {

// Fills the FIFO from the audio stream of a source, with samples brought to 16 bits on the way.
class StreamAudioReader {
public:
    StreamAudioReader(AudioStream& stream, const SampleCoding& coding)
        : fStream(stream), fConverter(coding), fSilence(2 * stream.LeadingSilence())
    {
    }

    // Reads chunks until the FIFO holds more than `enough` bytes; nothing when it does already. A
    // chunk that cannot be read is silence. kOK, or the status of the read that ended the stream:
    // then or before, for it is not tried again.
    Status Fill(AudioFifo& fifo, size_t enough);
    // Passes over what the stream still has; bytes of 16-bit samples.
    uint64_t PassRest();
    bool Ended() const { return fStatus != kOK && fPoured == fWaiting.size() && fSilence == 0; }

    // Bytes of 16-bit samples that could not be read or had no place in the FIFO, and what the
    // system said first.
    uint64_t LostBytes() const { return fLost; }
    Status Reason() const { return fReason; }

private:
    // A claim of a chunk larger than this is taken for damage.
    static constexpr uint32_t kMostChunk = 256 << 20;  // bytes

    Status ReadInPlace(AudioFifo& fifo, uint32_t room, uint32_t& bytes);
    Status ReadAside(uint32_t room, uint32_t& bytes);
    void PourWaiting(AudioFifo& fifo);
    void PourSilence(AudioFifo& fifo);
    void TakeFailure(Status status);

    AudioStream& fStream;
    SampleConverter fConverter;
    Status fStatus = kOK;  // of the read that ended the stream
    std::vector<uint8_t> fChunk;
    std::vector<uint8_t> fWaiting;  // samples of a chunk that the FIFO could not take whole
    size_t fPoured = 0;             // of these
    uint64_t fSilence;              // bytes in front, or in place of what could not be read
    uint64_t fLost = 0;
    Status fReason = kOK;
};

}  // namespace kelvane
