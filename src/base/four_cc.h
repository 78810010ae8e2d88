#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvane {

// Four-character codes are 32-bit integers, compared as integers, with their first character in the
// most significant byte: "2PAL"_4cc is 0x3250414C. Files spell a code in the order of its
// characters, whatever the byte order of their numbers: it is read and written with GetCode,
// PutCode, ReadCode or a HeaderField that is a code.

// A text of any other length does not compile.
consteval uint32_t operator""_4cc(const char* text, size_t length)
{
    if (length != 4) throw "a four-character code has four characters";
    uint32_t code = 0;
    for (size_t i = 0; i < 4; i++)
        code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

// The four characters of a code; a byte that is not printable ASCII shows as '.'.
inline std::string FourCCText(uint32_t code)
{
    std::string text(4, '.');
    for (size_t i = 0; i < 4; i++) {
        const char c = static_cast<char>(code >> 8 * (3 - i) & 0xFF);
        if (c >= 0x20 && c < 0x7F) text[i] = c;
    }
    return text;
}

}  // namespace kelvane
