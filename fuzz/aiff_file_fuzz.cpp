// Any bytes as an AIFF file: parse it, describe it, read its samples.
// With an empty corpus folder as the last argument, seeds are made in it first.

#include <fstream>
#include <iterator>

#include "media/samples/aiff_file.h"
#include "sample_file_fuzz.h"

using namespace kelvane;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    const auto folder = SeedFolder(*argc, *argv);
    if (folder.empty()) return 0;
    const uint8_t samples[600] = {};
    for (const uint16_t bits : {8, 16, 24}) {
        const std::string path = folder / std::to_string(bits);
        AIFFFile file(path.c_str(), kCreate);
        static_cast<void>(file.SetFormat({kSamplePCM, 1, bits, 48000}, bits == 16));
        static_cast<void>(file.Write(samples, 50));
    }
    // As others spell their compression.
    std::ifstream own(folder / "16", std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(own), {});
    for (const char* type : {"sowt", "in24", "fl64"})
        std::ofstream(folder / type, std::ios::binary)
            << std::string(bytes).replace(bytes.find("NENO"), 4, type);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile input(data, size);
    ReadSamples<AIFFFile>(input.Path());
    std::string text;
    DescribeAIFF(input.Path(), text);
    return 0;
}
