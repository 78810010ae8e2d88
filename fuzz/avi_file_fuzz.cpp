// Any bytes as an AVI file: parse it in all modes, describe it, read frames.
// With an empty corpus folder as the last argument, seeds are made in it first.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/avi_description.h"
#include "media/avi_file.h"
#include "support/riff.h"

using namespace kelvane;

namespace {

void WriteSeeds(const std::filesystem::path& folder)
{
    std::vector<TinyAVI> films(5);
    films[1].from_movi = false;
    films[1].type = "iavs";
    films[2].handler = "HFYU";
    films[2].index = TinyAVI::IndexEntry("00db", 4, 8) + TinyAVI::IndexEntry("00db", 0, 0);
    films[3] = TinyAVI::OpenDML({8, 0x80000000, 8});
    films[4].frames = {"REF " + Little(0, 8) + Little(9, 4) + "/etc/hos" + Little(0, 2)};
    for (size_t i = 0; i < films.size(); i++) {
        std::string bytes = films[i].Build();
        if (i == 3)
            bytes += RiffList("AVIX", {RiffList("movi", {RiffChunk("00db", "more")})}, "RIFF");
        std::ofstream(folder / ("seed" + std::to_string(i)), std::ios::binary) << bytes;
    }
}

void ReadAll(const char* path, uint32_t mode)
{
    AVIFile file(path, mode);
    if (file.InitCheck() != 0) return;
    std::vector<uint8_t> buffer(200000);
    for (int32_t i = 0; i < file.CountStreams() && i < 6; i++) {
        MediaFormat format;
        file.StreamFormat(i, format);
        uint32_t size = 0;
        for (int n = 0; n < 40 && file.ReadFrame(i, buffer, size) == 0; n++) {
        }
        file.FrameOffset(i, 1000000, size);
        file.FrameOffset(i, static_cast<int32_t>(file.StreamAt(i)->frames.Count()), size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments)
{
    const std::filesystem::path corpus = (*arguments)[*count - 1];
    if (std::filesystem::is_directory(corpus) && std::filesystem::is_empty(corpus))
        WriteSeeds(corpus);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const int memory = memfd_create("avi", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    if (ftruncate(memory, 0) != 0 || pwrite(memory, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    std::string text;
    DescribeAVI(path.c_str(), text);
    ReadAll(path.c_str(), kRead);
    ReadAll(path.c_str(), kRead | kAVIListMedia);
    return 0;
}
