#include "engine/loop/frame_loop.h"

#include <algorithm>

#include "base/status.h"
#include "engine/loop/reencoding.h"
#include "engine/timing/planned_frames.h"

namespace kelvane {

namespace {

constexpr uint64_t kLeastFrames = 3;

// What a step says about the turn.
enum class Turn { kGoOn, kEnd, kFailed };

Status Fail(ConversionRun& run, Status status, const std::string& message)
{
    run.message = message;
    return status;
}

// What could be written is told when the destination is closed.
Status FailToWrite(ConversionRun& run, Status status, const char* words)
{
    run.message = words;
    run.write_error = status;
    return kError;
}

int64_t CountToRead(ConversionRun& run)
{
    const int64_t count = run.time.FramesToRead();
    return count != 0 || !run.ring.IsFresh() ? count : FramesToPrefill(run.settings);
}

// Reads a frame into the ring. At the end of the source the turns still advance it, so that it runs
// dry in order.
Status ReadFrame(ConversionRun& run)
{
    FrameSlot& slot = run.ring.AtWrite();
    const auto number = static_cast<int64_t>(run.frames_read++);
    int64_t size = 0;
    switch (run.reader.Next(slot.compressed, size)) {
        case FrameArrival::kFrame:
            run.ring.Filled(size, number);
            return run.audio.FrameRead(std::span(slot.compressed).first(size_t(size)));
        case FrameArrival::kRepeat:
            run.ring.Repeat(number);
            run.audio.FrameRepeated();
            return kOK;
        default:
            run.ring.MarkEmpty(number);
            return kOK;
    }
}

Status Read(ConversionRun& run)
{
    for (int64_t left = CountToRead(run); left > 0; left--)
        if (const Status status = ReadFrame(run); status != kOK)
            return Fail(run, status, run.audio.Message());
    run.audio_status = run.audio.TurnRead();
    return kOK;
}

// A film needs three frames, unless one more was read at once; and it needs its first one.
Turn CheckStart(ConversionRun& run, Status& status)
{
    const Status end = run.reader.EndStatus();
    const uint64_t given = run.reader.Given();
    const bool first_lost = given == 0 && end == kUnread;
    if (end == kOK || (run.frames_read != kLeastFrames && !first_lost)) return Turn::kGoOn;
    std::string message = TooShortInWords(given);
    if (first_lost) message = std::string(kVideoReadError) + " The first frame can't be read.";
    if (end == kReferenceMissing)
        message = "Error reading source file! The referenced file is not found.";
    status = Fail(run, kError, message + run.reader.Reason().Reason());
    return Turn::kFailed;
}

Turn CheckReads(ConversionRun& run, Status& status)
{
    if (CheckStart(run, status) == Turn::kFailed) return Turn::kFailed;
    if (run.reader.EndStatus() == kOK && run.audio_status == kOK) return Turn::kGoOn;
    return run.ring.IsDry() ? Turn::kEnd : Turn::kGoOn;
}

// The first DV frame tells what the file is; every one tells its time code.
void LookAtFrame(ConversionRun& run, FrameSlot& current)
{
    if (!run.source.format.IsDV()) return;
    run.frame.AttachFrame(current.compressed.data(), static_cast<uint32_t>(current.size));
    Timecode timecode;
    const bool told = run.frame.GetTimecode(timecode);
    if (!run.knows_first) {
        run.knows_first = true;
        run.is_dvcpro = run.frame.IsDVCPRO();
        run.is_wide = run.frame.IsWidescreen();
        if (told) run.first_timecode = timecode;
    }
    if (told) run.last_timecode = timecode;
}

bool KeepsFieldOrder(const ConversionSettings& settings)
{
    const int32_t from = settings.src_interlace, to = settings.dst_interlace;
    return from == 0 || to == 0 || to == from;
}

// True when the frame can be written as it was read. Raw pictures of the same colour space and
// size are copied like any other.
bool PassesThrough(const ConversionRun& run)
{
    const ConversionSettings& settings = run.settings;
    return run.source.is_pal == run.destination.is_pal &&
           SameKind(run.source.format, run.destination.format) &&
           (settings.dst_aspect <= 0 || settings.dst_aspect == settings.src_aspect) &&
           SameSize(run.source.format, run.destination.format) && KeepsFieldOrder(settings) &&
           settings.MakesDVCPRO25(run.is_dvcpro) == run.is_dvcpro;
}

// Puts sound and display format into a DV frame.
void TouchUp(ConversionRun& run, std::span<uint8_t> frame)
{
    if (!run.destination.format.IsDV()) return;
    run.audio.EmbedInto(frame, static_cast<uint64_t>(run.frames_output));
    if (!run.is_wide) return;
    run.frame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    run.frame.SetWidescreen(true);
}

// Takes the sound of a destination without a separate track.
class NoTrack : public AudioTrack {
public:
    void SetFormat(uint32_t, uint32_t) override {}
    Status WriteChunk(std::span<const uint8_t>) override { return kOK; }
};

AudioTrack& TrackOf(ConversionRun& run, NoTrack& none)
{
    AudioTrack* track = run.destination.Audio();
    return track ? *track : none;
}

Status Write(ConversionRun& run, std::span<uint8_t> frame)
{
    if (run.audio.CheckRate() != kOK) return Fail(run, kWrongSampleRate, run.audio.Message());
    TouchUp(run, frame);
    if (!frame.empty()) {
        if (const Status status = run.destination.WriteFrame(frame); status != kOK)
            return FailToWrite(run, status, kVideoWriteError);
        run.frames_written++;
    }
    NoTrack none;
    const Status status =
        run.audio.FrameWritten(static_cast<uint64_t>(run.frames_output), TrackOf(run, none));
    return status == kOK ? Status(kOK) : FailToWrite(run, status, kAudioWriteError);
}

// Makes and writes the output frame of this turn.
Status MakeFrame(ConversionRun& run, FrameSlot& current)
{
    if (PassesThrough(run)) {
        if (run.frames_output == 0)
            if (const auto header = run.source.StreamHeader(); !header.empty())
                run.destination.SetStreamHeader(header);
        return Write(run, std::span(current.compressed).first(static_cast<size_t>(current.size)));
    }
    bool dropped = false;
    const Status status = Reencode(run, dropped);
    if (status != kOK || dropped) return status;
    return Write(run, run.encoder.Frame());
}

void Report(ConversionRun& run)
{
    if (!run.host) return;
    run.frames_planned = std::max(run.frames_planned, run.frames_written);
    run.wish = run.host->Progress({run.frames_written, run.frames_planned, run.frames_read});
}

// The source can have held less than it promised: what was planned is what there is, at the end.
void ReportEnd(ConversionRun& run)
{
    if (run.wish != Wish::kGoOn || run.frames_planned == run.frames_written) return;
    run.frames_planned = run.frames_written;
    Report(run);
    run.wish = Wish::kGoOn;  // it is over already
}

// False when the run is to stop.
bool AdvanceAndReport(ConversionRun& run)
{
    run.time.Advance(run.frames_output, run.frames_read);
    run.frames_output++;
    Report(run);
    return run.wish == Wish::kGoOn && run.frames_read < kMostFrames;
}

Turn TakeTurn(ConversionRun& run, Status& status)
{
    status = Read(run);
    if (status != kOK) return Turn::kFailed;
    const Turn reads = CheckReads(run, status);
    if (reads != Turn::kGoOn) return reads;
    FrameSlot& current = run.ring.Current();
    LookAtFrame(run, current);
    if (current.size == 0) return Turn::kEnd;
    status = MakeFrame(run, current);
    if (status != kOK) return Turn::kFailed;
    return AdvanceAndReport(run) ? Turn::kGoOn : Turn::kEnd;
}

}  // namespace

Status RunFrameLoop(ConversionRun& run)
{
    run.frames_planned = PlannedFrames(run.settings, run.source.is_pal, run.destination.is_pal,
                                       run.reader.Promised());
    Status status = kOK;
    Turn turn = Turn::kGoOn;
    while (turn == Turn::kGoOn)
        turn = TakeTurn(run, status);
    if (turn == Turn::kFailed) return status;
    if (AudioTrack* track = run.destination.Audio())
        if (const Status last = run.audio.Finish(*track); last != kOK)
            return FailToWrite(run, last, kAudioWriteError);
    ReportEnd(run);
    return kOK;
}

}  // namespace kelvane
