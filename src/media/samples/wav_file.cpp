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
    return LoadWaveFormat(body);
}

Bytes HeaderOf(const RawAudioFormat& format)
{
    Bytes body(kWaveFormat.Size());
    StoreWaveFormat(format, static_cast<uint32_t>(SampleFrameSize(format)), body);
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
