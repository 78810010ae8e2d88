#pragma once

#include <cstdint>

namespace kelvane {

// About the code in a stream's "fccHandler".

// True for 25 Mbit/s DV in the spellings of all makers, also with the bytes reversed.
bool IsDVHandler(uint32_t handler);
// True for the codes under which some programs store the same frames, and others something else:
// the first frame tells.
bool MayBeDVHandler(uint32_t handler);
// True for uncompressed pictures; 0 is one of them.
bool IsRawHandler(uint32_t handler);
// What to call a video codec in a description.
struct VideoCodecName {
    const char* text;
    bool is_dv;
};
VideoCodecName NameOfVideoHandler(uint32_t handler);
// And the codec of an audio stream.
const char* NameOfAudioHandler(uint32_t handler);

}  // namespace kelvane
