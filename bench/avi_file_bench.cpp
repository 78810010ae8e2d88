// AVI frames through the classes beside bare system calls that move the same bytes, in memory.
// Bytes a second of media is "bytes_per_second".

#include <benchmark/benchmark.h>

#include <filesystem>

#include "media/avi/avi_file.h"
#include "platform/files/file_access.h"
#include "support/avi_films.h"

namespace kelvane {
namespace {

constexpr uint32_t kFrames = 500;
constexpr uint32_t kFrameSize = 144000;

std::string InMemory(const char* name)
{
    return std::string("/dev/shm/kelvane-bench-") + name;
}

void Report(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * int64_t{kFrames} * kFrameSize);
}

void WriteBare(benchmark::State& state)
{
    const Bytes frame = NumberedFrame(kFrameSize, 0);
    for (auto _ : state) {
        const FileHolder file(FileOpen(InMemory("bare").c_str(), kOpenCreate));
        for (uint32_t i = 0; i < kFrames; i++)
            benchmark::DoNotOptimize(FileWrite(file.Handle(), frame.data(), kFrameSize));
    }
    std::filesystem::remove(InMemory("bare"));
    Report(state);
}

void WriteAVI(benchmark::State& state, const char* type)
{
    const Bytes frame = NumberedFrame(kFrameSize, 0);
    const AVIOutput& output = OutputNamed(type);
    for (auto _ : state) {
        AVIFile file(InMemory("avi").c_str(), kCreate);
        if (file.BeginDVAVI(output.flags | kAVIPAL, output.handler, 0) != 0)
            state.SkipWithError("cannot create");
        for (uint32_t i = 0; i < kFrames; i++)
            benchmark::DoNotOptimize(file.WriteFrame(0, frame.data(), kFrameSize));
    }
    std::filesystem::remove(InMemory("avi"));
    Report(state);
}

void ReadAVI(benchmark::State& state, const char* type)
{
    WriteFilm(InMemory("avi"), OutputNamed(type), true, kFrames);
    Bytes frame(kFrameSize);
    for (auto _ : state) {
        AVIFile file(InMemory("avi").c_str(), kRead);
        uint32_t size = 0;
        while (file.ReadFrame(0, frame, size) == 0)
            benchmark::ClobberMemory();
    }
    std::filesystem::remove(InMemory("avi"));
    Report(state);
}

void ReadBare(benchmark::State& state)
{
    WriteFilm(InMemory("avi"), OutputNamed("Type1"), true, kFrames);
    Bytes frame(kFrameSize);
    for (auto _ : state) {
        const FileHolder file(FileOpen(InMemory("avi").c_str(), kOpenRead));
        while (FileRead(file.Handle(), frame.data(), kFrameSize) == kFrameSize)
            benchmark::ClobberMemory();
    }
    std::filesystem::remove(InMemory("avi"));
    Report(state);
}

BENCHMARK(WriteBare);
BENCHMARK_CAPTURE(WriteAVI, Type1, "Type1");
BENCHMARK_CAPTURE(WriteAVI, Type1OpenDML, "Type1OpenDML");
BENCHMARK_CAPTURE(WriteAVI, Matrox, "Matrox");
BENCHMARK(ReadBare);
BENCHMARK_CAPTURE(ReadAVI, Type1, "Type1");
BENCHMARK_CAPTURE(ReadAVI, Type1OpenDML, "Type1OpenDML");

}  // namespace
}  // namespace kelvane
