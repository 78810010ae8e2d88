#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <string>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Reads up to `count` records or sample frames: how many came, or the status when it failed.
template <class File>
int32_t ReadRecords(File& file, int32_t count, void* into)
{
    const Status status = file.Read(into, count);
    EXPECT_TRUE(status == 0 || count <= 0);
    return status == 0 ? count : status.Code();
}

// The next frame or chunk of a stream as text; "(status)" on failure, with what came of one that is
// too large in front.
template <class File>
std::string NextFrame(File& file, int32_t stream = 0, size_t room = 144000)
{
    Bytes buffer(room);
    uint32_t size = 0;
    const Status status = file.ReadFrame(stream, buffer, size);
    if (status == 0) return {buffer.begin(), buffer.begin() + size};
    EXPECT_EQ(status == kTooLarge ? room : 0, size) << "a size in spite of a failure";
    return std::string(buffer.begin(), buffer.begin() + size) + "(" +
           std::to_string(status.Code()) + ")";
}

// All that NextFrame gives, up to the status that ends it: "AAAA BBBB (-200)".
template <class File>
std::string NextFrames(File& file, int32_t stream = 0)
{
    std::string all = NextFrame(file, stream, 64);
    while (!all.ends_with(')'))
        all += " " + NextFrame(file, stream, 64);
    return all;
}

// A file without a disk under it, for tests that write thousands of times.
class FileInMemory {
public:
    FileInMemory() : fFile(memfd_create("film", MFD_CLOEXEC)) {}
    std::string Path() const { return "/proc/self/fd/" + std::to_string(fFile.Handle()); }

private:
    FileHolder fFile;
};

// A limit on the size of any file stands in for a full disk: a write is cut short, then refused.
class FullDisk {
public:
    explicit FullDisk(uint64_t bytes)
    {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &fOld);
        const rlimit limit{bytes, fOld.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &fOld); }

private:
    rlimit fOld;
};

}  // namespace kelvane
