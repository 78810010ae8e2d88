#include "engine/loop/conversion_outcome.h"

#include "engine/loop/frame_loop.h"
#include "format/picture_layout.h"

namespace kelvane {

namespace {

Status TellWriteError(const std::string& words, Status reason, const std::string& path,
                      ConversionResult& result)
{
    result.frames_written = FramesIn(path);
    result.message =
        words + " The file holds " + FramesInWords(result.frames_written) + "." + reason.Reason();
    return kError;
}

// Of a run that wrote all that it had: did it have all?
Status CheckSource(const ConversionRun& run, ConversionResult& result)
{
    const Losses& losses = run.losses;
    const uint64_t promised = run.reader.Promised();
    const Status frames = run.reader.Reason();
    const Status reason = frames == kOK ? run.audio.Reason() : frames;
    if (run.reader.EndStatus() == kReferenceMissing || run.audio_status == kReferenceMissing) {
        result.message = "Error reading the referenced file." + FramesMissing(losses, promised) +
                         reason.Reason();
    } else if (losses.FailTheRun()) {
        result.message = ReadErrorInWords(losses, promised, reason);
    } else if (run.frames_written == 0 && run.wish == Wish::kGoOn) {
        result.message = TooShortInWords(run.reader.Given()) + reason.Reason();
    } else {
        return kOK;
    }
    return kError;
}

void Warn(const ConversionRun& run, ConversionResult& result)
{
    if (const std::string warning = run.source.Warning(); !warning.empty())
        result.warnings.push_back(warning);
    if (const uint64_t cut = run.reader.CutFrames(); cut > 0)
        result.warnings.push_back(
            std::to_string(cut) +
            " frames of the source are larger than a DV frame; their first bytes were taken.");
}

}  // namespace

uint64_t FramesIn(const std::string& path)
{
    std::string message;
    const auto file = OpenSource(path, message);
    if (!file) return 0;
    // What is promised last may not be there whole.
    std::vector<uint8_t> frame(LargestFrame(file->format));
    uint64_t count = file->CountFrames();
    for (int64_t size = 0; count > 0; count--) {
        const Status last = file->ReadFrame(static_cast<int64_t>(count) - 1, frame, size);
        if (last != kMissing && last != kEnd) break;
    }
    return count;
}

Status ConcludeRun(ConversionRun& run, Status loop, const std::string& path,
                   ConversionResult& result)
{
    const Status finish = run.destination.Finish();
    run.losses.sound_unread = run.audio.UnreadSeconds();
    run.losses.sound_silenced = run.audio.SilencedSeconds();
    result.losses = run.losses;
    result.frames_read = run.frames_read;
    result.frames_written = run.frames_written;
    result.message = run.message;
    Warn(run, result);
    Status status = loop;
    if (run.write_error != kOK)
        status = TellWriteError(run.message, run.write_error, path, result);
    else if (loop == kOK && finish != kOK)
        status = TellWriteError(kVideoWriteError, finish, path, result);
    else if (loop == kOK)
        status = CheckSource(run, result);
    if (status == kOK)
        result.outcome = run.wish == Wish::kGoOn   ? Outcome::kDone
                         : run.wish == Wish::kStop ? Outcome::kStopped
                                                   : Outcome::kEnded;
    return status;
}

}  // namespace kelvane
