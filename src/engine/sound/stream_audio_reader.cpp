#include "engine/sound/stream_audio_reader.h"

#include <algorithm>

#include "base/status.h"

namespace kelvane {

Status StreamAudioReader::Fill(AudioFifo& fifo, size_t enough)
{
    int empty_chunks = 0;
    while (fifo.Count() <= enough) {
        if (fPoured < fWaiting.size()) {
            PourWaiting(fifo);
            continue;
        }
        if (fSilence > 0) {
            PourSilence(fifo);
            continue;
        }
        if (fStatus != kOK) break;
        const uint32_t room = fStream.ChunkSize();
        uint32_t bytes = 0;
        // In place where nothing needs converting and the ring can be made large enough.
        const bool in_place = fConverter.Coding().IsPlain() && room <= AudioFifo::kMaximum / 4;
        const Status status = in_place ? ReadInPlace(fifo, room, bytes) : ReadAside(room, bytes);
        if (status != kOK) TakeFailure(status);
        // A stream may hold empty chunks, but is not to hold up the pictures with them.
        empty_chunks = bytes == 0 && fSilence == 0 ? empty_chunks + 1 : 0;
        if (empty_chunks == 2) break;
    }
    return fStatus;
}

// What the file has and cannot give is silence, chunk by chunk.
void StreamAudioReader::TakeFailure(Status status)
{
    if (fReason == kOK && status != kEnd) fReason = status;
    if (status == kEnd || status == kReferenceMissing) {
        fStatus = status;
        return;
    }
    const uint64_t chunk = fStream.SkipChunk();
    if (chunk == 0) {
        // How much there should be, the file does not tell; that it is missing, is told.
        fLost += fConverter.Coding().Bytes();
        fStatus = status;
        return;
    }
    fSilence = std::min<uint64_t>(chunk, kMostChunk) / fConverter.Coding().Bytes() * 2;
    fLost += fSilence;
}

uint64_t StreamAudioReader::PassRest()
{
    uint64_t rest = fWaiting.size() - fPoured + fSilence;
    fPoured = fWaiting.size();
    fSilence = 0;
    while (fStatus == kOK) {
        const uint64_t chunk = fStream.SkipChunk();
        if (chunk == 0) fStatus = kEnd;
        rest += chunk / fConverter.Coding().Bytes() * 2;
    }
    return rest;
}

void StreamAudioReader::PourSilence(AudioFifo& fifo)
{
    const auto piece = static_cast<size_t>(std::min<uint64_t>(fSilence, AudioFifo::kInitial));
    fSilence = fifo.PutSilence(piece) == kOK ? fSilence - piece : 0;
}

Status StreamAudioReader::ReadInPlace(AudioFifo& fifo, uint32_t room, uint32_t& bytes)
{
    if (fifo.TailRoom() < room) {
        const size_t shortfall = room > fifo.Free() ? room - fifo.Free() : 0;
        if (fifo.Grow(shortfall) != kOK) return kError;
    }
    const Status status = fStream.ReadChunk(fifo.TailPointer(), room, bytes);
    if (status == kOK) fifo.Advance(std::min(bytes, room));
    return status;
}

Status StreamAudioReader::ReadAside(uint32_t room, uint32_t& bytes)
{
    if (room > kMostChunk) return kError;
    fChunk.resize(room);
    const Status status = fStream.ReadChunk(fChunk.data(), room, bytes);
    if (status != kOK) return status;
    fWaiting.clear();
    fPoured = 0;
    fConverter.Convert(std::span(fChunk).first(std::min(bytes, room)), fWaiting);
    return kOK;
}

void StreamAudioReader::PourWaiting(AudioFifo& fifo)
{
    const size_t piece = std::min(fWaiting.size() - fPoured, AudioFifo::kInitial);
    if (fifo.Put(std::span(fWaiting).subspan(fPoured, piece)) != kOK) {
        // Beyond the ring's limit: the sound is short by that much.
        fLost += fWaiting.size() - fPoured;
        fPoured = fWaiting.size();
        return;
    }
    fPoured += piece;
}

}  // namespace kelvane
