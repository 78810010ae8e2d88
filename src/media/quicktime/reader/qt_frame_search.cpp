#include "media/quicktime/reader/qt_frame_search.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/television.h"
#include "dv/dif_frame.h"
#include "dv/dif_layout.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint64_t kMostBeforeTheFirst = 64 << 20;
// Read at once, and lost at once where the disk is damaged.
constexpr size_t kWindow = 1 << 12;
// Of other bytes than frames one in 2^18 looks like the head of one: this many are no film.
constexpr int kMostFalse = 1000000;
constexpr size_t kHead = 4;  // bytes of a header block that are looked at
// Behind so many seconds of what cannot be read only one place a second is tried.
constexpr int64_t kSecondsOneByOne = 10;

uint64_t FrameBytes(bool pal)
{
    return static_cast<uint64_t>(SystemFor(pal).dv_frame_size);
}

}  // namespace

FoundFrames DIFFrameSearch::FindFrom(uint64_t from)
{
    fFound = {};
    fFalse = 0;
    fUnreadInARow = 0;
    for (uint64_t place = from; FindNext(place); place += FrameBytes(fFound.pal))
        fFound.places.push_back(place);
    return std::move(fFound);
}

// Moves on to the next frame. False when there is none.
bool DIFFrameSearch::FindNext(uint64_t& place)
{
    const uint64_t end = fFound.places.empty()
                             ? std::min(fFile.Length(), place + kMostBeforeTheFirst)
                             : fFile.Length();
    Sight sight = IsPassedOver() ? Sight::kUnread : FrameAt(place);
    while (sight == Sight::kNothing && place < end && end - place >= kHead && fFalse < kMostFalse)
        sight = SearchWindow(place, end);
    fUnreadInARow = sight == Sight::kUnread ? fUnreadInARow + 1 : 0;
    if (sight != Sight::kUnread) return sight == Sight::kFrame;
    // Before the first one nobody knows how long a frame is.
    if (fFound.places.empty()) fFound.status = fLastRead;
    return !fFound.places.empty() && IsInside(place, fFound.pal);
}

// Moves on to the first frame that begins in the next bytes, or behind them.
DIFFrameSearch::Sight DIFFrameSearch::SearchWindow(uint64_t& place, uint64_t end)
{
    fWindow.resize(static_cast<size_t>(std::min<uint64_t>(kWindow, end - place)));
    if (!Read(place, fWindow)) {
        if (fLastRead == kUnread) return Sight::kUnread;
        place = end;  // the file got shorter
        return Sight::kNothing;
    }
    const size_t places = fWindow.size() - kHead + 1;
    for (size_t at = 0; at < places && fFalse < kMostFalse; at++) {
        if (!BeginsWithHeaderBlock(std::span(fWindow).subspan(at))) continue;
        if (const Sight sight = FrameAt(place + at); sight != Sight::kNothing) {
            place += at;
            return sight;
        }
        fFalse++;
    }
    place += places;
    return Sight::kNothing;
}

// A disk takes its time over each place that it cannot read.
bool DIFFrameSearch::IsPassedOver() const
{
    const auto second = std::lround(SystemFor(fFound.pal).rate);
    return fUnreadInARow > kSecondsOneByOne * second && fUnreadInARow % second != 0;
}

bool DIFFrameSearch::IsInside(uint64_t place, bool pal) const
{
    const uint64_t bytes = FrameBytes(pal);
    return bytes <= fFile.Length() && place <= fFile.Length() - bytes;
}

// A whole frame, by the heads of its first and last sequence.
DIFFrameSearch::Sight DIFFrameSearch::FrameAt(uint64_t place)
{
    bool pal = false, again = false;
    if (const Sight first = SequenceAt(place, 0, pal); first != Sight::kFrame) return first;
    if (!fFound.places.empty() && pal != fFound.pal) return Sight::kNothing;
    if (!IsInside(place, pal)) return Sight::kNothing;
    const auto last = static_cast<uint8_t>(FrameBytes(pal) / kDIFSequenceSize - 1);
    const Sight sight = SequenceAt(place + last * kDIFSequenceSize, last, again);
    if (sight != Sight::kFrame) return sight;
    if (again != pal) return Sight::kNothing;
    fFound.pal = pal;
    return Sight::kFrame;
}

DIFFrameSearch::Sight DIFFrameSearch::SequenceAt(uint64_t place, uint8_t number, bool& pal)
{
    std::array<uint8_t, kHead> head;
    if (!Read(place, head)) return fLastRead == kUnread ? Sight::kUnread : Sight::kNothing;
    if (head[1] >> 4 != number) return Sight::kNothing;
    pal = (head[3] & 0x80) != 0;  // DSF
    head[1] &= 0x0F;
    return BeginsWithHeaderBlock(head) ? Sight::kFrame : Sight::kNothing;
}

// A disk may give at the second try what it refused at the first.
bool DIFFrameSearch::Read(uint64_t place, std::span<uint8_t> into)
{
    fLastRead = FileReadWhole(fFile.Handle(), place, into);
    if (fLastRead == kUnread) fLastRead = FileReadWhole(fFile.Handle(), place, into);
    return fLastRead == kOK;
}

}  // namespace kelvane
