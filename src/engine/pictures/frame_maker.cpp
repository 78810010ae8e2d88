#include "engine/pictures/frame_maker.h"

#include <utility>

#include "engine/pictures/source_pictures.h"

namespace kelvane {

namespace {

NeighbourPictures PicturesOf(const ResamplingPlan& plan, const NeighbourFrames& frames)
{
    NeighbourPictures pictures{};
    for (const Neighbour which :
         {Neighbour::kPrevious, Neighbour::kCurrent, Neighbour::kNext, Neighbour::kNewest})
        if (plan.LooksAt(which))
            pictures[static_cast<size_t>(which)] = frames[which]->picture.data();
    return pictures;
}

}  // namespace

FrameMaker::FrameMaker(const MediaFormat& format, bool pal, MotionDetail motionDetail,
                       ConversionState& state)
    : fFormat(format),
      fEncoder(format, pal, state),
      fResampler(format.Width(), format.Height(), motionDetail, state)
{
}

// True when the picture is that of the frame before: lines of the same frames, and nothing more.
bool FrameMaker::IsAgain(const FrameJob& job)
{
    Woven woven;
    if (job.plan.OnlyWeaves()) woven = {job.frames[job.plan.even], job.frames[job.plan.odd]};
    const Woven before = std::exchange(fWoven, woven);
    return woven.even && woven == before;
}

// A coded frame tells the order of its fields.
void FrameMaker::DeclareFieldOrder(FieldOrder order)
{
    if (!fFormat.IsDV()) return;
    fFrame.AttachFrame(Frame().data(), static_cast<uint32_t>(Frame().size()));
    fFrame.SetFieldOrder(order);
}

Result<> FrameMaker::Make(const FrameJob& job)
{
    fPicture.resize(PictureRoom(fFormat));
    // Two turns in a row can take the same fields: the frame is coded once.
    if (IsAgain(job)) {
        fEncoder.Repeat();
    } else {
        fResampler.Make(job.plan, PicturesOf(job.plan, job.frames), fPicture.data());
        if (auto encoded = fEncoder.Encode(fPicture, job.dvcpro); !encoded) return encoded;
    }
    DeclareFieldOrder(job.order);
    return {};
}

}  // namespace kelvane
