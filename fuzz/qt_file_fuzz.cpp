// Opens any bytes as a movie, asks everything that can be asked and reads some of every stream.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/qt_description.h"
#include "media/qt_file.h"
#include "support/qt_builder.h"

using namespace kelvane;

namespace {

constexpr uint64_t kMostBytes = 1 << 20;  // read of one frame or chunk

void WalkStream(QTFile& file, int32_t stream)
{
    PrintFormat(file.StreamFormat(stream), nullptr, 0);
    static_cast<void>(file.Duration(stream));
    static std::vector<uint8_t> buffer(kMostBytes);
    const int64_t frames = file.SampleCount(stream);
    for (int64_t start : {int64_t{0}, frames - 1, frames, file.ChunkCount(stream), INT64_MAX}) {
        if (file.SeekFrame(stream, start) != 0) continue;
        for (int i = 0; i < 8; i++) {
            const uint64_t size = file.FrameSize(stream, file.FramePosition(stream));
            uint32_t got;
            const auto room = std::span(buffer).first(std::min(size, kMostBytes));
            const int status = file.ReadFrame(stream, room, got);
            if (got > room.size() || (status != 0 && got != 0)) abort();
            if (status != 0) break;
        }
    }
}

}  // namespace

// With an empty corpus folder as the last argument, good movies of several kinds are put there
// first.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    if (!freopen("/dev/null", "w", stdout)) return 1;
    const std::filesystem::path folder = *argc > 1 ? (*argv)[*argc - 1] : "";
    if (!std::filesystem::is_directory(folder) || !std::filesystem::is_empty(folder)) return 0;
    const auto seeds = QTSeedMovies();
    for (size_t i = 0; i < seeds.size(); i++) {
        std::ofstream out(folder / ("seed" + std::to_string(i)), std::ios::binary);
        out.write(reinterpret_cast<const char*>(seeds[i].data()),
                  static_cast<std::streamsize>(seeds[i].size()));
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const int handle = memfd_create("movie", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(handle);
    if (ftruncate(handle, 0) != 0 || pwrite(handle, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    IsQuickTimeFile(path.c_str());
    std::string text;
    DescribeQuickTime(path.c_str(), text);
    QTFile file(path.c_str(), kRead);
    for (int32_t stream = 0; stream < std::min(file.CountStreams(), 8); stream++)
        WalkStream(file, stream);
    return 0;
}
