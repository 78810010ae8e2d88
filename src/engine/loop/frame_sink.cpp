#include "engine/loop/frame_sink.h"

namespace kelvane {

namespace {

// Takes the sound of a destination without a separate track.
class NoTrack : public AudioTrack {
public:
    void SetFormat(uint32_t, uint32_t) override {}
    Status WriteChunk(std::span<const uint8_t>) override { return kOK; }
};

Failure Unwritten(const char* words, Status reason)
{
    return {{kUnwritten, reason.SystemError()}, words};
}

}  // namespace

FrameSink::FrameSink(Destination& destination, AudioTransfer& audio)
    : fDestination(destination), fAudio(audio)
{
}

Result<> FrameSink::SetStreamHeader(std::span<const uint8_t> header)
{
    const Status status = header.empty() ? kOK : fDestination.SetStreamHeader(header);
    if (status != kOK) return Unwritten(kVideoWriteError, status);
    return {};
}

void FrameSink::TouchUp(int64_t number, std::span<uint8_t> frame, const FrameOrigin& origin,
                        std::optional<bool> wide)
{
    if (!fDestination.format.IsDV()) return;
    fAudio.EmbedInto(frame, static_cast<uint64_t>(number), origin);
    if (!wide) return;
    fFrame.AttachFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    fFrame.SetWidescreen(*wide);
}

AudioTrack& FrameSink::Track()
{
    static NoTrack none;  // it keeps nothing
    AudioTrack* track = fDestination.Audio();
    return track ? *track : none;
}

Result<> FrameSink::Write(int64_t number, std::span<uint8_t> frame, const FrameOrigin& origin,
                          std::optional<bool> wide)
{
    if (auto rate = fAudio.CheckRate(); !rate) return rate;
    TouchUp(number, frame, origin, wide);
    if (!frame.empty()) {
        if (const Status status = fDestination.WriteFrame(frame); status != kOK)
            return Unwritten(kVideoWriteError, status);
        fWritten++;
    }
    const Status status = fAudio.FrameWritten(static_cast<uint64_t>(number), Track());
    if (status != kOK) return Unwritten(kAudioWriteError, status);
    return {};
}

Result<> FrameSink::Finish()
{
    if (!fDestination.Audio()) return {};
    if (const Status last = fAudio.Finish(Track()); last != kOK)
        return Unwritten(kAudioWriteError, last);
    return {};
}

}  // namespace kelvane
