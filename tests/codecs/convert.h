#pragma once

#include "base/byte_cursor.h"
#include "codecs/interface/codec.h"
#include "support/test_formats.h"

namespace kelvane {

struct Converted {
    int status;
    uint32_t consumed, produced;
    Bytes output;  // all of it
    Bytes Made() const { return {output.begin(), output.begin() + produced}; }
};

// Converts over what `output` holds. Both blocks are of their exact size, so that the sanitizer
// sees every byte too far.
inline Converted Convert(Codec& codec, const Bytes& input, const Bytes& output)
{
    const Bytes exact(input);
    Converted c{0, static_cast<uint32_t>(input.size()), static_cast<uint32_t>(output.size()),
                output};
    c.status = codec.Convert(exact.data(), c.consumed, c.output.data(), c.produced, 0);
    return c;
}

}  // namespace kelvane
