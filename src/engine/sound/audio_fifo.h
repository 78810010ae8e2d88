#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/status.h"

namespace kelvane {

// A ring of sound bytes between where they come from and where they go. It grows when it must, up
// to a limit. For one thread.
class AudioFifo {
public:
    static constexpr size_t kInitial = 65536;    // bytes
    static constexpr size_t kMaximum = 3000000;  // bytes; 15 seconds of 48 kHz stereo

    AudioFifo() : fStorage(kInitial) {}

    size_t Count() const { return fCount; }
    size_t Free() const { return fStorage.size() - fCount; }
    // What can be added in one piece at TailPointer().
    size_t TailRoom() const;

    // Adds capacity and moves the contents to the front, so that all that is free is in one piece;
    // with 0 it only does the latter. -1, and nothing happens, beyond the limit.
    Status Grow(size_t bytes);
    // Adds all of `bytes`, growing by what is short; -1, and nothing is added, beyond the limit.
    Status Put(std::span<const uint8_t> bytes);
    Status PutSilence(size_t bytes);
    // Takes up to `bytes.size()` bytes; how many there were.
    size_t Get(std::span<uint8_t> bytes);
    // Takes up to `bytes` bytes and forgets them.
    void Drop(size_t bytes);

    // For a reader that fills the ring in place: write up to TailRoom() bytes, then commit them.
    uint8_t* TailPointer() { return fStorage.data() + Tail(); }
    void Advance(size_t bytes);

    // For tuning: what the ring has cost so far.
    struct Counters {
        uint64_t reads = 0, writes = 0, reallocations = 0, bytes_moved = 0;
    };
    const Counters& Costs() const { return fCosts; }

private:
    size_t Tail() const { return (fRead + fCount) % fStorage.size(); }
    Status MakeRoom(size_t bytes);
    void MoveToFront();

    std::vector<uint8_t> fStorage;
    size_t fRead = 0;   // place of the oldest byte
    size_t fCount = 0;  // bytes held; tells a full ring from an empty one
    Counters fCosts;
};

}  // namespace kelvane
