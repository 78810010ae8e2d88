#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace kelvane {

// Bytes on the heap that end where the block ends and begin `offset` bytes into it, so that a
// kernel meets every alignment and the address sanitizer sees one byte too many.
class ExactBytes {
public:
    explicit ExactBytes(size_t bytes, size_t offset = 0)
        : fBlock(std::make_unique<uint8_t[]>(offset + bytes)), fOffset(offset), fSize(bytes)
    {
    }
    ExactBytes(const ExactBytes& other) : ExactBytes(other.fSize, other.fOffset)
    {
        std::copy_n(other.data(), fSize, data());
    }
    uint8_t* data() { return fBlock.get() + fOffset; }
    const uint8_t* data() const { return fBlock.get() + fOffset; }
    size_t size() const { return fSize; }
    std::vector<uint8_t> Copy() const { return {data(), data() + fSize}; }
    bool operator==(const ExactBytes& other) const { return Copy() == other.Copy(); }

private:
    std::unique_ptr<uint8_t[]> fBlock;
    size_t fOffset;
    size_t fSize;
};

// Random bytes of which a third are 0 and a third 255.
inline void FillRandom(ExactBytes& bytes, std::mt19937& random)
{
    for (size_t i = 0; i < bytes.size(); i++) {
        const uint32_t draw = static_cast<uint32_t>(random());
        bytes.data()[i] = draw % 3 == 0 ? 0 : draw % 3 == 1 ? 255 : static_cast<uint8_t>(draw >> 8);
    }
}

inline ExactBytes RandomBytes(size_t bytes, std::mt19937& random, size_t offset = 0)
{
    ExactBytes result(bytes, offset);
    FillRandom(result, random);
    return result;
}

}  // namespace kelvane
