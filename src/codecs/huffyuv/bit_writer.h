#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace kelvane {

// Joins codes, first bit first, in 32-bit little-endian words filled from the highest bit down.
// Writes a word with every code, whole or not: there must be room for one more word than the codes
// make. Bits that do not fill a word wait for the next code.
class WordBitWriter {
public:
    void SetNext(uint8_t* next) { fNext = next; }
    uint8_t* Next() const { return fNext; }

    // The top `length` bits, 32 at most, of a left-aligned code whose other bits are 0.
    void Put(uint64_t code, unsigned length)
    {
        static_assert(std::endian::native == std::endian::little);
        fBits |= code >> fCount;
        fCount += length;
        const uint32_t word = static_cast<uint32_t>(fBits >> 32);
        memcpy(fNext, &word, sizeof word);
        // 32 when a word was filled, else 0: no branch to predict.
        const unsigned done = fCount & 32;
        fNext += done >> 3;
        fBits <<= done;
        fCount -= done;
    }
    // Fills the last word with 0 bits.
    void Finish()
    {
        if (fCount > 0) Put(0, 32 - fCount);
    }

private:
    uint8_t* fNext = nullptr;
    uint64_t fBits = 0;   // left-aligned
    unsigned fCount = 0;  // bits waiting, fewer than 32
};

}  // namespace kelvane
