#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "media/samples/sample_file.h"

namespace kelvane {

// An AIFF or AIFC file of PCM or float samples. Big-endian ones are handed over and taken with the
// bytes of every 16-bit word exchanged: 16-bit samples are thus little-endian in memory; those of
// another size come with their bytes exchanged in pairs, which is deliberate (ReadRaw leaves them
// as they are). Samples begin behind the eight bytes of the "SSND" header, whose offset field does
// not count.
class AIFFFile : public SampleFile {
public:
    AIFFFile(const char* path, uint32_t mode);

    // Lays down the headers of a destination, in the AIFC form if `compressed`; again as
    // SampleFile::LayDown. -3 for anything but PCM.
    Status SetFormat(const RawAudioFormat& format, bool compressed);
};

// True when the file begins like an AIFF or AIFC file.
bool IsAIFFFile(const char* path);
// As DescribeWAV, with "AIFF" in front.
bool DescribeAIFF(const char* path, std::string& text);

}  // namespace kelvane
