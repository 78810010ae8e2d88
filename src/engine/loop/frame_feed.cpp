#include "engine/loop/frame_feed.h"

#include "format/picture_layout.h"

namespace kelvane {

namespace {

constexpr uint64_t kLeastFrames = 3;

}  // namespace

FrameFeed::FrameFeed(Source& source, AudioTransfer& audio)
    : fAudio(audio), fReader(source, fLosses), fRing(LargestFrame(source.format))
{
}

// At the end of the source the turns still advance the ring, so that it runs dry in order.
Result<> FrameFeed::ReadFrame()
{
    const auto number = static_cast<int64_t>(fFramesRead++);
    const std::span<uint8_t> room = fRing.Room();
    const FrameArrival arrival = fReader.Next(room);
    switch (arrival.kind) {
        case FrameArrival::kFrame:
            fRing.Filled(arrival.size, number);
            return fAudio.FrameRead(room.first(arrival.size));
        case FrameArrival::kRepeat:
            fRing.Repeat(number);
            fAudio.FrameRepeated();
            break;
        case FrameArrival::kNothing:
            fRing.MarkEmpty(number);
    }
    return {};
}

Result<> FrameFeed::Read(int64_t frames)
{
    for (; frames > 0; frames--)
        if (auto read = ReadFrame(); !read) return read;
    fAudioStatus = fAudio.TurnRead();
    return CheckStart();
}

// A film needs three frames, unless one more was read at once; and it needs its first one.
Result<> FrameFeed::CheckStart() const
{
    const Status end = fReader.EndStatus();
    const uint64_t given = fReader.Given();
    const bool first_lost = given == 0 && end == kUnread;
    if (end == kOK || (fFramesRead != kLeastFrames && !first_lost)) return {};
    std::string message = TooShortInWords(given);
    if (first_lost) message = std::string(kVideoReadError) + " The first frame can't be read.";
    if (end == kReferenceMissing)
        message = "Error reading source file! The referenced file is not found.";
    return Failure{kError, message + fReader.Reason().Reason()};
}

bool FrameFeed::IsOver() const
{
    return (fReader.EndStatus() != kOK || fAudioStatus != kOK) && fRing.IsDry();
}

}  // namespace kelvane
