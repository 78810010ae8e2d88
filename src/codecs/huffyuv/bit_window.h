#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace kelvane {

// The next bits of a sequence of bytes, first bit in the highest place. Nothing tells it where the
// bytes end: whoever makes one puts enough zero bytes behind them and asks Position() now and then.
class BitWindow {
public:
    explicit BitWindow(const uint8_t* bytes) : fNext(bytes) {}

    // Afterwards at least 56 bits are there to look at. Reads up to 8 bytes from the position on.
    void Refill()
    {
        static_assert(std::endian::native == std::endian::little);
        uint64_t word;
        memcpy(&word, fNext, sizeof word);
        fBits |= __builtin_bswap64(word) >> fCount;
        fNext += (63 - fCount) >> 3;
        fCount |= 56;
    }
    // The next `bits` bits, from 1 to 32.
    uint32_t Peek(unsigned bits) const { return static_cast<uint32_t>(fBits >> (64 - bits)); }
    // Moves past bits that are there.
    void Drop(unsigned bits)
    {
        fBits <<= bits;
        fCount -= bits;
    }
    // Bits from `bytes` to the next one.
    int64_t Position(const uint8_t* bytes) const { return 8 * (fNext - bytes) - fCount; }

private:
    const uint8_t* fNext;
    uint64_t fBits = 0;
    uint32_t fCount = 0;  // bits of fBits that were counted; those behind them are right as well
};

}  // namespace kelvane
