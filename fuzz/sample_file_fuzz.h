#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "format/media_format.h"
#include "platform/files/file_access.h"

namespace kelvane {

// The input as a file that is only in memory.
class MemoryFile {
public:
    MemoryFile(const uint8_t* data, size_t size) : fFile(memfd_create("input", MFD_CLOEXEC))
    {
        if (write(fFile.Handle(), data, size) != static_cast<ssize_t>(size)) std::abort();
        fPath = "/proc/self/fd/" + std::to_string(fFile.Handle());
    }
    const char* Path() const { return fPath.c_str(); }

private:
    FileHolder fFile;
    std::string fPath;
};

// Reads the samples of any file from front to back, then from somewhere behind its end.
template <class File>
void ReadSamples(const char* path)
{
    File file(path, kRead);
    if (file.InitCheck() != 0 || !file.Format()) return;
    const RawAudioFormat& format = *file.Format();
    const size_t frame = size_t{format.ch} * ((size_t{format.bitspersample} + 7) / 8);
    constexpr int32_t kFrames = 16;
    if (frame > 1 << 20) return;  // the buffer is ours to provide
    std::vector<uint8_t> buffer(kFrames * frame);
    if (file.HasSound() && file.Coding().Bytes() * format.ch != frame) std::abort();
    int32_t count = kFrames;
    int64_t done = 0;
    for (; done < 100 * kFrames; done += count) {
        count = kFrames;
        const Status status = file.Read(buffer.data(), count);
        if ((status == kOK) != (count > 0)) std::abort();
        // The end is where nothing more is promised.
        if (status == kEnd && done < file.PromisedFrames()) std::abort();
        if (status != kOK) break;
    }
    if (file.PromisedFrames() < file.CountFrames()) std::abort();
    static_cast<void>(file.SetPosition(file.CountFrames() + 1));
    count = kFrames;
    static_cast<void>(file.Read(buffer.data(), count));
}

// Where seeds are to go: the last argument, when it is an empty folder.
inline std::filesystem::path SeedFolder(int argc, char** argv)
{
    std::error_code ignored;
    const std::filesystem::path last = argc > 1 ? argv[argc - 1] : "";
    return std::filesystem::is_directory(last, ignored) && std::filesystem::is_empty(last, ignored)
               ? last
               : std::filesystem::path();
}

}  // namespace kelvane
