#include "media/samples/wav_file.h"

#include "base/four_cc.h"
#include "media/riff/wave_format.h"

namespace kelvane {

namespace {

constexpr uint32_t kForms[] = {FourCC("WAVE")};
constexpr SampleChunkRule kRules[] = {
    {FourCC("fmt "), kDataWaveFormat, true},
};
constexpr SampleFileGrammar kGrammar = {ByteOrder::kLittle, FourCC("RIFF"), kForms, FourCC("INFO"),
                                        kRules};

RawAudioFormat RecordOf(const Bytes& body)
{
    const auto get = [&body](const HeaderField& field) {
        return GetField(body, field, ByteOrder::kLittle);
    };
    const auto tag = static_cast<uint16_t>(get(kWaveFormat["Format"]));
    return {.format = SampleFormatOfTag(tag),
            .ch = static_cast<uint16_t>(get(kWaveFormat["nChannels"])),
            .bitspersample = static_cast<uint16_t>(get(kWaveFormat["wBitsPerSample"])),
            .srate = static_cast<int32_t>(get(kWaveFormat["nSamplesPerSec"]))};
}

Bytes HeaderOf(const RawAudioFormat& format)
{
    const size_t frame = SampleFrameSize(format);
    Bytes body;
    ByteWriter writer(body, ByteOrder::kLittle);
    writer.Put16(TagOfSampleFormat(format.format));
    writer.Put16(format.ch);
    writer.Put32(static_cast<uint32_t>(format.srate));
    writer.Put32(static_cast<uint32_t>(static_cast<uint64_t>(format.srate) * frame));
    writer.Put16(static_cast<uint16_t>(frame));
    writer.Put16(format.bitspersample);
    return body;
}

constexpr uint32_t kEncodings[] = {kSamplePCM, kSampleFloat};
constexpr SampleFileKind kWAVE = {.grammar = kGrammar,
                                  .format = FourCC("fmt "),
                                  .sound = FourCC("data"),
                                  .sound_header = 0,
                                  .encodings = kEncodings,
                                  .record = RecordOf,
                                  .frame_count = nullptr,
                                  .exchanges_bytes = false,
                                  .rounds_size = false};

}  // namespace

WAVFile::WAVFile(const char* path, uint32_t mode) : SampleFile(path, mode, kWAVE) {}

Status WAVFile::SetFormat(const RawAudioFormat& format)
{
    return LayDown(format, FourCC("WAVE"),
                   {{FourCC("fmt "), HeaderOf(format)}, {FourCC("data"), {}}});
}

bool IsWAVFile(const char* path)
{
    return HasForm(path, kGrammar);
}

bool DescribeWAV(const char* path, std::string& text)
{
    return DescribeSampleFile<WAVFile>("WAV", path, text);
}

}  // namespace kelvane
