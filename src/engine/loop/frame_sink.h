#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/result.h"
#include "dv/dif_frame.h"
#include "engine/containers/destination.h"
#include "engine/sound/audio_transfer.h"

namespace kelvane {

inline constexpr char kVideoWriteError[] = "Write error in destination file (video track)!";
inline constexpr char kAudioWriteError[] = "Write error in destination file (audio track)!";

// Takes the frames of a destination in order and writes them with their sound. What a destination
// refuses fails with kUnwritten.
class FrameSink {
public:
    FrameSink(Destination& destination, AudioTransfer& audio);

    // What the frames want stored beside them, before the first one; may be empty.
    Result<> SetStreamHeader(std::span<const uint8_t> header);
    // Writes output frame `number`, which shows the source frame of `origin`. DV frames get their
    // sound first, and a display format where one is given: true is 16:9; `frame` is changed by
    // that.
    Result<> Write(int64_t number, std::span<uint8_t> frame, const FrameOrigin& origin,
                   std::optional<bool> wide);
    // The sound that is left.
    Result<> Finish();

    // That stand in the output.
    uint64_t FramesWritten() const { return fWritten; }

private:
    void TouchUp(int64_t number, std::span<uint8_t> frame, const FrameOrigin& origin,
                 std::optional<bool> wide);
    AudioTrack& Track();

    Destination& fDestination;
    AudioTransfer& fAudio;
    DIFFrame fFrame;
    uint64_t fWritten = 0;
};

}  // namespace kelvane
