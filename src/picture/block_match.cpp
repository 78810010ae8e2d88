#include "picture/block_match.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kelvane {

namespace plain {

uint32_t BlockCost(const BlockPair& pair, uint32_t bound)
{
    uint32_t sum = 0;
    for (int32_t y = 0; y < pair.height; y++) {
        const uint8_t* a = pair.a + y * pair.a_pitch;
        const uint8_t* b = pair.b + y * pair.b_pitch;
        for (int32_t i = 0; i < 4 * pair.width; i++)
            sum += static_cast<uint32_t>((a[i] - b[i]) * (a[i] - b[i]));
        if (sum > bound) return kEarlyExitMark;
    }
    return sum;
}

}  // namespace plain

namespace {

uint32_t RowCost(const uint8_t* a, const uint8_t* b, size_t bytes)
{
    int32_t sum = 0;
    for (size_t i = 0; i < bytes; i++) {
        const auto difference = static_cast<int16_t>(a[i] - b[i]);
        sum += difference * difference;
    }
    return static_cast<uint32_t>(sum);
}

template <size_t kBytes>
uint32_t CostOfRows(const BlockPair& pair, uint32_t bound)
{
    uint32_t sum = 0;
    for (int32_t y = 0; y < pair.height && sum <= bound; y++)
        sum += RowCost(pair.a + y * pair.a_pitch, pair.b + y * pair.b_pitch, kBytes);
    return sum > bound ? kEarlyExitMark : sum;
}

// What is tried at a place: the rectangle left of the block after clipping.
struct Clipped {
    int32_t x, y;              // in the searched picture
    int32_t block_x, block_y;  // in the reference
    int32_t width, height;
};

void ClipAxis(int32_t limit, int32_t size, int32_t& at, int32_t& block, int32_t& length)
{
    if (at < 0) {
        length += at;
        block -= at;
        at = 0;
    }
    if (at > limit - size) length -= at - (limit - size);
}

}  // namespace

uint32_t BlockCost(const BlockPair& pair, uint32_t bound)
{
    switch (pair.width) {
        case 32:
            return CostOfRows<128>(pair, bound);
        case 16:
            return CostOfRows<64>(pair, bound);
        case 8:
            return CostOfRows<32>(pair, bound);
        default:
            break;
    }
    uint32_t sum = 0;
    for (int32_t y = 0; y < pair.height && sum <= bound; y++)
        sum += RowCost(pair.a + y * pair.a_pitch, pair.b + y * pair.b_pitch,
                       4 * static_cast<size_t>(pair.width));
    return sum > bound ? kEarlyExitMark : sum;
}

void TriedPlaces::Clear()
{
    fCount = 0;
    if (++fSearch != 0) return;
    for (Slot& slot : fSlots)  // the numbers of searches have come round
        slot.search = 0;
    fSearch = 1;
}

size_t TriedPlaces::SlotOf(int32_t x, int32_t y) const
{
    const size_t mask = fSlots.size() - 1;
    // Neighbouring places fall into slots of their own.
    size_t slot = (static_cast<size_t>(x) + 16 * static_cast<size_t>(y)) & mask;
    while (fSlots[slot].search == fSearch &&
           (fSlots[slot].place.x != x || fSlots[slot].place.y != y))
        slot = (slot + 1) & mask;
    return slot;
}

const TriedPlace* TriedPlaces::Find(int32_t x, int32_t y) const
{
    const Slot& slot = fSlots[SlotOf(x, y)];
    return slot.search == fSearch ? &slot.place : nullptr;
}

void TriedPlaces::Add(const TriedPlace& place)
{
    if (2 * ++fCount > fSlots.size()) Grow();
    fSlots[SlotOf(place.x, place.y)] = {place, fSearch};
}

void TriedPlaces::Grow()
{
    std::vector<Slot> old(2 * fSlots.size());
    old.swap(fSlots);
    for (const Slot& slot : old)
        if (slot.search == fSearch) fSlots[SlotOf(slot.place.x, slot.place.y)] = slot;
}

namespace {

// One walk. Places are remembered as they were before clipping.
class Search {
public:
    Search(const FieldView& searched, const FieldView& reference, int32_t x, int32_t y,
           int32_t size, TriedPlaces& tried, BlockCostFunction block_cost)
        : fSearched(searched),
          fReference(reference),
          fX(x),
          fY(y),
          fSize(size),
          fTried(tried),
          fBlockCost(block_cost)
    {
    }

