#include "media/samples/sample_file.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <utility>

#include "base/quietly.h"
#include "base/saturating.h"

namespace kelvane {

namespace {

uint32_t OpenFlags(uint32_t mode)
{
    return mode == kCreate ? kOpenCreate : mode == kUpdate ? kOpenUpdate : kOpenRead;
}

// Writes the bare record over the first 16 bytes of a header's body, low byte first.
void OverwriteWithRecord(const RawAudioFormat& format, Bytes& body)
{
    Bytes record;
    ByteWriter writer(record, ByteOrder::kLittle);
    writer.Put32(format.format);
    writer.Put16(format.ch);
    writer.Put16(format.bitspersample);
    writer.Put32(static_cast<uint32_t>(format.srate));
    writer.PutZeros(4);
    std::copy_n(record.begin(), std::min(record.size(), body.size()), body.begin());
}

}  // namespace

SampleFile::SampleFile(const char* path, uint32_t mode, const SampleFileKind& kind)
    : fKind(kind),
      fFile(FileOpen(path, OpenFlags(mode))),
      fMode(mode),
      fInitCheck(fFile.IsOpen() ? Status(kOK) : Status::System()),
      fTree(kind.grammar.order)
{
    if (fFile.IsOpen() && mode != kCreate) Parse();
}

SampleFile::~SampleFile()
{
    // Who wants to know finishes before.
    Quietly([this] { static_cast<void>(Finish()); });
}

void SampleFile::Parse()
{
    const SampleChunks read = fKind.walk(fFile.Handle(), fKind.grammar, fTree);
    FindChunks();
    const bool whole = read.form && fSound && fFormat && fFormat->data;
    if (!whole && read.trouble != kOK) fInitCheck = read.trouble;
    if (!read.form && fInitCheck == kOK) fInitCheck = kNotThisClass;
    if (fInitCheck != kOK) return;
    if (fSound) {
        const uint64_t end = FileSize(fFile.Handle());
        const uint64_t promised =
            read.sound_bytes.value_or(SampleBytes(*fSound, fKind.sound_header));
        fPromised = promised == kToTheEnd ? end - std::min(end, fStart) : promised;
    }
    if (!fFormat) return;
    const SampleRecord record = fKind.record(fFormat->data ? *fFormat->data : Bytes{});
    fRecord = record.format;
    fCoding = record.coding;
    if (fRecord.format != kSamplePCM && fRecord.format != kSampleFloat)
        fInitCheck = kAudioNotSupported;
}

void SampleFile::FindChunks()
{
    fFormat = LastChunk(fTree, fKind.format);
    fSound = LastChunk(fTree, fKind.sound);
    if (fSound) fStart = fSound->offset + fKind.sound_header;
}

int64_t SampleFile::CountFrames() const
{
    const size_t frame_size = FrameSize();
    if (frame_size == 0) return 0;
    const uint64_t end = FileSize(fFile.Handle());
    if (end <= fStart) return 0;
    return static_cast<int64_t>(std::min(fPromised, end - fStart) / frame_size);
}

int64_t SampleFile::PromisedFrames() const
{
    const size_t frame_size = FrameSize();
    if (frame_size == 0) return 0;
    const auto frames = static_cast<int64_t>(fPromised / frame_size);
    // Sizes are rounded up to even on reading, and the byte of padding need not be there.
    const int64_t there = CountFrames();
    return frame_size == 1 && frames == there + 1 ? there : frames;
}

Status SampleFile::SetPosition(int64_t frame)
{
    fPosition = frame;
    return kOK;
}

Status SampleFile::Read(void* buffer, int32_t& count)
{
    const Status status = ReadRaw(buffer, count);
    if (status == kOK && fKind.exchanges_bytes && fCoding.big_endian)
        SwapWords(buffer, buffer, static_cast<size_t>(count) * FrameSize() / 2);
    return status;
}

Status SampleFile::ReadRaw(void* buffer, int32_t& count)
{
    const int64_t wanted = count;
    const size_t frame_size = FrameSize();
    count = 0;
    if (!buffer || wanted < 1 || fMode == kCreate || fPosition < 0 || frame_size == 0)
        return kError;
    const uint64_t bytes = static_cast<uint64_t>(wanted) * frame_size;
    if (bytes > std::numeric_limits<uint32_t>::max()) return kError;
    const uint64_t at =
        SaturatingAdd(fStart, SaturatingMultiply(static_cast<uint64_t>(fPosition), frame_size));
    const int64_t got = FileReadAt(fFile.Handle(), at, buffer, static_cast<uint32_t>(bytes));
    if (got < 0) return Status::System(kUnread);
    count = static_cast<int32_t>(static_cast<size_t>(got) / frame_size);
    if (count == 0) return fPosition < PromisedFrames() ? kMissing : kEnd;
    fPosition += count;
    return kOK;
}

Status SampleFile::LayDown(const RawAudioFormat& format, uint32_t name,
                           std::vector<HeaderChunk> chunks)
{
    if (fMode != kCreate || fInitCheck != kOK) return kError;
    fRecord = format;
    if (fFormat) {
        OverwriteWithRecord(format, *fFormat->data);
        return kOK;
    }
    Chunk* form = fTree.NewChunk({.id = fKind.grammar.forms[0], .name = name});
    for (auto& [id, body] : chunks) {
        const auto length = static_cast<uint32_t>(body.size());
        fTree.NewChunk({.id = id,
                        .length = length,
                        .parent = form,
                        .datatype = DataTypeOf(fKind.grammar, id),
                        .data = std::make_unique<Bytes>(std::move(body))});
    }
    FindChunks();
    return kOK;
}

Status SampleFile::Write(const void* buffer, int32_t count)
{
    const size_t frame_size = FrameSize();
    if (!buffer || count < 1 || fMode == kRead || frame_size == 0) return kError;
    const uint64_t bytes = static_cast<uint64_t>(count) * frame_size;
    // Sizes are 32-bit in the headers.
    if (fStart + fBytesWritten + bytes > std::numeric_limits<uint32_t>::max())
        return {kError, EFBIG};
    if (const Status status = ReserveHeaders(); status != kOK) return fWritten = status;
    const FilePart samples = {fKind.exchanges_bytes ? Exchanged(buffer, bytes) : buffer,
                              static_cast<uint32_t>(bytes)};
    const int64_t put = FileWriteAt(fFile.Handle(), fStart + fBytesWritten, {&samples, 1});
    if (put != static_cast<int64_t>(bytes)) return fWritten = Status::System();
    fFramesWritten += static_cast<uint64_t>(count);
    fBytesWritten += bytes;
    return kOK;
}

Status SampleFile::ReserveHeaders()
{
    if (fReserved) return kOK;
    const Bytes zeros(fStart);
    const FilePart headers = {zeros.data(), static_cast<uint32_t>(fStart)};
    if (FileWriteAt(fFile.Handle(), 0, {&headers, 1}) != static_cast<int64_t>(fStart))
        return Status::System();
    fReserved = true;
    return kOK;
}

const void* SampleFile::Exchanged(const void* buffer, size_t bytes)
{
    if (fExchanged.size() < bytes) fExchanged.resize(bytes);
    SwapWords(buffer, fExchanged.data(), bytes / 2);
    if (bytes % 2 != 0) fExchanged[bytes - 1] = static_cast<const uint8_t*>(buffer)[bytes - 1];
    return fExchanged.data();
}

Status SampleFile::Finish()
{
    if (fMode != kCreate) return kError;
    if (!fFile.IsOpen()) return FirstFailure(fInitCheck, fFinished);
    const Status headers = fSound ? WriteHeaders() : Status(kOK);
    Status cut = kOK;
    if (fWritten != kOK && IsRegularFile(fFile.Handle()) &&
        !FileTruncate(fFile.Handle(), fStart + fBytesWritten))
        cut = Status::System();
    return fFinished = FirstFailure(headers, FirstFailure(cut, fFile.Close()));
}

Status SampleFile::WriteHeaders()
{
    const auto bytes = static_cast<uint32_t>(fBytesWritten);
    fSound->length = bytes + fKind.sound_header + (fKind.rounds_size ? bytes & 1 : 0);
    fSound->dirty_header = true;
    fTree.Layout();
    // It fits: the body is ours.
    if (fKind.frame_count)
        static_cast<void>(SetField(*fFormat->data, *fKind.frame_count,
                                   static_cast<uint32_t>(fFramesWritten), fKind.grammar.order));
    fFormat->dirty_data = true;
    return fTree.Flush(fFile.Handle());
}

std::string DescribeSamples(const char* kind, const RawAudioFormat& format)
{
    static const char* const kChannels[] = {"mono", "stereo", "3-channel", "4-channel"};
    static const char* const kEncodings[] = {"unknown", "PCM",   "unknown", "float",
                                             "u-law",   "a-law", "ADPCM"};
    const size_t channels = size_t{format.ch} - 1;
    const char* layout = channels < std::size(kChannels) ? kChannels[channels] : ">4-channel";
    const char* encoding =
        format.format < std::size(kEncodings) ? kEncodings[format.format] : "unknown";
    return std::string(kind) + " " + layout + " " + std::to_string(format.bitspersample) + "-bit " +
           encoding + " @ " + std::to_string(format.srate) + " Hz";
}

}  // namespace kelvane
