#include "media/samples/wav_file.h"

#include <algorithm>

#include "base/four_cc.h"
#include "base/quietly.h"
#include "base/status.h"
#include "media/riff/wave_format.h"
#include "media/samples/sample_chunks.h"

namespace kelvane {

namespace {

constexpr uint32_t kForms[] = {"WAVE"_4cc};
constexpr SampleChunkRule kRules[] = {
    {"fmt "_4cc, kDataWaveFormat, true},
};
constexpr SampleFileGrammar kWAVE = {ByteOrder::kLittle, "RIFF"_4cc, kForms, "INFO"_4cc, kRules};

uint64_t Get(const Chunk& format, const HeaderField& field)
{
    return format.data ? GetField(*format.data, field, ByteOrder::kLittle) : 0;
}

RawAudioFormat RecordOf(const Chunk& format)
{
    const auto tag = static_cast<uint16_t>(Get(format, kWaveFormat["Format"]));
    return {.format = SampleFormatOfTag(tag),
            .ch = static_cast<uint16_t>(Get(format, kWaveFormat["nChannels"])),
            .bitspersample = static_cast<uint16_t>(Get(format, kWaveFormat["wBitsPerSample"])),
            .srate = static_cast<int32_t>(Get(format, kWaveFormat["nSamplesPerSec"]))};
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

}  // namespace

WAVFile::WAVFile(const char* path, uint32_t mode) : fSamples(path, mode)
{
    if (!fSamples.IsOpen())
        fInitCheck = fSamples.InitCheck();
    else if (mode != kCreate)
        Parse();
}

WAVFile::~WAVFile()
{
    // Who wants to know finishes before.
    Quietly([this] { static_cast<void>(Finish()); });
}

void WAVFile::Parse()
{
    if (!ReadSampleChunks(fSamples.Handle(), kWAVE, fTree)) {
        fInitCheck = kNotThisClass;
        return;
    }
    fFormat = LastChunk(fTree, "fmt "_4cc);
    fData = LastChunk(fTree, "data"_4cc);
    if (fData) fSamples.SetStart(fData->offset, SampleBytes(*fData, 0));
    if (!fFormat) return;
    fRecord = RecordOf(*fFormat);
    if (fRecord.format != kSamplePCM && fRecord.format != kSampleFloat)
        fInitCheck = kAudioNotSupported;
}

Status WAVFile::SetFormat(const RawAudioFormat& format)
{
    if (fSamples.Mode() != kCreate || fInitCheck != kOK) return kError;
    fRecord = format;
    if (fFormat) {
        OverwriteWithRecord(format, *fFormat->data);
        return kOK;
    }
    Chunk* form = fTree.NewChunk({.id = "RIFF"_4cc, .name = "WAVE"_4cc});
    Bytes header = HeaderOf(format);
    const auto length = static_cast<uint32_t>(header.size());
    fFormat = fTree.NewChunk({.id = "fmt "_4cc,
                              .length = length,
                              .parent = form,
                              .datatype = kDataWaveFormat,
                              .data = std::make_unique<Bytes>(std::move(header))});
    fData = fTree.NewChunk({.id = "data"_4cc, .parent = form});
    fSamples.SetStart(fData->offset);
    return kOK;
}

Status WAVFile::Finish()
{
    if (fSamples.Mode() != kCreate) return kError;
    return fSamples.Finish(fSamples.IsOpen() && fData ? WriteHeaders() : Status(kOK));
}

Status WAVFile::WriteHeaders()
{
    fData->length = static_cast<uint32_t>(fSamples.BytesWritten());
    fData->dirty_header = true;
    fTree.Layout();
    fFormat->dirty_data = true;
    return fTree.Flush(fSamples.Handle());
}

int64_t WAVFile::CountFrames() const
{
    if (!fFormat || !fData) return 0;
    return fSamples.CountFrames(SampleFrameSize(fRecord));
}

int64_t WAVFile::PromisedFrames() const
{
    if (!fFormat || !fData) return 0;
    return fSamples.PromisedFrames(SampleFrameSize(fRecord));
}

Status WAVFile::SetPosition(int64_t frame)
{
    fSamples.SetPosition(frame);
    return kOK;
}

Status WAVFile::Read(void* buffer, int32_t& count)
{
    if (fFormat && fData) return fSamples.Read(buffer, count, SampleFrameSize(fRecord));
    count = 0;
    return kError;
}

Status WAVFile::Write(const void* buffer, int32_t count)
{
    if (!fData) return kError;
    return fSamples.Write(buffer, count, SampleFrameSize(fRecord));
}

bool IsWAVFile(const char* path)
{
    return HasForm(path, kWAVE);
}

bool DescribeWAV(const char* path, std::string& text)
{
    return DescribeSampleFile<WAVFile>("WAV", path, text);
}

}  // namespace kelvane
