// Opens any bytes as a movie, asks everything that can be asked and reads some of every stream.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/describe/qt_description.h"
#include "media/quicktime/qt_file.h"
#include "support/qt_builder.h"

using namespace kelvane;

namespace {

constexpr uint64_t kMostBytes = 1 << 20;  // read of one frame or chunk
constexpr int32_t kThorough = 8;          // streams; of all others little is read

void Expect(bool holds)
{
    if (!holds) abort();
}

// Reads the next frame or chunk into a buffer of this size and holds the answer to its word. False
// at the end and at all that cannot be read.
bool ReadOne(QTFile& file, int32_t stream, uint64_t room)
{
    static std::vector<uint8_t> buffer(kMostBytes);
    const auto into = std::span(buffer).first(std::min(room, kMostBytes));
    const int64_t before = file.FramePosition(stream);
    const int64_t count = file.IsVideo(stream) ? file.SampleCount(stream) : file.ChunkCount(stream);
    uint32_t got = 1;
    const Status status = file.ReadFrame(stream, into, got);
    Expect(file.FramePosition(stream) == before + (status == kOK));
    Expect(got <= into.size() && (status == kOK || got == (status == kTooLarge ? into.size() : 0)));
    if (status == kEnd) Expect(before >= count);
    if (status == kOK) Expect(before < count);
    return status == kOK;
}

void WalkStream(QTFile& file, int32_t stream, uint64_t anywhere)
{
    PrintFormat(file.StreamFormat(stream), nullptr, 0);
    static_cast<void>(file.Duration(stream));
    const int reads = stream < kThorough ? 8 : 1;
    const int64_t frames = file.SampleCount(stream), chunks = file.ChunkCount(stream);
    const auto within = [anywhere](int64_t count) {
        return count > 0 ? static_cast<int64_t>(anywhere % static_cast<uint64_t>(count)) : 0;
    };
    for (const int64_t start : {int64_t{0}, within(frames), within(chunks), frames - 1, frames,
                                chunks - 1, chunks, INT64_MAX}) {
        if (file.SeekFrame(stream, start) != kOK) continue;
        Expect(file.FramePosition(stream) == start);
        for (int i = 0; i < reads; i++) {
            const uint64_t size = file.FrameSize(stream, file.FramePosition(stream));
            if (size > 0) static_cast<void>(ReadOne(file, stream, anywhere % size));
            static_cast<void>(file.CurrentSample(stream));
            static_cast<void>(file.CurrentChunk(stream));
            // What cannot be read is gone over.
            if (!ReadOne(file, stream, size) &&
                file.SeekFrame(stream, file.FramePosition(stream) + 1) != kOK)
                break;
        }
    }
}

// With any other stream for its sound.
void AskHowItBegins(QTFile& file, int32_t stream, uint64_t anywhere)
{
    const SampleCoding coding = file.SoundCoding(stream);
    Expect(!coding.IsSupported() || coding.Bytes() <= 8);
    const MediaFormat format = file.StreamFormat(stream);
    const auto other = static_cast<int32_t>(anywhere % 9) - 1;
    const QTStart start = file.Start(stream, format, other);
    const QTPictureTimes times = file.PictureTimes(stream, format, start.held);
    for (const uint64_t frame : {uint64_t{0}, start.held, start.held + 1, times.Count() / 2})
        if (frame < times.Count()) static_cast<void>(times.At(frame));
    Expect(times.Count() == 0 || !times.At(0).held);
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
    uint64_t anywhere = size;
    for (size_t i = 0; i < std::min<size_t>(size, 64); i++)
        anywhere = anywhere * 31 + data[size - 1 - i];
    for (int32_t stream = 0; stream < file.CountStreams(); stream++)
        WalkStream(file, stream, anywhere);
    for (int32_t stream = 0; stream < std::min(file.CountStreams(), kThorough); stream++)
        AskHowItBegins(file, stream, anywhere);
    // Of a stream that does not exist nothing comes.
    Expect(file.FrameSize(file.CountStreams(), 0) == 0 && file.SeekFrame(-1, 0) != kOK);
    return 0;
}
