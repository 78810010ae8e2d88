// Any bytes as an AVI file: parse it in all modes, describe it, count and read frames.
// With an empty corpus folder as the last argument, seeds are made in it first.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/avi/avi_file.h"
#include "media/describe/avi_description.h"
#include "support/riff.h"

using namespace kelvane;

namespace {

void WriteSeeds(const std::filesystem::path& folder)
{
    std::vector<TinyAVI> films(8);
    films[1].from_movi = false;
    films[1].type = "iavs";
    films[2].handler = "HFYU";
    films[2].index = TinyAVI::IndexEntry("00db", 4, 8) + TinyAVI::IndexEntry("00db", 0, 0);
    films[3] = TinyAVI::OpenDML({8, 0x80000000, 8});
    films[4].frames = {"REF " + Little(0, 8) + Little(9, 4) + "/etc/hos" + Little(0, 2)};
    films[5].has_index = false;
    films[5].media_end = RiffList("rec ", {RiffChunk("00iv", ""), RiffChunk("00__", "x")});
    films[6].type = "auds";
    films[6].frames[1] = "";
    films[6].media_end = RiffChunk("00wb", "sound");
    films[7] = TinyAVI::OpenDML({8, 8, 8});
    films[7].super_index = SuperIndex({4000, films[7].FrameHead(3), ~uint64_t{0}}, 5);
    for (size_t i = 0; i < films.size(); i++) {
        std::string bytes = films[i].Build();
        if (i == 3)
            bytes += RiffList("AVIX", {RiffList("movi", {RiffChunk("00db", "more")})}, "RIFF");
        std::ofstream(folder / ("seed" + std::to_string(i)), std::ios::binary) << bytes;
    }
}

void Expect(bool good)
{
    if (!good) abort();
}

// Frame by frame as it is done over what cannot be read, and what a read promises.
void ReadFrames(AVIFile& file, int32_t stream)
{
    const int64_t count = file.CountFrames(stream);
    const AVIStream& read = *file.StreamAt(stream);
    Expect(count >= static_cast<int64_t>(read.frames.Count()));
    std::vector<uint8_t> buffer(144000);
    uint32_t size = 0;
    for (int64_t n = 0; n < count && n < 60; n++) {
        Expect(file.SeekFrame(stream, n) == kOK);
        const size_t room = n % 3 == 2 ? 5 : buffer.size();
        const Status status = file.ReadFrame(stream, {buffer.data(), room}, size);
        Expect(read.position == n + (status == kOK));
        Expect(size == (status == kTooLarge ? room : status == kOK ? size : 0));
        Expect(status != kEnd && status != kError && size <= room);
        file.FrameBytes(stream, n);
    }
    Expect(file.SeekFrame(stream, count) == kOK);
    Expect(file.ReadFrame(stream, buffer, size) == kEnd);
    Expect(file.SeekFrame(stream, count + 1) == kError);
    file.FrameOffset(stream, count, size);
    file.FrameOffset(stream, 1000000, size);
}

void ReadAll(const char* path, uint32_t mode)
{
    AVIFile file(path, mode);
    if (file.InitCheck() != 0) return;
    for (int32_t i = 0; i < file.CountStreams() && i < 6; i++) {
        MediaFormat format;
        file.StreamFormat(i, format);
        ReadFrames(file, i);
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
