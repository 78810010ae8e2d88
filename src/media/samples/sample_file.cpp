#include "media/samples/sample_file.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <vector>

#include "base/byte_cursor.h"
#include "base/saturating.h"
#include "base/status.h"

namespace kelvane {

SampleFile::SampleFile(const char* path, uint32_t mode)
    : fFile(FileOpen(path, mode == kCreate   ? kOpenCreate
                           : mode == kUpdate ? kOpenUpdate
                                             : kOpenRead)),
      fMode(mode),
      fOpened(fFile.IsOpen() ? Status(kOK) : Status::System())
{
}

void SampleFile::SetStart(uint64_t offset, uint64_t promised)
{
    fStart = offset;
    const uint64_t end = FileSize(fFile.Handle());
    fPromised = promised == kToTheEnd ? end - std::min(end, offset) : promised;
}

int64_t SampleFile::CountFrames(size_t frameSize) const
{
    const uint64_t end = FileSize(fFile.Handle());
    if (frameSize == 0 || end <= fStart) return 0;
    return static_cast<int64_t>(std::min(fPromised, end - fStart) / frameSize);
}

int64_t SampleFile::PromisedFrames(size_t frameSize) const
{
    if (frameSize == 0) return 0;
    const auto frames = static_cast<int64_t>(fPromised / frameSize);
    // Sizes are rounded up to even on reading, and the byte of padding need not be there.
    const int64_t there = CountFrames(frameSize);
    return frameSize == 1 && frames == there + 1 ? there : frames;
}

Status SampleFile::Read(void* buffer, int32_t& count, size_t frameSize)
{
    const int64_t wanted = count;
    count = 0;
    if (!buffer || wanted < 1 || fMode == kCreate || fPosition < 0 || frameSize == 0) return kError;
    const uint64_t bytes = static_cast<uint64_t>(wanted) * frameSize;
    if (bytes > std::numeric_limits<uint32_t>::max()) return kError;
    const uint64_t at =
        SaturatingAdd(fStart, SaturatingMultiply(static_cast<uint64_t>(fPosition), frameSize));
    const int64_t got = FileReadAt(fFile.Handle(), at, buffer, static_cast<uint32_t>(bytes));
    if (got < 0) return Status::System(kUnread);
    count = static_cast<int32_t>(static_cast<size_t>(got) / frameSize);
    if (count == 0) return fPosition < PromisedFrames(frameSize) ? kMissing : kEnd;
    fPosition += count;
    return kOK;
}

Status SampleFile::Write(const void* buffer, int32_t count, size_t frameSize)
{
    if (!buffer || count < 1 || fMode == kRead || frameSize == 0) return kError;
    const uint64_t bytes = static_cast<uint64_t>(count) * frameSize;
    // Sizes are 32-bit in the headers.
    if (fStart + fBytesWritten + bytes > std::numeric_limits<uint32_t>::max())
        return {kError, EFBIG};
    if (!fReserved) {
        const std::vector<uint8_t> zeros(fStart);
        const FilePart header = {zeros.data(), static_cast<uint32_t>(fStart)};
        if (FileWriteAt(fFile.Handle(), 0, {&header, 1}) != static_cast<int64_t>(fStart))
            return fWritten = Status::System();
        fReserved = true;
    }
    const FilePart samples = {buffer, static_cast<uint32_t>(bytes)};
    const int64_t put = FileWriteAt(fFile.Handle(), fStart + fBytesWritten, {&samples, 1});
    if (put != static_cast<int64_t>(bytes)) return fWritten = Status::System();
    fFramesWritten += static_cast<uint64_t>(count);
    fBytesWritten += bytes;
    return kOK;
}

Status SampleFile::Finish(Status headers)
{
    if (!fFile.IsOpen()) return FirstFailure(fOpened, fFinished);
    Status cut = kOK;
    if (fWritten != kOK && IsRegularFile(fFile.Handle()) &&
        !FileTruncate(fFile.Handle(), fStart + fBytesWritten))
        cut = Status::System();
    return fFinished = FirstFailure(headers, FirstFailure(cut, fFile.Close()));
}

void OverwriteWithRecord(const RawAudioFormat& format, std::vector<uint8_t>& body)
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
