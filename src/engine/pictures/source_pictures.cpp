#include "engine/pictures/source_pictures.h"

#include <algorithm>

#include "format/picture_layout.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/geometry.h"

namespace kelvane {

size_t PictureRoom(const MediaFormat& format)
{
    constexpr size_t kPALPicture = 720 * 576 * kBytesOf32Bits;
    return 2 * std::max(kPALPicture, PixelsOf(format) * kBytesOf32Bits);
}

SourcePictures::SourcePictures(const MediaFormat& from, const MediaFormat& to,
                               const ConversionSettings& settings, ConversionState& state)
    : fFrom(from), fTo(to), fSettings(settings), fState(state), fDecoder(from, state)
{
}

SourcePictures::~SourcePictures()
{
    // Under way only when something else has failed, which is told instead.
    static_cast<void>(fState.beside.Settle());
}

bool SourcePictures::Deinterlaces() const
{
    return fSettings.deinterlace_source_first != 0 &&
           !FieldsSwap(fSettings.src_interlace, fSettings.dst_interlace);
}

// `pool` is null when the work is done beside something else that uses the pool.
Result<> SourcePictures::MakeOne(SourceFrame& frame, bool dvcpro, WorkerPool* pool)
{
    fDecoded.resize(PictureRoom(fFrom));
    frame.picture.resize(PictureRoom(fTo));
    if (auto decoded = fDecoder.Decode(frame.Bytes(), dvcpro, fDecoded); !decoded) return decoded;
    if (Deinterlaces())
        AdaptiveDeinterlace(fState.deinterlace, fDecoded.data(),
                            static_cast<size_t>(fFrom.Width()) * kBytesOf32Bits, fFrom.Width(),
                            fFrom.Height(), true, pool);
    GeometryConvert(fDecoded.data(), fFrom, fTo, frame.picture.data(), fSettings.mode,
                    fSettings.src_interlace != FieldOrder::kProgressive, pool);
    frame.has_picture = true;
    return {};
}

Result<> SourcePictures::Make(const NeighbourFrames& frames, bool dvcpro)
{
    for (const Neighbour which : {Neighbour::kPrevious, Neighbour::kCurrent, Neighbour::kNext})
        if (SourceFrame& frame = *frames[which]; !frame.has_picture)
            if (auto made = MakeOne(frame, dvcpro, &fState.pool); !made) return made;
    fNewest = {};
    const FrameRef newest = frames[Neighbour::kNewest];
    if (newest->has_picture) return {};
    // Both could use the deinterlacer's history, whose order counts.
    if (Deinterlaces())
        fNewest = MakeOne(*newest, dvcpro, &fState.pool);
    else
        fState.beside.Start(
            [this, newest, dvcpro] { fNewest = MakeOne(*newest, dvcpro, nullptr); });
    return {};
}

Result<> SourcePictures::Wait()
{
    fState.beside.Wait();
    return fNewest;
}

}  // namespace kelvane
