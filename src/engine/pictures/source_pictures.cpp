#include "engine/pictures/source_pictures.h"

#include <algorithm>

#include "format/picture_layout.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/geometry.h"

namespace kelvane {

namespace {

constexpr double kMostSecondsInARow = 10;

}  // namespace

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
Result<> SourcePictures::MakeOne(const FrameRef& made, bool dvcpro, WorkerPool* pool)
{
    SourceFrame& frame = *made;
    fDecoded.resize(PictureRoom(fFrom));
    frame.picture.resize(PictureRoom(fTo));
    if (auto decoded = fDecoder.Decode(frame.Bytes(), dvcpro, fDecoded); !decoded)
        return Repeat(frame, decoded.Error());
    fInARow = 0;
    if (Deinterlaces())
        AdaptiveDeinterlace(fState.deinterlace, fDecoded.data(),
                            static_cast<size_t>(fFrom.Width()) * kBytesOf32Bits, fFrom.Width(),
                            fFrom.Height(), true, pool);
    GeometryConvert(fDecoded.data(), fFrom, fTo, frame.picture.data(), fSettings.mode,
                    fSettings.src_interlace != FieldOrder::kProgressive, pool);
    frame.has_picture = true;
    fLast = made;
    return {};
}

// Tapes have frames that cannot be decoded; ten seconds of them in a row are no tape any more.
Result<> SourcePictures::Repeat(SourceFrame& frame, const Failure& failure)
{
    const double seconds = static_cast<double>(++fInARow) / std::max(fFrom.FrameRate(), 1.0f);
    if (failure.status != kUndecodable) return failure;
    if (!fLast || seconds > kMostSecondsInARow) return Failure{kError, failure.message};
    frame.picture = fLast->picture;
    frame.has_picture = true;
    fUndecodable++;
    return {};
}

Result<> SourcePictures::Make(const NeighbourFrames& frames, bool dvcpro)
{
    for (const Neighbour which : {Neighbour::kPrevious, Neighbour::kCurrent, Neighbour::kNext})
        if (!frames[which]->has_picture)
            if (auto made = MakeOne(frames[which], dvcpro, &fState.pool); !made) return made;
    fNewest = {};
    const FrameRef newest = frames[Neighbour::kNewest];
    if (newest->has_picture) return {};
    // Both could use the deinterlacer's history, whose order counts.
    if (Deinterlaces())
        fNewest = MakeOne(newest, dvcpro, &fState.pool);
    else
        fState.beside.Start([this, newest, dvcpro] { fNewest = MakeOne(newest, dvcpro, nullptr); });
    return {};
}

Result<> SourcePictures::Wait()
{
    fState.beside.Wait();
    return fNewest;
}

}  // namespace kelvane
