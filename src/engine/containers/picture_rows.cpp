#include "engine/containers/picture_rows.h"

#include <algorithm>

#include "format/picture_layout.h"

namespace kelvane {

PictureRows::PictureRows(const MediaFormat& format, size_t multiple)
{
    const bool narrow = format.Space() == kBGR24 || format.Space() == kRGB24;
    if (format.kind != kRawVideo || !narrow || !HasPlausibleSize(format)) return;
    const size_t row = static_cast<size_t>(format.Width()) * 3;
    if (row % multiple == 0) return;
    fRow = row;
    fPadded = (row + multiple - 1) / multiple * multiple;
    fRows = static_cast<size_t>(format.Height());
}

size_t PictureRows::Pack(std::span<uint8_t> frame) const
{
    if (fRow == 0) return frame.size();
    // Some writers leave out the padding of the last row; others pad the picture alone.
    if (frame.size() < fPadded * (fRows - 1) + fRow) return std::min(frame.size(), fRow * fRows);
    for (size_t row = 1; row < fRows; row++)
        std::ranges::copy(frame.subspan(row * fPadded, fRow),
                          frame.begin() + std::ptrdiff_t(row * fRow));
    return fRow * fRows;
}

std::span<const uint8_t> PictureRows::Pad(std::span<const uint8_t> frame,
                                          std::vector<uint8_t>& room) const
{
    if (fRow == 0 || frame.size() != fRow * fRows) return frame;
    room.assign(fPadded * fRows, 0);
    for (size_t row = 0; row < fRows; row++)
        std::ranges::copy(frame.subspan(row * fRow, fRow),
                          room.begin() + std::ptrdiff_t(row * fPadded));
    return room;
}

}  // namespace kelvane
