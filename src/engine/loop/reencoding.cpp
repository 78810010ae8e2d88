#include "engine/loop/reencoding.h"

#include <algorithm>
#include <optional>

#include "base/status.h"
#include "format/picture_layout.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/geometry.h"

namespace kelvane {

namespace {

// Some steps write past the end of a picture, by less than one of PAL size: the second half of a
// picture buffer is that margin.
size_t PictureRoom(const MediaFormat& format)
{
    constexpr size_t kPALPicture = 720 * 576 * kBytesOf32Bits;
    return 2 * std::max(kPALPicture, PixelsOf(format) * kBytesOf32Bits);
}

bool DeinterlacesSource(const ConversionRun& run)
{
    return run.settings.deinterlace_source_first != 0 &&
           !FieldsSwap(run.settings.src_interlace, run.settings.dst_interlace);
}

// Decodes one frame and brings it to the destination's geometry. `pool` is null when the work is
// done beside something else that uses the pool.
Status DecodeSlot(ConversionRun& run, FrameSlot& slot, WorkerPool* pool)
{
    const MediaFormat& from = run.source.format;
    const MediaFormat& to = run.destination.format;
    slot.decoded.resize(PictureRoom(from));
    slot.resized.resize(PictureRoom(to));
    const std::span<const uint8_t> frame(slot.compressed.data(), static_cast<size_t>(slot.size));
    const Status status = run.decoder.Decode(frame, run.is_dvcpro, slot.decoded);
    if (status != kOK) return status;
    if (DeinterlacesSource(run))
        AdaptiveDeinterlace(run.state.deinterlace, slot.decoded.data(),
                            static_cast<size_t>(from.Width()) * kBytesOf32Bits, from.Width(),
                            from.Height(), true, pool);
    GeometryConvert(slot.decoded.data(), from, to, slot.resized.data(), run.settings.op,
                    run.settings.mode, static_cast<uint32_t>(run.settings.src_interlace), pool);
    slot.is_decoded = true;
    return kOK;
}

bool NeedsDecoding(const FrameSlot& slot)
{
    return slot.size > 0 && !slot.is_decoded;
}

// The newest picture is decoded beside the making of this turn's frame, which seldom looks at it.
class NewestBeside {
public:
    NewestBeside(ConversionRun& run, FrameSlot& slot) : fRun(run)
    {
        if (!NeedsDecoding(slot)) return;
        // Both could use the deinterlacer's history, whose order counts.
        fDone = DeinterlacesSource(run);
        if (fDone)
            fStatus = DecodeSlot(run, slot, &run.state.pool);
        else
            run.state.beside.Start([this, &slot] { fStatus = DecodeSlot(fRun, slot, nullptr); });
    }
    // With work under way only when something else has failed, which is told instead.
    ~NewestBeside() { static_cast<void>(fRun.state.beside.Settle()); }
    NewestBeside(const NewestBeside&) = delete;
    NewestBeside& operator=(const NewestBeside&) = delete;

