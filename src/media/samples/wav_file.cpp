#include "media/samples/wav_file.h"

#include "base/four_cc.h"
#include "media/riff/wave_format.h"
#include "media/samples/wave64_chunks.h"

namespace kelvane {

namespace {

// The forms of files beyond 4 GB: EBU Tech 3306, ITU-R BS.2088.
constexpr uint32_t kForms[] = {"RIFF"_4cc, "RF64"_4cc, "BW64"_4cc};
constexpr uint32_t kNames[] = {"WAVE"_4cc};
constexpr SampleChunkRule kRules[] = {
    {"fmt "_4cc, kDataWaveFormat, true},
    {"ds64"_4cc, kDataNone, true},
};
constexpr SampleFileGrammar kGrammar = {ByteOrder::kLittle, kForms, kNames, "INFO"_4cc, kRules};

// In a "ds64", of the samples.
constexpr HeaderField kWideSize = {"data size", 8, 8};
constexpr uint32_t kInWideSize = 0xFFFFFFFE;  // "data" says so, rounded to even

SampleChunks Walk(FileHandle file, const SampleFileGrammar& grammar, ChunkTree& tree)
{
    if (IsWave64(file)) return ReadWave64Chunks(file, tree);
    SampleChunks chunks = ReadSampleChunks(file, grammar, tree);
    const Chunk* sizes = LastChunk(tree, "ds64"_4cc);
    const Chunk* sound = LastChunk(tree, "data"_4cc);
    if (!sizes || !sizes->data || !sound || sound->length != kInWideSize) return chunks;
    // One of 0 was never filled in.
    if (const uint64_t bytes = GetField(*sizes->data, kWideSize, grammar.order); bytes > 0)
        chunks.sound_bytes = bytes;
    return chunks;
}

SampleRecord RecordOf(const Bytes& body)
{
    const RawAudioFormat format = LoadWaveFormat(body);
    return {format, RIFFCoding(format)};
}

Bytes HeaderOf(const RawAudioFormat& format)
{
    Bytes body(kWaveFormat.Size());
    StoreWaveFormat(format, static_cast<uint32_t>(SampleFrameSize(format)), body);
    return body;
}

constexpr SampleFileKind kWAVE = {.grammar = kGrammar,
                                  .walk = Walk,
                                  .format = "fmt "_4cc,
                                  .sound = "data"_4cc,
                                  .sound_header = 0,
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
    return HasForm(path, kGrammar) || IsWave64(path);
}

bool DescribeWAV(const char* path, std::string& text)
{
    return DescribeSampleFile<WAVFile>("WAV", path, text);
}

}  // namespace kelvane
