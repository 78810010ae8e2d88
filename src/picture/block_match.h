#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvane {

inline constexpr int32_t kLargestBlock = 32;            // pixels in each axis
inline constexpr uint32_t kMotionPenalty = 1500;        // for each pixel of displacement, each axis
inline constexpr uint32_t kRejectionLimit = 3000000;    // a worse match does not move the block
inline constexpr uint32_t kEarlyExitMark = 0x30000000;  // raw cost of a place given up half-way
inline constexpr uint32_t kNoBound = 0x7FFFFFFF;

// A 32-bit picture, or one field of it: rows lie `row_pixels` apart and the memory of the whole
// picture stops at `end`.
struct FieldView {
    const uint8_t* Pixel(int32_t x, int32_t y) const
    {
        return pixels + 4 * (static_cast<ptrdiff_t>(y) * row_pixels + x);
    }

    const uint8_t* pixels;
    const uint8_t* end;
    int32_t row_pixels;
    int32_t width, height;
};

// Two rectangles to compare, each with its distance from row to row in bytes.
struct BlockPair {
    const uint8_t* a;
    ptrdiff_t a_pitch;
    const uint8_t* b;
    ptrdiff_t b_pitch;
    int32_t width, height;
};

// Sum of the squared differences of all four bytes of all pixels, or kEarlyExitMark as soon as it
// is above the bound after a row. At most kLargestBlock pixels in each axis.
uint32_t BlockCost(const BlockPair& pair, uint32_t bound);
using BlockCostFunction = uint32_t (*)(const BlockPair& pair, uint32_t bound);
namespace plain {
uint32_t BlockCost(const BlockPair& pair, uint32_t bound);  // the form to check by eye
}

// A place that was tried: where it lies in the searched picture before clipping, and its cost as
// measured and with the penalty.
struct TriedPlace {
    int32_t x, y;
    uint32_t raw, cost;
};

// The places tried in one search: a hash table that keeps its memory from search to search.
class TriedPlaces {
public:
    TriedPlaces() : fSlots(kFirstSlots) {}
    void Clear();
    // Null when the place was not tried.
    const TriedPlace* Find(int32_t x, int32_t y) const;
    void Add(const TriedPlace& place);

private:
    static constexpr size_t kFirstSlots = 256;  // a power of two, as ever after
    struct Slot {
        TriedPlace place;
        uint32_t search;  // the search that filled it
    };
    size_t SlotOf(int32_t x, int32_t y) const;
    void Grow();

    std::vector<Slot> fSlots;
    uint32_t fSearch = 1;
    size_t fCount = 0;
};

// A rectangle of the reference picture, cut at its edge, and the way from each of its pixels to the
// matching one in the searched picture.
struct BlockVector {
    int32_t x, y, width, height;
    int32_t dx, dy;
};

// Finds where the block of `size` by `size` pixels at (x, y) in the reference came from in the
// searched picture: walks downhill from (start_x, start_y), trying the eight neighbours of each
// place, with no limit to its range. A block may reach beyond the reference on the right and below:
// there it is compared with what follows in memory, and with zero behind the end of the picture.
BlockVector BlockMatch(const FieldView& searched, const FieldView& reference, int32_t x, int32_t y,
                       int32_t size, int32_t start_x, int32_t start_y, TriedPlaces& tried,
                       BlockCostFunction block_cost = BlockCost);

}  // namespace kelvane
