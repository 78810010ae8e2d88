#include "engine/frame_loop.h"

#include <algorithm>

#include "base/status.h"
#include "engine/reencoding.h"

namespace kelvane {

namespace {

constexpr uint64_t kMostFrames = 1000000000;
constexpr int64_t kPrefill = 3;
constexpr int64_t kPrefillForFieldSwap = 4;

// What a step says about the turn.
enum class Turn { kGoOn, kEnd, kFailed };

Status Fail(ConversionRun& run, Status status, const std::string& message)
{
    run.message = message;
    return status;
}

int64_t CountToRead(ConversionRun& run)
{
    const int64_t count = run.time.FramesToRead();
    if (count != 0 || !run.ring.IsFresh()) return count;
    return FieldsSwap(run.settings.src_interlace, run.settings.dst_interlace) ? kPrefillForFieldSwap
                                                                              : kPrefill;
}

// After a failed read the remaining turns still advance the ring, so that it runs dry in order.
Status ReadFrames(ConversionRun& run, int64_t left)
{
    Status status = kOK;
    while (left > 0) {
        int64_t size = 0;
        FrameSlot& slot = run.ring.AtWrite();
        run.read_status = run.source.ReadFrame(slot.compressed, size);
        run.ring.Filled(size, static_cast<int64_t>(run.frames_read++));
        left--;
        if (size > 0 && status == kOK)
            status = run.audio.FrameRead(std::span(slot.compressed).first(size_t(size)));
        if (run.read_status != kOK || status != kOK) break;
    }
    for (; left > 0; left--)
        run.ring.MarkEmpty(static_cast<int64_t>(run.frames_read++));
    return status == kOK ? kOK : Fail(run, status, run.audio.Message());
}

Status Read(ConversionRun& run)
{
    const Status status = ReadFrames(run, CountToRead(run));
    if (status == kOK) run.audio_status = run.audio.TurnRead();
    return status;
}

// A file that lost what it refers to is told, wherever in the ring its last frame stands.
Turn EndOfSource(ConversionRun& run, Status& status)
{
    if (run.read_status != kReferenceMissing && run.audio_status != kReferenceMissing)
        return Turn::kEnd;
    status = Fail(run, kError, "Error reading the referenced file.");
    return Turn::kFailed;
}

Turn CheckReads(ConversionRun& run, Status& status)
{
    if (run.frames_read == kPrefill && run.read_status != kOK) {
        status = Fail(run, kError,
                      run.read_status == kReferenceMissing
                          ? "Error reading source file! The referenced file is not found."
                          : "Error reading source file (video) !");
        return Turn::kFailed;
    }
    if (run.read_status == kOK && run.audio_status == kOK) return Turn::kGoOn;
    return run.ring.IsDry() ? EndOfSource(run, status) : Turn::kGoOn;
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

bool KeepsDataKind(const ConversionRun& run)
{
    switch (run.settings.dv_data_conversion) {
        case kKeepDataKind:
            return true;
        case kConvertToDV:
            return !run.is_dvcpro;
        case kConvertToDVCPRO25:
            return run.is_dvcpro;
        default:
            return false;
    }
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
           KeepsDataKind(run);
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
    if (!frame.empty() && run.destination.WriteFrame(frame) != kOK)
        return Fail(run, kError, "Write error in destination file (video track)!");
    NoTrack none;
    if (run.audio.FrameWritten(static_cast<uint64_t>(run.frames_output), TrackOf(run, none)) != kOK)
        return Fail(run, kError, "Write error in destination file (audio track)!");
    return kOK;
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

// False when the run is to stop.
bool AdvanceAndReport(ConversionRun& run)
{
    run.time.Advance(run.frames_output, run.frames_read);
    run.frames_output++;
    const ConversionSettings& settings = run.settings;
    if (settings.progress && settings.progress(static_cast<uint32_t>(run.frames_read),
                                               run.total_frames, settings.progress_cookie) != 0)
        return false;
    return run.frames_read < kMostFrames;
}

Turn TakeTurn(ConversionRun& run, Status& status)
{
    status = Read(run);
    if (status != kOK) return Turn::kFailed;
    const Turn reads = CheckReads(run, status);
    if (reads != Turn::kGoOn) return reads;
    FrameSlot& current = run.ring.Current();
    LookAtFrame(run, current);
    if (current.size == 0) return EndOfSource(run, status);
    status = MakeFrame(run, current);
    if (status != kOK) return Turn::kFailed;
    return AdvanceAndReport(run) ? Turn::kGoOn : Turn::kEnd;
}

}  // namespace

Status RunFrameLoop(ConversionRun& run)
{
    run.total_frames = std::min(run.source.CountFrames(), kMostFrames);
    Status status = kOK;
    Turn turn = Turn::kGoOn;
    while (turn == Turn::kGoOn)
        turn = TakeTurn(run, status);
    if (turn == Turn::kFailed) return status;
    if (AudioTrack* track = run.destination.Audio()) static_cast<void>(run.audio.Finish(*track));
    return kOK;
}

}  // namespace kelvane
