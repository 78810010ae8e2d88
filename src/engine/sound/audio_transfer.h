#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "dv/audio_blocks.h"
#include "dv/dif_frame.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/audio_setup.h"
#include "engine/sound/companion_audio.h"
#include "engine/sound/frame_sound.h"
#include "engine/sound/picture_sync.h"
#include "engine/sound/resampler.h"
#include "engine/sound/sample_cadence.h"
#include "engine/sound/stream_audio_reader.h"
#include "engine/sound/track_audio_writer.h"

namespace kelvane {

// The source frame behind an output frame.
struct FrameOrigin {
    std::span<const uint8_t> bytes;
    bool repeated = false;  // it stands for one that could not be had, without its sound
};

// The sound of one conversion, from where it comes to where it goes: an audio stream of the source,
// companion files or the source's DV frames; the destination's DV frames or a separate track. It
// is moved sample for sample and in step with the pictures whatever is missing. Only where a tape's
// own sound runs away from its pictures, or these change their speed, it follows them.
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
    void EmbedInto(std::span<uint8_t> frame, uint64_t number, const FrameOrigin& origin);
    // After each frame was written. The status of writing to the track, whose format is set as soon
    // as it is known.
    Status FrameWritten(uint64_t number, AudioTrack& track);
    // At the end, also of a run that was stopped: the last chunk.
    Status Finish(AudioTrack& track);

    // What could not be read of the sound, or had no place in the output, in seconds; and what the
    // system said.
    double UnreadSeconds() const;
    Status Reason() const;
    // What a user should know of a run that went to its end, in seconds: sound behind the last
    // picture, which is left out; pictures behind the end of a stream or companion, which are
    // silent; frames of a tape that had no sound.
    double SecondsLeftOver();
    double SecondsShort() const;
    double SilentSeconds() const { return fFrames.SilentSeconds(); }
    // The sound is that of a stream or companion, whose length is its own.
    bool HasOwnLength() const { return !FromFrames(); }
    bool IsUntouched() const { return fSetup.untouched; }
    // A tape's channels 3 and 4 have sound, which nobody asked to leave out.
    bool LeftOutPair() const { return fFrames.LeftOutSound(); }

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
    // Channels of a stream or of companions that go nowhere.
    size_t ChannelsLeftOut() const;

private:
    size_t Group() const { return size_t{2} * fChannels; }
    double BytesASecond() const
    {
        return static_cast<double>(fRate) * static_cast<double>(Group());
    }
    size_t Enough() const;
    bool TakesSound() const { return !fSetup.untouched && !fSetup.nowhere; }
    bool FromFrames() const { return !fStream && !fCompanion.IsOpen(); }
    void Know(uint32_t rate, uint32_t channels);
    void PutLead();
    void OweWithoutRate(uint64_t number);
    uint64_t OwedWithoutRate() const;  // samples, at the rate now known
    Result<> OpenCompanions();
    void ExtractFrom(std::span<uint8_t> frame);
    void StartFrames(const AudioInfo& info);
    uint32_t SamplesFor(uint64_t number);
    void SwitchRate(uint64_t number);
    void TakeSound(std::span<uint8_t> sound);
    void KeepBlocks(std::span<uint8_t> frame, const FrameOrigin& origin, AudioHalf half);
    bool KeepsOtherPair(const FrameOrigin& origin);
    size_t ExactSamples() const;
    void OweFrame(uint64_t number);
    void BeginOutlet(size_t bytes);
    Status RunOutlet(bool ended);
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

    std::optional<PictureSync> fSync;  // of sound in the source's frames
    FrameSound fFrames;
    uint64_t fTaken = 0;  // bytes given to frames or owed to the track
    double fLate = 0.0;   // seconds by which changes of rate have put sound behind its pictures

    // Where the sound goes at another speed: behind the FIFO, and what it has made.
    std::optional<Resampler> fOutlet;
    double fOutletBegin = 0;  // bytes before it
    AudioFifo fMade;

    TrackAudioWriter fTrack;
    uint64_t fFramesOwed = 0;  // to it
    bool fDeclared = false;
    uint64_t fFramesWithoutRate = 0;
    std::array<uint64_t, 3> fOwedWithoutRate{};  // samples, at each rate that may yet turn up
    uint64_t fRest = 0;                          // bytes of a stream that nobody took
    uint64_t fMissing = 0;                       // bytes that a stream or companion did not have
    std::vector<uint8_t> fScratch;
};

}  // namespace kelvane
