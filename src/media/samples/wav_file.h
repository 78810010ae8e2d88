#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "media/riff/chunk_tree.h"
#include "media/samples/sample_file.h"

namespace kelvane {

// A RIFF WAVE file of PCM or float samples, little-endian in the file as in memory. Broadcast WAVE
// (EBU Tech 3285) reads like any other. For one thread at a time; the destructor finishes a file
// that was created and cannot tell.
class WAVFile {
public:
    // `mode` is a FileMode. A source is parsed at once.
    WAVFile(const char* path, uint32_t mode);
    ~WAVFile();
    WAVFile(const WAVFile&) = delete;
    WAVFile& operator=(const WAVFile&) = delete;

    // 0; -1 the file cannot be opened; -2 not a WAVE file; -3 neither PCM nor float.
    Status InitCheck() const { return fInitCheck; }
    // Of the "fmt " chunk, refused encodings too; null without one, and then reads fail.
    const RawAudioFormat* Format() const { return fFormat ? &fRecord : nullptr; }
    // Lays down the headers of a destination. A second call changes the frame size of what follows
    // and writes the bare record over the "fmt " chunk, without turning it into one: deliberate.
    Status SetFormat(const RawAudioFormat& format);

    // Whole sample frames of the "data" chunk that the file really has.
    int64_t CountFrames() const;
    // Those that the "data" chunk promises.
    int64_t PromisedFrames() const;
    // Makes `frame` the next one to read. Not checked, always 0.
    Status SetPosition(int64_t frame);
    // As SampleFile::Read. Not limited to the "data" chunk: whoever asks for more than
    // CountFrames() gets what stands behind it.
    Status Read(void* buffer, int32_t& count);
    // As SampleFile::Write.
    Status Write(const void* buffer, int32_t count);
    // Ends a file that was created: its headers are written and it is closed. Further calls answer
    // the same.
    Status Finish();

    const ChunkTree& Tree() const { return fTree; }

private:
    void Parse();
    Status WriteHeaders();

    SampleFile fSamples;
    ChunkTree fTree{ByteOrder::kLittle};
    Status fInitCheck = kOK;
    RawAudioFormat fRecord{};
    Chunk* fFormat = nullptr;  // "fmt "
    Chunk* fData = nullptr;
};

// True when the file begins like a WAVE file.
bool IsWAVFile(const char* path);
// "WAV stereo 16-bit PCM @ 48000 Hz"; false when the file cannot be described, with words that say
// so.
bool DescribeWAV(const char* path, std::string& text);

}  // namespace kelvane
