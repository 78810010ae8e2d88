#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/byte_cursor.h"
#include "base/field_table.h"
#include "base/status.h"
#include "format/media_format.h"
#include "format/sample_coding.h"
#include "media/riff/chunk_tree.h"
#include "media/samples/sample_chunks.h"
#include "platform/files/file_access.h"

namespace kelvane {

// Bytes of one sample of every channel, as files of samples lay them out.
constexpr size_t SampleFrameSize(const RawAudioFormat& format)
{
    return size_t{format.ch} * ((size_t{format.bitspersample} + 7) / 8);
}

// What a file says of its samples, and how they lie in it.
struct SampleRecord {
    RawAudioFormat format;
    SampleCoding coding;
};

// What is particular to one kind of file of samples.
struct SampleFileKind {
    SampleFileGrammar grammar;
    SampleChunks (*walk)(FileHandle file, const SampleFileGrammar& grammar, ChunkTree& tree);
    uint32_t format;                            // id of the chunk that holds the format
    uint32_t sound;                             // and of the one with the samples,
    uint32_t sound_header;                      // which lie behind so many bytes of its body
    SampleRecord (*record)(const Bytes& body);  // what the format's chunk says
    const HeaderField* frame_count;             // in the format's chunk, null where there is none
    bool exchanges_bytes;                       // those of every 16-bit word of big-endian samples
    bool rounds_size;                           // of the sound to even, in its chunk's head
};

// What WAVFile and AIFFFile are alike in: a file of chunks, one of which says the format and one
// holds one run of sample frames. One system call for each read and write. For one thread at a
// time; the destructor finishes a file that was created and cannot tell.
class SampleFile {
public:
    SampleFile(const SampleFile&) = delete;
    SampleFile& operator=(const SampleFile&) = delete;

    // 0; -1 the file cannot be opened; -2 not a file of this kind; -3 samples that are not read.
    Status InitCheck() const { return fInitCheck; }
    // Refused encodings too; null where the file does not say it, and then reads fail.
    const RawAudioFormat* Format() const { return fFormat ? &fRecord : nullptr; }
    // How the samples of a source lie in the file.
    SampleCoding Coding() const { return fCoding; }

    // A chunk of samples, and channels of some bits to read it by.
    bool HasSound() const { return FrameSize() > 0; }
    // Whole sample frames of the sound's chunk that the file really has.
    int64_t CountFrames() const;
    // Those that the chunk promises.
    int64_t PromisedFrames() const;
    // Makes `frame` the next one to read. Not checked, always 0.
    Status SetPosition(int64_t frame);
    // Reads up to `count` frames from the position on and moves past those that were whole. Not
    // limited to the sound's chunk: whoever asks for more than CountFrames() gets what stands
    // behind it. On failure `count` is 0: kMissing where the file, as it is now, ends before a
    // frame that was promised; kEnd where it ends behind them; kUnread when the system failed.
    Status Read(void* buffer, int32_t& count);
    // The same, with all bytes as they stand in the file.
    Status ReadRaw(void* buffer, int32_t& count);
    // Appends frames. The first call makes room for the headers: zeros up to the first sample.
    Status Write(const void* buffer, int32_t count);
    // Ends a file that was created: its headers are written and it is closed, cut off behind what
    // was written whole. The first failure counts, and further calls answer the same.
    Status Finish();

    const ChunkTree& Tree() const { return fTree; }

protected:
    // `mode` is a FileMode. A source is parsed at once. The kind outlives the file.
    SampleFile(const char* path, uint32_t mode, const SampleFileKind& kind);
    ~SampleFile();

    struct HeaderChunk {
        uint32_t id;
        Bytes body;
    };
    // Lays down a destination: a form of this name with these chunks, those of the format and the
    // sound among them. A second call changes the frame size of what follows and writes the bare
    // record over the format's chunk, without turning it into one: deliberate.
    Status LayDown(const RawAudioFormat& format, uint32_t name, std::vector<HeaderChunk> chunks);

private:
    void Parse();
    void FindChunks();
    // 0 where there is nothing to read or write.
    size_t FrameSize() const { return fFormat && fSound ? SampleFrameSize(fRecord) : 0; }
    Status WriteHeaders();
    Status ReserveHeaders();
    const void* Exchanged(const void* buffer, size_t bytes);

    const SampleFileKind& fKind;
    FileHolder fFile;
    uint32_t fMode;
    Status fInitCheck;
    ChunkTree fTree;
    RawAudioFormat fRecord{};
    SampleCoding fCoding = kNoSampleCoding;
    Chunk* fFormat = nullptr;
    Chunk* fSound = nullptr;
    uint64_t fStart = 0;     // of the first sample, in bytes
    uint64_t fPromised = 0;  // bytes of samples
    int64_t fPosition = 0;   // of a source, in sample frames

    Status fWritten = kOK;  // the last failure
    Status fFinished = kOK;
    bool fReserved = false;  // the headers' room
    uint64_t fFramesWritten = 0;
    uint64_t fBytesWritten = 0;
    std::vector<uint8_t> fExchanged;
};

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
