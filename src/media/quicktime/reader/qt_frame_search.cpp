#include "media/quicktime/reader/qt_frame_search.h"

#include <algorithm>
#include <array>

#include "base/television.h"
#include "dv/dif_frame.h"
#include "dv/dif_layout.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint64_t kMostBeforeTheFirst = 64 << 20;
constexpr size_t kWindow = 1 << 18;
// Of other bytes than frames one in 2^18 looks like the head of one: this many are no film.
constexpr int kMostFalse = 1000000;
constexpr size_t kHead = 4;  // bytes of a header block that are looked at

uint64_t FrameBytes(bool pal)
{
    return static_cast<uint64_t>(SystemFor(pal).dv_frame_size);
}

}  // namespace

FoundFrames DIFFrameSearch::FindFrom(uint64_t from)
{
    fFound = {};
    fFalse = 0;
    for (uint64_t place = from; FindNext(place); place += FrameBytes(fFound.pal))
        fFound.places.push_back(place);
    return std::move(fFound);
}

// Moves on to the next frame. False when there is none.
bool DIFFrameSearch::FindNext(uint64_t& place)
{
    if (IsFrameAt(place)) return true;
    const uint64_t end = fFound.places.empty()
                             ? std::min(fFile.Length(), place + kMostBeforeTheFirst)
                             : fFile.Length();
    while (place < end && end - place >= kHead && fFalse < kMostFalse) {
        fWindow.resize(static_cast<size_t>(std::min<uint64_t>(kWindow, end - place)));
        if (FileReadWhole(fFile.Handle(), place, fWindow) != kOK) return false;
        const size_t places = fWindow.size() - kHead + 1;
        for (size_t at = 0; at < places && fFalse < kMostFalse; at++) {
            if (!BeginsWithHeaderBlock(std::span(fWindow).subspan(at))) continue;
            if (IsFrameAt(place + at)) {
                place += at;
                return true;
            }
            fFalse++;
        }
        place += places;
    }
    return false;
}

// A whole frame, by the heads of its first and last sequence.
bool DIFFrameSearch::IsFrameAt(uint64_t place)
{
    bool pal = false, again = false;
    if (!HasSequenceAt(place, 0, pal)) return false;
    if (!fFound.places.empty() && pal != fFound.pal) return false;
    const uint64_t bytes = FrameBytes(pal);
    if (bytes > fFile.Length() || place > fFile.Length() - bytes) return false;
    const auto last = static_cast<uint8_t>(bytes / kDIFSequenceSize - 1);
    if (!HasSequenceAt(place + last * kDIFSequenceSize, last, again) || again != pal) return false;
    fFound.pal = pal;
    return true;
}

bool DIFFrameSearch::HasSequenceAt(uint64_t place, uint8_t number, bool& pal) const
{
    std::array<uint8_t, kHead> head;
    if (FileReadWhole(fFile.Handle(), place, head) != kOK || head[1] >> 4 != number) return false;
    pal = (head[3] & 0x80) != 0;  // DSF
    head[1] &= 0x0F;
    return BeginsWithHeaderBlock(head);
}

}  // namespace kelvane
