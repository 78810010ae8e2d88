#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "media/samples/sample_file.h"

namespace kelvane {

// A RIFF WAVE file of PCM or float samples, little-endian in the file as in memory. Broadcast WAVE
// (EBU Tech 3285), RF64, BW64 and Sony Wave64 read like any other. Encodings but these two are
// refused.
class WAVFile : public SampleFile {
public:
    WAVFile(const char* path, uint32_t mode);

    // Lays down the headers of a destination; again as SampleFile::LayDown.
    Status SetFormat(const RawAudioFormat& format);
};

// True when the file begins like a WAVE file.
bool IsWAVFile(const char* path);
// "WAV stereo 16-bit PCM @ 48000 Hz"; false when the file cannot be described, with words that say
// so.
bool DescribeWAV(const char* path, std::string& text);

}  // namespace kelvane
