#include "media/samples/aiff_file.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "base/field_table.h"
#include "base/four_cc.h"
#include "media/samples/extended_float.h"

namespace kelvane {

namespace {

constexpr uint32_t kForms[] = {"FORM"_4cc};
constexpr uint32_t kNames[] = {"AIFF"_4cc, "AIFC"_4cc};
constexpr SampleChunkRule kRules[] = {
    {"COMM"_4cc, kDataAIFFCommon, true}, {"FVER"_4cc, kDataAIFFVersion, true},
    {"SSND"_4cc, kDataAIFFSound, false}, {"NAME"_4cc, kDataNone, true},
    {"AUTH"_4cc, kDataNone, true},       {"ANNO"_4cc, kDataNone, true},
    {"COMT"_4cc, kDataNone, true},       {"(c) "_4cc, kDataNone, true},
};
constexpr SampleFileGrammar kGrammar = {ByteOrder::kBig, kForms, kNames, "INFO"_4cc, kRules};

constexpr size_t kRateAt = 8;  // the extended float between the fields
constexpr HeaderField kChannels = {"Channel count", 0, 2};
constexpr HeaderField kFrameCount = {"Frame count", 2, 4};
constexpr HeaderField kSampleSize = {"Sample_size", 6, 2};
constexpr HeaderField kEncoding = {"Encoding", 18, 4};  // AIFC only
constexpr size_t kCommonSize = 18;

constexpr uint32_t kVersion = 0xA2805140;  // AIFC version 1
constexpr uint32_t kSoundHeaderSize = 8;   // offset and block size

struct CompressionRow {
    uint32_t type;
    uint32_t encoding;  // SampleFormat
    uint16_t bits = 0;  // of a sample; 0: the field says it
    bool big_endian = true;
};
constexpr CompressionRow kCompressions[] = {
    {"NONE"_4cc, kSamplePCM},           {"twos"_4cc, kSamplePCM},
    {"sowt"_4cc, kSamplePCM, 0, false}, {"in24"_4cc, kSamplePCM, 24},
    {"in32"_4cc, kSamplePCM, 32},       {"fl32"_4cc, kSampleFloat, 32},
    {"FL32"_4cc, kSampleFloat, 32},     {"fl64"_4cc, kSampleFloat, 64},
    {"FL64"_4cc, kSampleFloat, 64},     {"ima4"_4cc, kSampleADPCM},
    {"ulaw"_4cc, kSampleULaw},          {"alaw"_4cc, kSampleALaw},
};
constexpr std::string_view kNotCompressed = "not compressed";

// This class writes the compression type with its halves exchanged. Deliberate: files of its own
// read back.
constexpr uint32_t ExchangeHalves(uint32_t type)
{
    return type << 16 | type >> 16;
}

// What is in no row is not known. PCM spelt as this class does is big-endian, whatever its type.
CompressionRow CompressionOf(const Bytes& common)
{
    if (common.size() <= kCommonSize) return {"NONE"_4cc, kSamplePCM};
    const auto find = [](uint32_t type) {
        const auto* row = std::ranges::find(kCompressions, type, &CompressionRow::type);
        return row == std::end(kCompressions) ? CompressionRow{type, kSampleUnknown} : *row;
    };
    const auto type = static_cast<uint32_t>(GetField(common, kEncoding, ByteOrder::kBig));
    const CompressionRow row = find(type), own = find(ExchangeHalves(type));
    if (own.encoding != kSamplePCM || own.bits != 0) return row;
    return {own.type, kSamplePCM};
}

int32_t WholeRate(const Bytes& common)
{
    if (common.size() < kCommonSize) return 0;
    const double rate = LoadExtended(std::span(common).subspan<kRateAt, 10>());
    return std::fabs(rate) <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(rate) : 0;
}

SampleRecord RecordOf(const Bytes& common)
{
    const CompressionRow row = CompressionOf(common);
    const auto stated = static_cast<uint16_t>(GetField(common, kSampleSize, ByteOrder::kBig));
    const uint16_t bits = row.bits ? row.bits : stated;
    return {{.format = row.encoding,
             .ch = static_cast<uint16_t>(GetField(common, kChannels, ByteOrder::kBig)),
             .bitspersample = bits,
             .srate = WholeRate(common)},
            {.bits = bits, .is_float = row.encoding == kSampleFloat, .big_endian = row.big_endian}};
}

Bytes CommonOf(const RawAudioFormat& format, bool compressed)
{
    Bytes body;
    ByteWriter writer(body, ByteOrder::kBig);
    writer.Put16(format.ch);
    writer.Put32(0);  // frames, known at the end
    writer.Put16(format.bitspersample);
    uint8_t rate[10];
    StoreExtended(format.srate, rate);
    writer.PutBytes(rate);
    if (compressed) {
        writer.Put32(ExchangeHalves("NONE"_4cc));
        writer.Put8(static_cast<uint8_t>(kNotCompressed.size()));
        writer.PutBytes(
            {reinterpret_cast<const uint8_t*>(kNotCompressed.data()), kNotCompressed.size()});
        if (body.size() % 2 != 0) writer.Put8(0);
    }
    return body;
}

// The size of the sound is rounded although no byte is added to the file: deliberate.
constexpr SampleFileKind kAIFF = {.grammar = kGrammar,
                                  .walk = ReadSampleChunks,
                                  .format = "COMM"_4cc,
                                  .sound = "SSND"_4cc,
                                  .sound_header = kSoundHeaderSize,
                                  .record = RecordOf,
                                  .frame_count = &kFrameCount,
                                  .exchanges_bytes = true,
                                  .rounds_size = true};

}  // namespace

AIFFFile::AIFFFile(const char* path, uint32_t mode) : SampleFile(path, mode, kAIFF) {}

Status AIFFFile::SetFormat(const RawAudioFormat& format, bool compressed)
{
    if (format.format != kSamplePCM) return kAudioNotSupported;
    std::vector<HeaderChunk> chunks;
    if (compressed) {
        Bytes version(4);
        StoreBytes(version, kVersion, ByteOrder::kBig);
        chunks.push_back({"FVER"_4cc, std::move(version)});
    }
    chunks.push_back({"COMM"_4cc, CommonOf(format, compressed)});
    chunks.push_back({"SSND"_4cc, Bytes(kSoundHeaderSize)});
    return LayDown(format, compressed ? "AIFC"_4cc : "AIFF"_4cc, std::move(chunks));
}

bool IsAIFFFile(const char* path)
{
    return HasForm(path, kGrammar);
}

bool DescribeAIFF(const char* path, std::string& text)
{
    return DescribeSampleFile<AIFFFile>("AIFF", path, text);
}

}  // namespace kelvane
