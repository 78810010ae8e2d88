#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"
#include "media/avi/structure/avi_structure.h"
#include "platform/files/file_handle.h"

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

// True for a whole one, which names a file.
bool IsReference(std::span<const uint8_t> chunk);
// The path ends at its stored length or at a zero. It is empty when the chunk ends before.
Reference ParseReference(std::span<const uint8_t> chunk);
std::vector<uint8_t> BuildReference(const Reference& reference);

// Reads a frame, or as much of it as the buffer has room for: kTooLarge then. kMissing when it
// lies, also in part, beyond the end that the file has now, kUnread with the reason when the system
// failed; `size` is 0 with these.
Status ReadEntry(FileHandle file, const FrameEntry& entry, std::span<uint8_t> buffer,
                 uint32_t& size);

// The files that reference chunks of one source name. They stay open, so that many frames share
// one handle.
class ReferencedFiles {
public:
    // `film`: the path of the source. A file that is no longer where its path says is looked for
    // under its name beside the source.
    explicit ReferencedFiles(std::string film) : fFilm(std::move(film)) {}
    // As ReadEntry, of a frame of `bytes` bytes. kReferenceMissing with the reason when its file
    // cannot be opened.
    Status Read(const Reference& reference, uint32_t bytes, std::span<uint8_t> buffer,
                uint32_t& size);

private:
    // A file of 4 GB each: no real film comes near.
    static constexpr size_t kMostOpen = 64;
    struct OpenFile {
        std::string path;
        FileHolder file;
        Status opened;  // shows at the read
    };
    const OpenFile& FileOf(const std::string& path);

    OpenFile Open(const std::string& path) const;

    std::string fFilm;
    std::vector<OpenFile> fFiles;
    size_t fOldest = 0;  // to be replaced next when all places are taken
};

// The files that so many frames of so many bytes go to.
std::vector<std::string> ReferenceFiles(const std::string& destination, uint64_t frames,
                                        uint64_t frameBytes, uint64_t limit);

// The files that the frames of a destination go to. The first is named after the destination, with
// the extension ".000"; each is left when it has passed the limit.
class ReferenceOutput {
public:
    // `replaced`: files that may replace others; further ones are created only where none exists.
    ReferenceOutput(const std::string& destination, uint64_t limit, uint64_t replaced);
    // Appends a chunk and gives the reference to it.
    Status Write(uint32_t tag, std::span<const uint8_t> frame, Reference& reference);
    // Closes the last file.
    Status Finish() { return Close(); }

private:
    Status Open();
    Status Close();

    std::string fDestination;
    std::string fPath;  // of the file being written
    uint64_t fLimit;    // bytes
    uint64_t fReplaced;
    FileHolder fFile;
    uint64_t fEnd = 0;
    bool fTail = false;  // there may be a piece of a chunk behind the end
    uint64_t fNumber = 0;
};

}  // namespace kelvane
