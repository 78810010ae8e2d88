#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/four_cc.h"
#include "media/avi/avi_file.h"

namespace kelvane {

// One of the DV output types, as the conversion asks for it.
struct AVIOutput {
    const char* name;
    uint32_t flags;  // without the television system
    uint32_t handler;
    bool HasSound() const { return !(flags & kAVIType1); }
};
inline constexpr AVIOutput kAVIOutputs[] = {
    {"Type1", 0x0101, "dvsd"_4cc},          {"Type1OpenDML", 0x2009, "dvsd"_4cc},
    {"Type2", 0x0100, "dvsd"_4cc},          {"Type2OpenDML", 0x2008, "dvsd"_4cc},
    {"Type1Reference", 0x0409, "dv25"_4cc}, {"Type2Reference", 0x0408, "dvsd"_4cc},
    {"Canopus1", 0x1101, "CDVC"_4cc},       {"Canopus2", 0x1100, "CDVC"_4cc},
    {"Matrox", 0x2909, "dvsd"_4cc},
};

const AVIOutput& OutputNamed(std::string_view name);
// A frame's worth of bytes that differ from number to number.
Bytes NumberedFrame(size_t bytes, uint32_t number);
// Sound for one frame of a Type 2 file, with a length of its own.
Bytes NumberedSound(uint32_t number);

// Writes `frames` frames of `frame_size` bytes (0: of the television system), with sound where
// the type has a stream for it. The number of frames that were taken.
uint32_t WriteFilm(const std::string& path, const AVIOutput& output, bool pal, uint32_t frames,
                   const AVILimits& limits = {}, size_t frame_size = 0);
// All frames of a stream through our own reader.
std::vector<Bytes> ReadFilm(const std::string& path, int32_t stream = 0);

}  // namespace kelvane
