#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <vector>

#include "codecs/interface/codec.h"
#include "format/media_format.h"

namespace kelvane {

enum CodecDirection : uint32_t { kConverter = 0, kEncoder = 1, kDecoder = 2 };

// What a list of formats is compared with: SameKind looks at the kind and one more word only, so
// sizes and rates are wildcards.
using FormatList = std::vector<MediaFormat>;

// Describes one class of built-in codec. Lives as long as the program.
struct CodecDescriptor {
    const char* long_name;  // shown in lists
    const char* short_name;
    const char* description;
    uint32_t direction;  // CodecDirection
    uint32_t code;       // four characters, first one in the most significant byte
    FormatList inputs;   // patterns of what it can read
    FormatList outputs;  // patterns of what it can write
    // A new instance, null when memory is short.
    std::unique_ptr<Codec> (*factory)();
};

// Patterns of raw formats, one for each ColourSpace.
FormatList RawPatterns(std::initializer_list<uint32_t> spaces);
// The pattern of one VideoEncoding.
FormatList EncodedPattern(uint32_t encoding);
// True when some pattern of the list is of the format's kind.
bool Matches(const FormatList& patterns, const MediaFormat& format);

template <class T>
std::unique_ptr<Codec> MakeCodec()
{
    return std::unique_ptr<Codec>(new (std::nothrow) T);
}

}  // namespace kelvane
