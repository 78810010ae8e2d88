#include "codecs/huffyuv/huffman_lookup.h"

#include <algorithm>
#include <numeric>

namespace kelvane {

namespace {

// First place of a table of kLookupSize whose index begins with a left-aligned code.
size_t IndexOf(uint32_t code)
{
    return code >> (32 - kLookupBits);
}

// Lists the symbols that have a code and counts them.
size_t SymbolsOf(const HuffmanCode& code, std::array<uint8_t, kSymbols>& symbols)
{
    std::iota(symbols.begin(), symbols.end(), uint8_t{0});
    const auto end = std::remove_if(symbols.begin(), symbols.end(),
                                    [&](uint8_t symbol) { return code.length[symbol] == 0; });
    return static_cast<size_t>(end - symbols.begin());
}

}  // namespace

void HuffmanLookup::Build(const HuffmanCode& code)
{
    std::array<uint8_t, kSymbols> order;
    fCount = SymbolsOf(code, order);
    std::sort(order.begin(), order.begin() + fCount,
              [&](uint8_t a, uint8_t b) { return code.code[a] < code.code[b]; });
    fTable.fill({0, 0});
    for (size_t i = 0; i < fCount; i++) {
        const uint8_t symbol = order[i];
        const uint8_t length = code.length[symbol];
        fCodes[i] = code.code[symbol];
        fSymbols[i] = {symbol, length};
        if (length <= kLookupBits)
            std::fill_n(fTable.begin() + IndexOf(fCodes[i]), size_t{1} << (kLookupBits - length),
                        fSymbols[i]);
    }
}

HuffmanLookup::Entry HuffmanLookup::Search(uint32_t window) const
{
    // The code is complete, so its lowest code is 0 and each window begins with the code that is
    // the last not above it.
    const auto* above = std::upper_bound(fCodes.data(), fCodes.data() + fCount, window);
    return fSymbols[static_cast<size_t>(above - fCodes.data()) - 1];
}

void PairLookup::Build(const HuffmanCode& first, const HuffmanLookup& firstLookup,
                       const HuffmanCode& second, const HuffmanLookup& secondLookup)
{
    fFirst = &firstLookup;
    fSecond = &secondLookup;
    fTable.fill({{0, 0}, 0});
    std::array<uint8_t, kSymbols> shortest;  // of the second code
    const size_t count = SymbolsOf(second, shortest);
    std::sort(shortest.begin(), shortest.begin() + count,
              [&](uint8_t a, uint8_t b) { return second.length[a] < second.length[b]; });
    for (size_t a = 0; a < kSymbols; a++) {
        if (first.length[a] == 0) continue;
        for (size_t i = 0; i < count; i++) {
            const uint8_t b = shortest[i];
            const unsigned length = first.length[a] + second.length[b];
            if (length > kLookupBits) break;
            const uint32_t code = first.code[a] | second.code[b] >> first.length[a];
            std::fill_n(fTable.begin() + IndexOf(code), size_t{1} << (kLookupBits - length),
                        Entry{{static_cast<uint8_t>(a), b}, static_cast<uint16_t>(length)});
        }
    }
}

}  // namespace kelvane
