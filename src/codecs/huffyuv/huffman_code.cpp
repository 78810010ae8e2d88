#include "codecs/huffyuv/huffman_code.h"

#include <algorithm>

namespace kelvane {

Status ReadLengths(ByteReader& text, HuffmanCode& code)
{
    for (size_t symbol = 0; symbol < kSymbols;) {
        const uint8_t run = text.Get8();
        const size_t count = run >> 5 ? run >> 5 : text.Get8();
        if (text.Failed() || count == 0 || count > kSymbols - symbol) return kError;
        std::fill_n(code.length.begin() + symbol, count, run & kLongestCode);
        symbol += count;
    }
    return kOK;
}

Status AssignCodes(HuffmanCode& code)
{
    uint64_t next = 0;
    for (unsigned length = kLongestCode; length > 0; length--) {
        for (size_t symbol = 0; symbol < kSymbols; symbol++) {
            if (code.length[symbol] != length) continue;
            code.code[symbol] = static_cast<uint32_t>(next);
            next += uint64_t{1} << (32 - length);
        }
    }
    return next == uint64_t{1} << 32 ? kOK : kError;
}

}  // namespace kelvane
