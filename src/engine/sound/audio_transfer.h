#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "dv/dif_frame.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/companion_audio.h"
#include "engine/sound/frame_audio_reader.h"
#include "engine/sound/sample_cadence.h"
#include "engine/sound/stream_audio_reader.h"
#include "engine/sound/track_audio_writer.h"

namespace kelvane {

// What is settled about the sound of one conversion before its frame loop begins.
struct AudioSetup {
    bool source_is_pal = false;
    bool destination_is_pal = false;
    bool source_is_dv = false;    // its frames can carry sound
    bool separate_track = false;  // sound goes to a track of its own and not into frames
    int32_t interleave = 1;       // frames between two chunks of that track
    bool companions = false;      // look for companion files on the first frame
    std::string source_path;      // beside which they lie
    std::string companion;        // a file named by the user, instead of the search
};

// The sound of one conversion, from where it comes to where it goes: an audio stream of the source,
// companion files or the source's DV frames; the destination's DV frames or a separate track. It
// is moved sample for sample, never resampled, and in step with the pictures whatever is missing.
// The frame loop calls the operations in the order in which they stand here. For one thread.
class AudioTransfer {
public:
    explicit AudioTransfer(const AudioSetup& setup);

    // The source has an audio stream: neither companion files nor frames are looked at then. To be
    // called before the loop, if at all; `stream` outlives this object. Fails for samples that
    // cannot be brought to 16 bits and for a rate that DV does not know.
    Result<> SetSourceStream(AudioStream& stream, const SampleCoding& coding, uint32_t rate,
                             uint32_t channels);
    // After each source frame that was read, with its bytes. Fails when companion files do not fit
    // together.
    Result<> FrameRead(std::span<uint8_t> frame);
    // After each source frame for which the one before stands: silence in place of its sound.
    void FrameRepeated();
    // Once a turn, after its reads, if it had any. The status of the last read of the source's
    // audio stream; 0 without one.
    Status TurnRead();
    // Once a turn, before its frame is finished. Fails for a rate that DV does not know.
    Result<> CheckRate() const;
    // For each DV frame of the destination before it is written: puts the sound of output frame
    // `number` into it. Leaves the frame alone while no sound is known, and when there is a
    // separate track.
    void EmbedInto(std::span<uint8_t> frame, uint64_t number);
    // After each frame was written. The status of writing to the track, whose format is set as soon
    // as it is known.
    Status FrameWritten(uint64_t number, AudioTrack& track);
    // At the end, also of a run that was stopped: the last chunk.
    Status Finish(AudioTrack& track);

    // What could not be read of the sound, or had no place in the output, in seconds; and what the
    // system said.
    double UnreadSeconds() const;
    double SilencedSeconds() const { return fSilenced; }
    Status Reason() const;

    // Hertz, and channels; 0 hertz while nothing is known.
    uint32_t Rate() const { return fRate; }
    uint32_t Channels() const { return fChannels; }
    // Companion files in use.
    const std::vector<std::string>& CompanionPaths() const { return fCompanion.Paths(); }
    // Files of such names without sound that can be used.
    const std::vector<CompanionAudio::Unused>& CompanionsPassedOver() const
    {
        return fCompanion.PassedOver();
    }
    // Channels of theirs that go nowhere.
    size_t ChannelsLeftOut() const { return fCompanion.ChannelsLeftOut(); }

private:
    // From this byte of all that ever went through the FIFO on, the sound has another rate.
    struct RateMark {
        uint64_t at;
        uint32_t rate;
    };

    size_t Group() const { return size_t{2} * fChannels; }
    size_t Enough() const;
    void Know(uint32_t rate, uint32_t channels);
    void OweWithoutRate(uint64_t number);
    uint64_t OwedWithoutRate() const;  // samples, at the rate now known
    Result<> OpenCompanions();
    void ExtractFrom(std::span<uint8_t> frame);
    void StartFrames(uint32_t rate);
    void SwitchRate(uint64_t number);
    void DeclareTrack(AudioTrack& track);
    bool SourceEnded() const;

    AudioSetup fSetup;
    AudioFifo fFifo;
    SampleCadence fCadence;
    uint32_t fRate = 0;  // of what leaves the FIFO, hertz
    uint32_t fChannels = 2;
    DIFFrame fFrame;

    std::optional<StreamAudioReader> fStream;
    CompanionAudio fCompanion;
    bool fCompanionsSought = false;

    FrameAudioReader fFrames;
    uint32_t fFrameRate = 0;        // of what enters the FIFO from frames, hertz
    uint64_t fSilentFrames = 0;     // source frames before the first with sound
    uint64_t fLost = 0;             // bytes from frames that the FIFO could not take
    uint64_t fPut = 0, fTaken = 0;  // bytes from frames through the FIFO so far
    std::deque<RateMark> fMarks;
    double fSilenced = 0.0;  // seconds of frames whose sound had another rate than the track
    double fLate = 0.0;      // seconds by which changes of rate have put sound behind its pictures

    TrackAudioWriter fTrack;
    bool fDeclared = false;
    uint64_t fFramesWithoutRate = 0;
    std::array<uint64_t, 3> fOwedWithoutRate{};  // samples, at each rate that may yet turn up
    std::vector<uint8_t> fScratch;
};

}  // namespace kelvane
