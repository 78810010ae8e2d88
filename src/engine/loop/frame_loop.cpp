#include "engine/loop/frame_loop.h"

#include <algorithm>
#include <array>

#include "format/picture_layout.h"

namespace kelvane {

FrameLoop::FrameLoop(const ConversionSettings& settings, Source& source, Destination& destination,
                     AudioTransfer& audio, uint64_t frames, ConversionHost* host,
                     ConversionState& state)
    : fSettings(settings),
      fSource(source),
      fDestination(destination),
      fHost(host),
      fFeed(source, audio),
      fPictures(source.format, destination.format, settings, state),
      fScenes(PixelsOf(destination.format), state.pool),
      fPlanner(settings, source.is_pal, destination.is_pal),
      fMaker(destination.format, destination.is_pal, settings.motiondetail, state),
      fSink(destination, audio),
      fFramesPlanned(frames)
{
}

Result<> FrameLoop::Run()
{
    for (Turn turn = Turn::kGoOn; turn == Turn::kGoOn;) {
        const Result<Turn> taken = TakeTurn();
        if (!taken) return taken.Error();
        turn = *taken;
    }
    if (auto finished = fSink.Finish(); !finished) return finished;
    ReportEnd();
    return {};
}

Result<FrameLoop::Turn> FrameLoop::TakeTurn()
{
    const FrameRing& ring = fFeed.Ring();
    if (const auto read = fFeed.Read(fPlanner.FramesToRead(ring.IsFresh())); !read)
        return read.Error();
    if (fFeed.IsOver() || !ring.Current()) return Turn::kEnd;
    SourceFrame& current = *ring.Current();
    if (fSource.format.IsDV()) LookAtTape();
    if (const auto made = PassesThrough() ? PassOn(current) : Reencode(); !made)
        return made.Error();
    return AdvanceAndReport();
}

void FrameLoop::LookAtTape()
{
    const NeighbourFrames frames = fFeed.Ring().Neighbours();
    using enum Neighbour;
    const std::array known = {frames[kCurrent]->Bytes(), frames[kNext]->Bytes(),
                              frames[kNewest]->Bytes()};
    fTape.LookAt(known);
}

namespace {

bool KeepsFieldOrder(const ConversionSettings& settings)
{
    return settings.src_interlace == FieldOrder::kProgressive ||
           settings.dst_interlace == FieldTarget::kAsSource ||
           IsSameOrder(settings.src_interlace, settings.dst_interlace);
}

// Pictures of a depth that nobody reads are nobody's to label either.
bool HasKnownDepth(const MediaFormat& format)
{
    return format.IsDV() || format.Space() != 0;
}

}  // namespace

Aspect FrameLoop::SourceAspect() const
{
    if (fSettings.src_aspect != Aspect::kAsSource) return fSettings.src_aspect;
    const MediaFormat& format = fSource.format;
    constexpr double kLeastWide = 1.51;
    const bool wide =
        format.IsDV() ? fTape.IsWide() : double(format.Width()) / format.Height() >= kLeastWide;
    return wide ? Aspect::k16x9 : Aspect::k4x3;
}

// What DV frames are to say of their display format; nothing where they may say what they do.
std::optional<bool> FrameLoop::WidthToDeclare() const
{
    const Aspect wanted = fSettings.dst_aspect;
    if (wanted != Aspect::kAsSource && wanted != SourceAspect()) return wanted == Aspect::k16x9;
    return fTape.IsWide() ? std::optional(true) : std::nullopt;
}

// True when the frame can be written as it was read. Raw pictures of the same colour space and
// size are copied like any other.
bool FrameLoop::PassesThrough() const
{
    return fSource.is_pal == fDestination.is_pal && SameKind(fSource.format, fDestination.format) &&
           (fSettings.dst_aspect == Aspect::kAsSource || fSettings.dst_aspect == SourceAspect()) &&
           HasKnownDepth(fSource.format) && SameSize(fSource.format, fDestination.format) &&
           KeepsFieldOrder(fSettings) &&
           fSettings.MakesDVCPRO25(fTape.IsDVCPRO()) == fTape.IsDVCPRO();
}

FrameOrigin FrameLoop::Origin() const
{
    return {fFeed.Ring().Current()->Bytes(), fFeed.Ring().CurrentIsRepeat()};
}

// Sound and display format are put into the frame itself; where it stands for the next one as well,
// they are put in anew.
Result<> FrameLoop::PassOn(SourceFrame& frame)
{
    if (fPlanner.Number() == 0)
        if (auto set = fSink.SetStreamHeader(fSource.StreamHeader()); !set) return set;
    return fSink.Write(fPlanner.Number(), frame.Bytes(), Origin(), WidthToDeclare());
}

// Makes and writes the output frame of this turn. That the newest picture could not be made is told
// before anything else.
Result<> FrameLoop::Reencode()
{
    const NeighbourFrames frames = fFeed.Ring().Neighbours();
    const int64_t current = fFeed.Ring().CurrentNumber();
    if (auto made = fPictures.Make(frames, fTape.IsDVCPRO()); !made) return made;
    fScenes.BeginTurn();
    const auto picture = [&](Neighbour which) {
        if (which == Neighbour::kNewest) static_cast<void>(fPictures.Wait());
        return frames[which]->picture.data();
    };
    const ResamplingPlan plan = fPlanner.Plan(
        current, [&](Neighbour a, Neighbour b) { return fScenes.Alike(picture(a), picture(b)); });
    const bool dropped = plan.base == ResamplingPlan::kDrop;
    fHasBlackPictures |= plan.base == ResamplingPlan::kNothing;
    if (dropped || plan.LooksAt(Neighbour::kNewest))
        if (auto newest = fPictures.Wait(); !newest || dropped) return newest;
    const Result<> made = fMaker.Make(
        {plan, frames, fPlanner.Order(current), fSettings.MakesDVCPRO25(fTape.IsDVCPRO())});
    if (auto newest = fPictures.Wait(); !newest) return newest;
    if (!made) return made;
    if (fPlanner.Number() == 0)
        if (auto set = fSink.SetStreamHeader(fMaker.StreamHeader()); !set) return set;
    return fSink.Write(fPlanner.Number(), fMaker.Frame(), Origin(), WidthToDeclare());
}

void FrameLoop::Report()
{
    if (!fHost) return;
    fFramesPlanned = std::max(fFramesPlanned, fSink.FramesWritten());
    fWish = fHost->Progress({fSink.FramesWritten(), fFramesPlanned, fFeed.FramesRead()});
}

// The source can have held less than it promised: what was planned is what there is, at the end.
void FrameLoop::ReportEnd()
{
    if (fWish != Wish::kGoOn || fFramesPlanned == fSink.FramesWritten()) return;
    fFramesPlanned = fSink.FramesWritten();
    Report();
    fWish = Wish::kGoOn;  // it is over already
}

FrameLoop::Turn FrameLoop::AdvanceAndReport()
{
    fPlanner.Advance(fFeed.FramesRead());
    Report();
    return fWish == Wish::kGoOn && fFeed.FramesRead() < kMostFrames ? Turn::kGoOn : Turn::kEnd;
}

}  // namespace kelvane
