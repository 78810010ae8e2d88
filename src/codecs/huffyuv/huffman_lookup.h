#pragma once

#include <array>
#include <cstdint>

#include "codecs/huffyuv/bit_window.h"
#include "codecs/huffyuv/huffman_code.h"

namespace kelvane {

inline constexpr unsigned kLookupBits = 12;
inline constexpr size_t kLookupSize = size_t{1} << kLookupBits;

// Decodes one symbol at a time: codes of up to kLookupBits bits by one look at a table, longer ones
// by a search among all codes in order.
class HuffmanLookup {
public:
    // `code` is complete.
    void Build(const HuffmanCode& code);

    // Needs kLongestCode bits in the window.
    uint8_t Get(BitWindow& bits) const
    {
        Entry entry = fTable[bits.Peek(kLookupBits)];
        if (entry.length == 0) [[unlikely]]
            entry = Search(bits.Peek(32));
        bits.Drop(entry.length);
        return entry.symbol;
    }

private:
    struct Entry {
        uint8_t symbol;
        uint8_t length;  // bits; 0: longer than the look
    };
    Entry Search(uint32_t window) const;

    std::array<Entry, kLookupSize> fTable;
    std::array<uint32_t, kSymbols> fCodes;  // ascending, left-aligned
    std::array<Entry, kSymbols> fSymbols;   // in the order of fCodes
    size_t fCount = 0;                      // symbols that have a code
};

// Decodes two symbols, each of a code of its own, by one look when both fit in it.
class PairLookup {
public:
    struct Pair {
        uint8_t first;
        uint8_t second;
    };

    // Keeps pointers to the two tables, which are those of the two codes.
    void Build(const HuffmanCode& first, const HuffmanLookup& firstLookup,
               const HuffmanCode& second, const HuffmanLookup& secondLookup);

    // Needs kLongestCode bits in the window and takes up to kLookupBits of them; or takes more and
    // refills it.
    Pair Get(BitWindow& bits) const
    {
        const Entry entry = fTable[bits.Peek(kLookupBits)];
        if (entry.length == 0) [[unlikely]]
            return GetLong(bits);
        bits.Drop(entry.length);
        return entry.pair;
    }

private:
    struct Entry {
        Pair pair;
        uint16_t length;  // bits of both; 0: longer than the look
    };
    Pair GetLong(BitWindow& bits) const
    {
        const uint8_t first = fFirst->Get(bits);
        bits.Refill();
        const uint8_t second = fSecond->Get(bits);
        bits.Refill();
        return {first, second};
    }

    std::array<Entry, kLookupSize> fTable;
    const HuffmanLookup* fFirst = nullptr;
    const HuffmanLookup* fSecond = nullptr;
};

}  // namespace kelvane
