// Any bytes as a WAVE file: parse it, describe it, read its samples.
// With an empty corpus folder as the last argument, seeds are made in it first.

#include <fstream>

#include "media/samples/wav_file.h"
#include "sample_file_fuzz.h"
#include "support/riff.h"

using namespace kelvane;

namespace {

// RF64, Wave64 and the extensible tag.
void WriteOtherForms(const std::filesystem::path& folder)
{
    using namespace std::string_literals;
    const std::string fmt = Little(0xFFFE, 2) + Little(2, 2) + Little(48000, 4) + Little(0, 4) +
                            Little(6, 2) + Little(24, 2) + Little(22, 2) + Little(24, 2) +
                            Little(3, 4) + Little(1, 2) + std::string(14, '\0');
    std::string sound = RiffChunk("data", std::string(60, 's'));
    sound.replace(4, 4, Little(0xFFFFFFFF, 4));
    const std::string sizes = Little(200, 8) + Little(60, 8) + Little(10, 8) + Little(0, 4);
    std::string wide =
        RiffList("WAVE", {RiffChunk("ds64", sizes), RiffChunk("fmt ", fmt), sound}, "RF64");
    const std::string id = "\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"s;
    const std::string wave64 = "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"s +
                               Little(172, 8) + "wave" + id + "fmt " + id +
                               Little(24 + fmt.size(), 8) + fmt + "data" + id + Little(84, 8) +
                               std::string(60, 's');
    std::ofstream(folder / "rf64", std::ios::binary) << wide;
    std::ofstream(folder / "wave64", std::ios::binary) << wave64;
}

}  // namespace

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
    WriteOtherForms(folder);
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