    BlockVector Walk(int32_t start_x, int32_t start_y);

private:
    Clipped Clip(int32_t x, int32_t y) const
    {
        Clipped place{x, y, fX, fY, fSize, fSize};
        ClipAxis(fSearched.width, fSize, place.x, place.block_x, place.width);
        ClipAxis(fSearched.height, fSize, place.y, place.block_y, place.height);
        return place;
    }
    uint32_t RawCost(const Clipped& place, uint32_t bound) const;
    TriedPlace Try(int32_t x, int32_t y, const Clipped& place, uint32_t bound);
    bool BestNeighbour(const TriedPlace& current, TriedPlace& best);
    BlockVector VectorOf(const Clipped& place) const;

    const FieldView& fSearched;
    const FieldView& fReference;
    const int32_t fX, fY, fSize;
    TriedPlaces& fTried;
    const BlockCostFunction fBlockCost;
};

uint32_t Search::RawCost(const Clipped& place, uint32_t bound) const
{
    const ptrdiff_t pitch = 4 * ptrdiff_t{fSearched.row_pixels};
    BlockPair pair{fSearched.Pixel(place.x, place.y),
                   pitch,
                   fReference.Pixel(place.block_x, place.block_y),
                   pitch,
                   place.width,
                   place.height};
    const ptrdiff_t row_bytes = 4 * ptrdiff_t{place.width};
    const ptrdiff_t available = fReference.end - pair.b;
    if ((place.height - 1) * pitch + row_bytes <= available) return fBlockCost(pair, bound);
    // Part of the block lies behind the picture: the same rectangle with zeros there.
    uint8_t padded[kLargestBlock * kLargestBlock * 4] = {};
    for (int32_t y = 0; y < place.height && y * pitch < available; y++)
        memcpy(padded + y * row_bytes, pair.b + y * pitch,
               static_cast<size_t>(std::min(row_bytes, available - y * pitch)));
    pair.b = padded;
    pair.b_pitch = row_bytes;
    return fBlockCost(pair, bound);
}

TriedPlace Search::Try(int32_t x, int32_t y, const Clipped& place, uint32_t bound)
{
    const uint32_t raw = RawCost(place, bound);
    const int32_t area = place.width * place.height, full = fSize * fSize;
    uint32_t normal = raw;
    if (area != full && raw != kEarlyExitMark)
        normal = static_cast<uint32_t>(uint64_t{raw} * static_cast<uint64_t>(full) /
                                       static_cast<uint64_t>(area));
    // From the place as clipped on the left and above; deliberate: sliding over those edges is
    // free.
    const int32_t moved = std::abs(place.x - fX) + std::abs(place.y - fY);
    const TriedPlace tried{x, y, raw, normal + kMotionPenalty * static_cast<uint32_t>(moved)};
    fTried.Add(tried);
    return tried;
}

// The first neighbour of lowest cost; false when all lie outside the picture.
bool Search::BestNeighbour(const TriedPlace& current, TriedPlace& best)
{
    static constexpr int8_t kNeighbours[][2] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0},
                                                {1, 0},   {-1, 1}, {0, 1},  {1, 1}};
    bool found = false;
    for (const auto& step : kNeighbours) {
        const int32_t x = current.x + step[0], y = current.y + step[1];
        const Clipped place = Clip(x, y);
        if (place.width < 1 || place.height < 1) continue;
        // The bound follows the best neighbour even when that one is worse than the current place
        // or was given up: results depend on it.
        const TriedPlace* known = fTried.Find(x, y);
        const TriedPlace tried = known ? *known : Try(x, y, place, found ? best.raw : current.raw);
        if (!found || tried.cost < best.cost) best = tried;
        found = true;
    }
    return found;
}

BlockVector Search::VectorOf(const Clipped& place) const
{
    return {place.block_x,
            place.block_y,
            std::min(place.width, fReference.width - place.block_x),
            std::min(place.height, fReference.height - place.block_y),
            place.x - place.block_x,
            place.y - place.block_y};
}

BlockVector Search::Walk(int32_t start_x, int32_t start_y)
{
    fTried.Clear();
    TriedPlace current = Try(start_x, start_y, Clip(start_x, start_y), kNoBound);
    TriedPlace best{};
    while (BestNeighbour(current, best) && best.cost < current.cost)
        current = best;
    if (current.cost > kRejectionLimit) return VectorOf({fX, fY, fX, fY, fSize, fSize});
    return VectorOf(Clip(current.x, current.y));
}

}  // namespace

BlockVector BlockMatch(const FieldView& searched, const FieldView& reference, int32_t x, int32_t y,
                       int32_t size, int32_t start_x, int32_t start_y, TriedPlaces& tried,
                       BlockCostFunction block_cost)
{
    return Search(searched, reference, x, y, size, tried, block_cost).Walk(start_x, start_y);
}

}  // namespace kelvane
