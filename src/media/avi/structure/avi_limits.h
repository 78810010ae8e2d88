#pragma once

#include <cstdint>

namespace kelvane {

// Where an AVI destination begins a new part, in bytes of media without chunk heads unless told
// otherwise. The values are those of the dialects; tests make them small.
struct AVILimits {
    uint64_t first_riff = 0x3C000000;  // with kAVISegments; with the reserved header
    uint64_t later_riff = 0x78000000;  // with kAVISegments
    uint64_t only_riff = 0xF0000000;   // without; what goes over it is refused
    uint64_t reference_file = 0xF0000000;
    // Files of references that may replace others; further ones are created where none exists.
    uint64_t reference_files = UINT64_MAX;
    uint32_t chunks_per_index = 200;            // a standard index is written when there are more
    uint32_t super_index_entries = 0xFFFFFFFF;  // at most; the room in the chunk is a limit too
    uint32_t matrox_index_entries = 8180;       // a further index is begun when there are more
};

}  // namespace kelvane
