#include "engine/sound/track_audio_writer.h"

#include <algorithm>

#include "base/status.h"

namespace kelvane {

Status TrackAudioWriter::FrameWritten(AudioFifo& fifo, bool ended, AudioTrack& track)
{
    if (++fFramesSinceChunk < fInterleave) return kOK;
    fFramesSinceChunk = 0;
    return WriteOwed(fifo, ended, track);
}

Status TrackAudioWriter::Finish(AudioFifo& fifo, size_t one_frame, AudioTrack& track)
{
    fPending = std::clamp(fifo.Count(), fPending, fPending + one_frame);
    return WriteOwed(fifo, true, track);
}

Status TrackAudioWriter::WriteOwed(AudioFifo& fifo, bool pad, AudioTrack& track)
{
    // A chunk is never larger than what the ring can hold: after a long time of nothing the rest
    // goes out as chunks of its own.
    while (fPending > 0) {
        size_t bytes = std::min(fPending, AudioFifo::kMaximum);
        if (!pad) bytes = std::min(bytes, fifo.Count() / fGroup * fGroup);
        if (bytes == 0) return kOK;
        fBuffer.resize(std::max(fBuffer.size(), bytes));
        const size_t got = fifo.Get(std::span(fBuffer).first(bytes));
        std::fill(fBuffer.begin() + static_cast<ptrdiff_t>(got),
                  fBuffer.begin() + static_cast<ptrdiff_t>(bytes), uint8_t{0});
        fPending -= bytes;
        fPadded += bytes - got;
        if (const Status status = track.WriteChunk(std::span(fBuffer).first(bytes)); status != kOK)
            return status;
    }
    return kOK;
}

}  // namespace kelvane
