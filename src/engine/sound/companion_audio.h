#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/status.h"
#include "engine/sound/audio_fifo.h"
#include "engine/sound/companion_names.h"
#include "engine/sound/sample_converter.h"
#include "media/samples/audio_file.h"

namespace kelvane {

// One companion file, read from beginning to end in 16-bit samples.
class CompanionReader {
public:
    explicit CompanionReader(const std::string& path);

    // True when the file is open and holds samples that can be brought to 16 bits.
    bool IsUsable() const { return !fTrouble; }
    // Why it is not; null when it is.
    const char* Trouble() const { return fTrouble; }
    // What came of opening it.
    Status Opened() const { return fFile.InitCheck(); }
    const RawAudioFormat& Format() const { return *fFile.Format(); }
    // Reads up to `frames` sample frames into `samples`, 2 bytes for each sample of each channel.
    // How many there were; 0 at the end. What cannot be read is silence.
    size_t Read(uint8_t* samples, size_t frames);
    bool Ended() const { return fLeft == 0; }
    int64_t FramesLeft() const { return fLeft; }
    // Sample frames that could not be read, and what the system said first.
    uint64_t LostFrames() const { return fLost; }
    Status Reason() const { return fReason; }

private:
    AudioFile fFile;
    SampleCoding fCoding;
    const char* fTrouble = nullptr;
    const char* FindTrouble() const;
    size_t PassUnread(uint8_t* samples, size_t frames, Status status);

    int64_t fPosition = 0;
    int64_t fLeft = 0;  // sample frames
    uint64_t fLost = 0;
    Status fReason = kOK;
    std::vector<uint8_t> fRaw;
};

// The sound beside a clip that has none of its own: one file, or one mono file for each channel.
class CompanionAudio {
public:
    // Looks for companion files beside the source by name.
    Result<> FindCompanionAudio(const std::string& source_path, bool separate_track);
    // Takes the named file, and those of its further channels, instead; fails when it cannot be
    // used. Both do nothing when files are open already. They fail (-18) when the files do not fit
    // together, or one is there and cannot be read.
    Result<> OpenCompanionAudio(const std::string& path, bool separate_track);

    bool IsOpen() const { return !fReaders.empty(); }
    // Of the sound that Fill delivers.
    uint32_t Channels() const { return fChannels; }
    uint32_t Rate() const { return fRate; }
    // Channels of the files found that give no sound.
    size_t ChannelsLeftOut() const { return fLeftOut; }
    // A file of a name that was looked for, whose contents are no sound that can be used.
    struct Unused {
        std::string path;
        std::string why;
    };
    const std::vector<Unused>& PassedOver() const { return fUnused; }
    // The files found, up to four, in channel order.
    const std::vector<std::string>& Paths() const { return fPaths; }
    // Bytes of the sound delivered that could not be read and are silence; what the system said.
    uint64_t LostBytes() const;
    Status Reason() const;

    // Tops up the FIFO when it holds no more than `enough` bytes.
    void Fill(AudioFifo& fifo, size_t enough);
    bool Ended() const;
    // What it would still deliver.
    uint64_t BytesLeft() const;

private:
    bool OpenRun(CompanionName name);
    Result<> Settle(bool separate_track);
    Failure Refuse(const std::string& message);
    void FillFromOne(AudioFifo& fifo);
    void FillFromMany(AudioFifo& fifo);

    std::vector<std::unique_ptr<CompanionReader>> fReaders;
    size_t fUsed = 0;  // readers that give sound; a third of three is left open and unread
    size_t fLeftOut = 0;
    uint32_t fChannels = 0;
    uint32_t fRate = 0;  // hertz
    std::vector<std::string> fPaths;
    std::vector<Unused> fUnused;
    Status fUnreadable = kOK;  // of the last of the paths
    std::vector<uint8_t> fMono, fMixed;
};

}  // namespace kelvane
