#include "media/samples/wav_file.h"

#include "base/four_cc.h"
#include "media/riff/wave_format.h"

namespace kelvane {

namespace {

constexpr uint32_t kForms[] = {"WAVE"_4cc};
constexpr SampleChunkRule kRules[] = {
    {"fmt "_4cc, kDataWaveFormat, true},
};
constexpr SampleFileGrammar kGrammar = {ByteOrder::kLittle, "RIFF"_4cc, kForms, "INFO"_4cc, kRules};

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
                                  .format = "fmt "_4cc,
                                  .sound = "data"_4cc,
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
    return LayDown(format, "WAVE"_4cc, {{"fmt "_4cc, HeaderOf(format)}, {"data"_4cc, {}}});
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
