#pragma once

#include <random>

#include "base/byte_cursor.h"

namespace kelvane {

struct Size {
    int32_t width, height;
};

// Bytes on the heap that end where the block ends and begin `offset` bytes into it, so that a
// kernel meets every alignment and the address sanitizer sees one byte too many.
class ExactBytes {
public:
    explicit ExactBytes(size_t bytes, size_t offset = 0) : fBlock(offset + bytes), fOffset(offset)
    {
    }
    uint8_t* data() { return fBlock.data() + fOffset; }
    const uint8_t* data() const { return fBlock.data() + fOffset; }
    size_t size() const { return fBlock.size() - fOffset; }
    Bytes Copy() const { return {data(), data() + size()}; }
    bool operator==(const ExactBytes& other) const { return Copy() == other.Copy(); }

private:
    Bytes fBlock;
    size_t fOffset;
};

// Random bytes of which a third are 0 and a third 255.
inline ExactBytes RandomBytes(size_t bytes, std::mt19937& random, size_t offset = 0)
{
    ExactBytes result(bytes, offset);
    for (size_t i = 0; i < bytes; i++) {
        const uint32_t draw = static_cast<uint32_t>(random());
        result.data()[i] = draw % 3 == 0   ? 0
                           : draw % 3 == 1 ? 255
                                           : static_cast<uint8_t>(draw >> 8);
    }
    return result;
}

}  // namespace kelvane
