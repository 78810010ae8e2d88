#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "base/status.h"
#include "format/media_format.h"
#include "platform/files/file_access.h"

namespace kelvane {

// Bytes of one sample of every channel, as files of samples lay them out.
constexpr size_t SampleFrameSize(const RawAudioFormat& format)
{
    return size_t{format.ch} * ((size_t{format.bitspersample} + 7) / 8);
}

// The samples of a WAVE or AIFF file: one run of sample frames from some place in the file on. One
// system call for each read and write.
class SampleFile {
public:
    SampleFile(const char* path, uint32_t mode);

    // Why it could not be opened.
    Status InitCheck() const { return fOpened; }
    bool IsOpen() const { return fFile.IsOpen(); }
    FileHandle Handle() const { return fFile.Handle(); }
    uint32_t Mode() const { return fMode; }

    // Where the first sample lies, and how many bytes of samples a source promises; kToTheEnd when
    // it leaves that open.
    void SetStart(uint64_t offset, uint64_t promised = 0);
    static constexpr uint64_t kToTheEnd = std::numeric_limits<uint64_t>::max();
    // Whole frames of what is promised that the file really has, and all of them.
    int64_t CountFrames(size_t frameSize) const;
    int64_t PromisedFrames(size_t frameSize) const;
    void SetPosition(int64_t frame) { fPosition = frame; }
    // Reads up to `count` frames from the position on, whatever the bytes there belong to, and
    // moves past those that were whole. On failure `count` is 0: kMissing where the file, as it is
    // now, ends before a frame that was promised; kEnd where it ends behind them; kUnread when the
    // system failed.
    Status Read(void* buffer, int32_t& count, size_t frameSize);
    // Appends frames. The first call makes room for the header: zeros up to the first sample.
    Status Write(const void* buffer, int32_t count, size_t frameSize);
    // Closes a file that was created, cut off behind what was written whole. `headers` says how
    // writing them went; the first failure counts, and further calls answer the same.
    Status Finish(Status headers);

    uint64_t FramesWritten() const { return fFramesWritten; }
    uint64_t BytesWritten() const { return fBytesWritten; }

private:
    FileHolder fFile;
    uint32_t fMode;
    Status fOpened;
    Status fWritten = kOK;  // the last failure
    Status fFinished = kOK;
    uint64_t fStart = 0;     // bytes
    uint64_t fPromised = 0;  // bytes
    int64_t fPosition = 0;   // sample frames
    bool fReserved = false;  // the header's room
    uint64_t fFramesWritten = 0;
    uint64_t fBytesWritten = 0;
};

// Writes the bare record over the first 16 bytes of a header's body, low byte first.
void OverwriteWithRecord(const RawAudioFormat& format, std::vector<uint8_t>& body);

// "WAV stereo 16-bit PCM @ 48000 Hz" and the like, `kind` in front.
std::string DescribeSamples(const char* kind, const RawAudioFormat& format);

// The description of a file of class `File` on disk. False, with words that say so, when there is
// nothing to describe.
template <class File>
bool DescribeSampleFile(const char* kind, const char* path, std::string& text)
{
    text = std::string(kind) + " [prg error]";
    if (!path) return false;
    const File file(path, kRead);
    text = std::string(kind) + " [open error]";
    if (file.InitCheck() != 0 || !file.Format()) return false;
    text = DescribeSamples(kind, *file.Format());
    return true;
}

}  // namespace kelvane
