#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvane {

// Four-character codes are 32-bit integers, compared as integers.

// A code with its first character in the most significant byte: commands, operations, QuickTime
// atoms, IFF chunks. "2PAL"_4cc is 0x3250414C. A text of any other length does not compile.
consteval uint32_t operator""_4cc(const char* text, size_t length)
{
    if (length != 4) throw "a four-character code has four characters";
    uint32_t code = 0;
    for (size_t i = 0; i < 4; i++)
        code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

// A code with its first character in the lowest byte, so that a value written little-endian spells
// the text: all codes of RIFF files (the order of Windows' mmioFOURCC).
constexpr uint32_t FourCC(const char (&text)[5])
{
    uint32_t code = 0;
    for (size_t i = 4; i-- > 0;)
        code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

// The four characters of a code of either order, first character first; a byte that is not
// printable ASCII shows as '.'.
inline std::string FourCCText(uint32_t code, bool firstIsLowest)
{
    std::string text(4, '.');
    for (size_t i = 0; i < 4; i++) {
        const size_t shift = 8 * (firstIsLowest ? i : 3 - i);
        const char c = static_cast<char>(code >> shift & 0xFF);
        if (c >= 0x20 && c < 0x7F) text[i] = c;
    }
    return text;
}

}  // namespace kelvane
