// Any bytes as a WAVE file: parse it, describe it, read its samples.
// With an empty corpus folder as the last argument, seeds are made in it first.

#include "media/samples/wav_file.h"
#include "sample_file_fuzz.h"

using namespace kelvane;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    const auto folder = SeedFolder(*argc, *argv);
    if (folder.empty()) return 0;
    const uint8_t samples[600] = {};
    for (const uint16_t bits : {8, 16, 24, 32}) {
        const std::string path = folder / std::to_string(bits);
        WAVFile file(path.c_str(), kCreate);
        static_cast<void>(file.SetFormat({bits == 32 ? kSampleFloat : kSamplePCM, 2, bits, 48000}));
        static_cast<void>(file.Write(samples, 50));
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile input(data, size);
    ReadSamples<WAVFile>(input.Path());
    std::string text;
    DescribeWAV(input.Path(), text);
    return 0;
}