    // The outcome of the decoding.
    Status Wait()
    {
        fRun.state.beside.Wait();
        return fStatus;
    }

private:
    ConversionRun& fRun;
    Status fStatus = kOK;
    bool fDone = false;
};

// Neighbours that are not there give way to those next to them.
struct Neighbours {
    explicit Neighbours(FrameRing& ring)
        : current(ring.Current()),
          previous(ring.Previous().size > 0 ? ring.Previous() : current),
          next(ring.Next().size > 0 ? ring.Next() : current),
          newest(ring.Newest().size > 0 ? ring.Newest() : next)
    {
    }
    FrameSlot& Of(Neighbour which) const
    {
        switch (which) {
            case Neighbour::kPrevious:
                return previous;
            case Neighbour::kCurrent:
                return current;
            case Neighbour::kNext:
                return next;
            default:
                return newest;
        }
    }
    FrameSlot& current;
    FrameSlot& previous;
    FrameSlot& next;
    FrameSlot& newest;
};

ResamplingInput InputOf(const ConversionRun& run, const FrameSlot& current)
{
    ResamplingInput in;
    in.position = run.time.Position();
    in.step = run.time.Step();
    in.method = run.settings.timeresampling;
    in.source_interlace = run.settings.src_interlace;
    in.target_interlace = run.settings.dst_interlace;
    in.allow_field_order_change = run.settings.conversion_options & kOptionFieldOrderChange;
    const bool equal = run.source.is_pal == run.destination.is_pal;
    in.direction = equal ? 0 : run.settings.op == kOperationToNTSC ? 1 : 2;
    in.output_index = run.frames_output;
    in.current_frame_number = current.frame_number;
    return in;
}

// A coded frame tells the order of its fields.
void DeclareFieldOrder(ConversionRun& run, const FrameSlot& current)
{
    if (!run.destination.format.IsDV()) return;
    const std::span<uint8_t> frame = run.encoder.Frame();
    run.frame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    run.frame.SetFieldOrder(OutputFieldOrder(InputOf(run, current)));
}

// Nothing when the picture is more than lines of frames.
std::optional<WovenFrames> WovenBy(const ResamplingPlan& plan, const Neighbours& neighbours)
{
    if (!plan.OnlyWeaves()) return std::nullopt;
    return WovenFrames{neighbours.Of(plan.even).frame_number, neighbours.Of(plan.odd).frame_number};
}

// Resamples and encodes. A failure to decode the newest picture is told before anything else.
Status MakePicture(ConversionRun& run, const Neighbours& neighbours, NewestBeside& newest,
                   bool& dropped)
{
    run.resampler.BeginTurn([&](Neighbour which) -> const uint8_t* {
        FrameSlot& slot = neighbours.Of(which);
        if (which == Neighbour::kNewest) static_cast<void>(newest.Wait());
        return slot.resized.data();
    });
    run.picture.resize(PictureRoom(run.destination.format));
    const ResamplingPlan plan = DecideResampling(
        InputOf(run, neighbours.current),
        [&](Neighbour a, Neighbour b) { return run.resampler.Alike(a, b); }, run.drop_counter);
    dropped = plan.base == ResamplingPlan::kDrop;
    if (dropped) return kOK;
    // Two turns in a row can take the same fields: the frame is coded once.
    const std::optional<WovenFrames> woven = WovenBy(plan, neighbours);
    const bool again = woven && woven == run.woven;
    run.woven = woven;
    if (again) {
        run.encoder.Repeat();
        return kOK;
    }
    run.resampler.Make(plan, run.picture.data());
    return run.encoder.Encode(run.picture, run.settings.MakesDVCPRO25(run.is_dvcpro));
}

}  // namespace

Status Reencode(ConversionRun& run, bool& dropped)
{
    const Neighbours neighbours(run.ring);
    for (FrameSlot* slot : {&run.ring.Previous(), &run.ring.Current(), &run.ring.Next()}) {
        if (!NeedsDecoding(*slot)) continue;
        if (const Status status = DecodeSlot(run, *slot, &run.state.pool); status != kOK) {
            run.message = run.decoder.Message();
            return status;
        }
    }
    NewestBeside newest(run, run.ring.Newest());
    const Status encoded = MakePicture(run, neighbours, newest, dropped);
    if (const Status status = newest.Wait(); status != kOK) {
        run.message = run.decoder.Message();
        return status;
    }
    if (encoded != kOK) {
        run.message = run.encoder.Message();
        return encoded;
    }
    if (!dropped) DeclareFieldOrder(run, neighbours.current);
    // Before the first frame is written: what its codec wants stored with the stream.
    if (run.frames_output == 0)
        if (const auto header = run.encoder.StreamHeader(); !header.empty())
            run.destination.SetStreamHeader(header);
    return kOK;
}

}  // namespace kelvane
