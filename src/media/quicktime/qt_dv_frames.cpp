#include "media/quicktime/qt_dv_frames.h"

#include <algorithm>

#include "base/television.h"
#include "dv/dif_frame.h"

namespace kelvane {

Bytes FirstDVFrame(QTFile& file, int32_t stream)
{
    constexpr int64_t kMostPictures = 25;
    Bytes first, frame;
    const int64_t pictures = std::min(file.SampleCount(stream), kMostPictures);
    int left = kFramesThatTell;  // from the first whole one on
    for (int64_t picture = 0; picture < pictures && left > 0; picture++) {
        uint32_t size = 0;
        frame.resize(static_cast<size_t>(kPAL.dv_frame_size));
        if (!first.empty()) left--;
        if (file.SeekFrame(stream, picture) != kOK) break;
        if (file.ReadFrame(stream, frame, size) != kOK) continue;
        frame.resize(size);
        if (!SystemOfFrame(frame)) continue;
        if (HasVideoAux(frame)) return frame;
        if (first.empty()) first = frame;
    }
    return first;
}

bool IsQTDVStream(QTFile& file, int32_t stream)
{
    const uint32_t code = file.TrackCodec(stream);
    return IsQTDVFormat(code) || (MayBeQTDVFormat(code) && IsPALStream(file, stream));
}

std::optional<bool> IsPALStream(QTFile& file, int32_t stream)
{
    return SystemOfFrame(FirstDVFrame(file, stream));
}

}  // namespace kelvane
