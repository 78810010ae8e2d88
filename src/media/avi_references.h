#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/file_handle.h"
#include "base/status.h"

namespace kelvane {

// A reference chunk stands in for a frame that lies in another file:
//   "REF ", position of the frame's chunk head there (32 bits), frame number (32), length of the
//   path with its zero (32), the path.
inline constexpr uint32_t kReferenceHeadSize = 16;
// A chunk of at least this many bytes is media whatever it begins with.
inline constexpr uint32_t kSmallestFrame = 120000;

struct Reference {
    uint32_t position = 0;
    uint32_t frame = 0;
    std::string path;
};

bool IsReference(std::span<const uint8_t> chunk);
// The path ends at its stored length, at a zero or with the chunk, whichever comes first.
Reference ParseReference(std::span<const uint8_t> chunk);
std::vector<uint8_t> BuildReference(const Reference& reference);

// The files that reference chunks of one source name. They stay open, so that many frames share
// one handle.
class ReferencedFiles {
public:
    // Reads `bytes` bytes of the frame at the reference. False when the file or the frame is not
    // there.
    bool Read(const Reference& reference, void* buffer, uint32_t bytes);

private:
    // A file of 4 GB each: no real film comes near.
    static constexpr size_t kMostOpen = 64;
    struct OpenFile {
        std::string path;
        FileHolder file;  // empty when it could not be opened; that shows at the read
    };
    FileHandle HandleOf(const std::string& path);

    std::vector<OpenFile> fFiles;
    size_t fOldest = 0;  // to be replaced next when all places are taken
};

// The files that the frames of a destination go to. The first is named after the destination, with
// the extension ".000"; each is left when it has passed the limit.
class ReferenceOutput {
public:
    ReferenceOutput(const std::string& destination, uint64_t limit);
    // Appends a chunk and gives the reference to it. -1 on failure.
    Status Write(uint32_t tag, std::span<const uint8_t> frame, Reference& reference);

private:
    bool OpenNext();

    std::string fPath;
    uint64_t fLimit;  // bytes
    FileHolder fFile;
    uint64_t fEnd = 0;
    int fNumber = -1;
};

}  // namespace kelvane
