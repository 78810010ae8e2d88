#pragma once

#include "base/byte_cursor.h"
#include "codecs/interface/codec.h"
#include "support/test_formats.h"

namespace kelvane {

struct Converted {
    std::optional<size_t> size;
    Bytes output;  // all of it
    Bytes Made() const
    {
        return {output.begin(), output.begin() + static_cast<ptrdiff_t>(size.value_or(0))};
    }
};

// Converts over what `output` holds. Both blocks are of their exact size, so that the sanitizer
// sees every byte too far.
inline Converted Convert(Codec& codec, const Bytes& input, const Bytes& output)
{
    const Bytes exact(input);
    Converted c{std::nullopt, output};
    c.size = codec.Convert(exact, c.output);
    return c;
}

}  // namespace kelvane
