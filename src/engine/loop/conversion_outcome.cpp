#include "engine/loop/conversion_outcome.h"

#include "format/picture_layout.h"

namespace kelvane {

namespace {

Failure WriteError(const std::string& words, Status reason, const std::string& path,
                   ConversionResult& result)
{
    result.frames_written = FramesIn(path);
    return {kError, words + " The file holds " + FramesInWords(result.frames_written) + "." +
                        reason.Reason()};
}

// Of a run that wrote all that it had: did it have all?
Result<> CheckSource(const FrameLoop& loop, const OpenFiles& files, const Losses& losses)
{
    const AudioTransfer& audio = files.audio;
    const FrameReader& reader = loop.Feed().Reader();
    const uint64_t promised = reader.Promised();
    const Status frames = reader.Reason();
    const Status reason = frames == kOK ? audio.Reason() : frames;
    if (reader.EndStatus() == kReferenceMissing || loop.Feed().AudioStatus() == kReferenceMissing)
        return Failure{kError, "Error reading the referenced file." +
                                   FramesMissing(losses, promised) + reason.Reason()};
    if (losses.FailTheRun()) return Failure{kError, ReadErrorInWords(losses, promised, reason)};
    if (const Status header = files.source.HeaderTrouble(); header != kOK)
        return Failure{kError,
                       "Error reading source file! Its header can't be read whole, so that its "
                       "sound may be missing." +
                           header.Reason()};
    if (loop.Sink().FramesWritten() == 0 && loop.LastWish() == Wish::kGoOn)
        return Failure{kError, TooShortInWords(reader.Given()) + reason.Reason()};
    return {};
}

Outcome OutcomeOf(Wish wish)
{
    switch (wish) {
        case Wish::kStop:
            return Outcome::kStopped;
        case Wish::kEnd:
            return Outcome::kEnded;
        default:
            return Outcome::kDone;
    }
}

}  // namespace

uint64_t FramesIn(const std::string& path)
{
    const auto file = OpenSource(path);
    if (!file) return 0;
    Source& film = **file;
    // What is promised last may not be there whole.
    std::vector<uint8_t> frame(LargestFrame(film.format));
    uint64_t count = film.CountFrames();
    for (; count > 0; count--) {
        const Status last = film.ReadFrame(static_cast<int64_t>(count) - 1, frame).status;
        if (last != kMissing && last != kEnd) break;
    }
    return count;
}

Result<> ConcludeRun(const FrameLoop& loop, const Result<>& run, const OpenFiles& files,
                     ConversionResult& result)
{
    const Status finish = files.destination.Finish();
    result.losses = loop.Feed().Lost();
    result.losses.frames_undecodable += loop.Undecodable();
    result.losses.frames_salvaged = files.source.FramesSalvaged();
    result.losses.frames_left_out = files.source.LeftOut();
    result.losses.sound_unread = files.audio.UnreadSeconds();
    result.frames_read = loop.Feed().FramesRead();
    result.frames_written = loop.Sink().FramesWritten();
    if (!run && run.Error().status == kUnwritten)
        return WriteError(run.Error().message, run.Error().status, files.path, result);
    if (!run) return run;
    if (finish != kOK) return WriteError(kVideoWriteError, finish, files.path, result);
    if (auto whole = CheckSource(loop, files, result.losses); !whole) return whole;
    result.outcome = OutcomeOf(loop.LastWish());
    return {};
}

}  // namespace kelvane
