#include "engine/sound/audio_fifo.h"

#include <algorithm>
#include <cstring>

#include "base/status.h"

namespace kelvane {

size_t AudioFifo::TailRoom() const
{
    const size_t tail = Tail();
    return std::min(Free(), fStorage.size() - tail);
}

Status AudioFifo::Grow(size_t bytes)
{
    if (bytes > kMaximum - fStorage.size()) return kError;
    MoveToFront();
    if (bytes > 0) {
        fStorage.resize(fStorage.size() + bytes);
        fCosts.reallocations++;
    }
    return kOK;
}

void AudioFifo::MoveToFront()
{
    if (fRead == 0) return;
    if (fRead + fCount <= fStorage.size()) {
        memmove(fStorage.data(), fStorage.data() + fRead, fCount);
        fCosts.bytes_moved += fCount;
    } else {
        std::rotate(fStorage.begin(), fStorage.begin() + static_cast<ptrdiff_t>(fRead),
                    fStorage.end());
        fCosts.bytes_moved += fStorage.size();
    }
    fRead = 0;
}

Status AudioFifo::MakeRoom(size_t bytes)
{
    if (bytes > Free()) return Grow(bytes - Free());
    const bool in_one_piece = fRead + fCount <= fStorage.size();
    if (bytes > TailRoom() && in_one_piece) MoveToFront();
    return kOK;
}

Status AudioFifo::Put(std::span<const uint8_t> bytes)
{
    if (MakeRoom(bytes.size()) != kOK) return kError;
    while (!bytes.empty()) {
        const size_t piece = std::min(bytes.size(), TailRoom());
        std::copy_n(bytes.begin(), piece, TailPointer());
        Advance(piece);
        bytes = bytes.subspan(piece);
    }
    return kOK;
}

Status AudioFifo::PutSilence(size_t bytes)
{
    if (MakeRoom(bytes) != kOK) return kError;
    while (bytes > 0) {
        const size_t piece = std::min(bytes, TailRoom());
        std::fill_n(TailPointer(), piece, uint8_t{0});
        Advance(piece);
        bytes -= piece;
    }
    return kOK;
}

size_t AudioFifo::Get(std::span<uint8_t> bytes)
{
    size_t got = 0;
    while (got < bytes.size() && fCount > 0) {
        const size_t piece = std::min({bytes.size() - got, fCount, fStorage.size() - fRead});
        std::copy_n(fStorage.data() + fRead, piece, bytes.data() + got);
        got += piece;
        Drop(piece);
    }
    return got;
}

void AudioFifo::Drop(size_t bytes)
{
    const size_t dropped = std::min(bytes, fCount);
    fCount -= dropped;
    fRead = fCount == 0 ? 0 : (fRead + dropped) % fStorage.size();
    fCosts.reads++;
}

void AudioFifo::Advance(size_t bytes)
{
    fCount += std::min(bytes, TailRoom());
    fCosts.writes++;
}

}  // namespace kelvane
