#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/status.h"
#include "format/media_format.h"
#include "media/riff/chunk_tree.h"
#include "media/samples/sample_file.h"

namespace kelvane {

// An AIFF or AIFC file of PCM samples: big-endian in the file, handed over and taken with the bytes
// of every 16-bit word exchanged. 16-bit samples are thus little-endian in memory; those of another
// size come with their bytes exchanged in pairs, which is deliberate. The rest is as in WAVFile.
class AIFFFile {
public:
    AIFFFile(const char* path, uint32_t mode);
    ~AIFFFile();
    AIFFFile(const AIFFFile&) = delete;
    AIFFFile& operator=(const AIFFFile&) = delete;

    // 0; -1 the file cannot be opened; -2 not an AIFF file; -3 not PCM, or an AIFC file whose
    // compression type is not written the way that this class does: with its halves exchanged.
    Status InitCheck() const { return fInitCheck; }
    // Of the "COMM" chunk; null without one, and then reads fail.
    const RawAudioFormat* Format() const { return fCommon ? &fRecord : nullptr; }
    // Lays down the headers of a destination, in the AIFC form if `compressed`. -3 for anything but
    // PCM. A second call writes the bare record over the "COMM" chunk: deliberate.
    Status SetFormat(const RawAudioFormat& format, bool compressed);

    // Whole sample frames of the "SSND" chunk that the file really has.
    int64_t CountFrames() const;
    int64_t PromisedFrames() const;
    Status SetPosition(int64_t frame);
    // Samples begin behind the eight bytes of the "SSND" header; its offset field does not count.
    Status Read(void* buffer, int32_t& count);
    Status Write(const void* buffer, int32_t count);
    Status Finish();

    const ChunkTree& Tree() const { return fTree; }

private:
    void Parse();
    Status WriteHeaders();

    SampleFile fSamples;
    ChunkTree fTree{ByteOrder::kBig};
    Status fInitCheck = kOK;
    RawAudioFormat fRecord{};
    Chunk* fCommon = nullptr;  // "COMM"
    Chunk* fSound = nullptr;   // "SSND"
    std::vector<uint8_t> fSwapped;
};

// True when the file begins like an AIFF or AIFC file.
bool IsAIFFFile(const char* path);
// As DescribeWAV, with "AIFF" in front.
bool DescribeAIFF(const char* path, std::string& text);

}  // namespace kelvane
