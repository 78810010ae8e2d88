#include "media/raw_dv/raw_dv_file.h"

#include <unistd.h>

#include <algorithm>
#include <limits>

#include "base/quietly.h"
#include "base/status.h"

namespace kelvane {

RawDVFile::RawDVFile(const char* path, uint32_t mode)
{
    // Told by InitCheck.
    if (path) static_cast<void>(Open(path, mode));
}

RawDVFile::~RawDVFile()
{
    // Who wants to know finishes before.
    Quietly([this] { static_cast<void>(Finish()); });
}

Status RawDVFile::Open(const char* path, uint32_t mode)
{
    // Finished first: the old file may be the one that is opened.
    static_cast<void>(Finish());
    fPath = path;
    fMode = mode;
    fPosition = 0;
    fBytes = 0;
    fInitCheck = fReadable = fWritten = fFinished = kOK;
    fFile = FileHolder(FileOpen(path, mode == kCreate   ? kOpenCreate
                                      : mode == kUpdate ? kOpenUpdate
                                                        : kOpenRead));
    if (mode == kCreate) {
        if (!fFile.IsOpen()) fInitCheck = Status::System();
    } else {
        if (!fFile.IsOpen()) fReadable = Status::System(kUnread);
        fBytes = FileSize(fFile.Handle());
    }
    return fInitCheck;
}

void RawDVFile::SetRecordSize(int32_t bytes)
{
    fRecordSize = bytes;
}

Status RawDVFile::Read(void* buffer, int32_t& count)
{
    const int64_t wanted = count;
    count = 0;
    if (!buffer || wanted < 1 || fMode == kCreate || fPosition < 0 || fRecordSize < 1)
        return kError;
    const int64_t bytes = wanted * fRecordSize;
    if (bytes > std::numeric_limits<uint32_t>::max()) return kError;
    if (!fFile.IsOpen()) return fReadable;
    const uint64_t at = static_cast<uint64_t>(fPosition) * static_cast<uint64_t>(fRecordSize);
    const int64_t got = FileReadAt(fFile.Handle(), at, buffer, static_cast<uint32_t>(bytes));
    if (got < 0) return Status::System(kUnread);
    if (got < fRecordSize) return got > 0 || at < fBytes ? kMissing : kEnd;
    count = static_cast<int32_t>(got / fRecordSize);
    fPosition += count;
    return kOK;
}

Status RawDVFile::Write(const void* buffer, int32_t count)
{
    if (!buffer || count < 1 || fMode != kCreate || fRecordSize < 1) return kError;
    const int64_t bytes = int64_t{count} * fRecordSize;
    if (bytes > std::numeric_limits<uint32_t>::max()) return kError;
    // Behind a piece of a record all others would be read at the wrong place.
    if (fWritten != kOK) return fWritten;
    const int64_t put = FileWrite(fFile.Handle(), buffer, static_cast<uint32_t>(bytes));
    if (put < bytes) fWritten = Status::System();
    fBytes += static_cast<uint64_t>(std::max<int64_t>(put, 0));
    return fWritten;
}

Status RawDVFile::Finish()
{
    if (!fFile.IsOpen()) return fFinished;
    Status cut = kOK;
    if (fWritten != kOK && IsRegularFile(fFile.Handle())) {
        const uint64_t whole = static_cast<uint64_t>(CountRecords() * fRecordSize);
        if (!FileTruncate(fFile.Handle(), whole)) cut = Status::System();
    }
    return fFinished = FirstFailure(cut, fFile.Close());
}

Status RawDVFile::Seek(int64_t record)
{
    if (record < 0 || record > CountRecords() || record > std::numeric_limits<int32_t>::max())
        return kError;
    fPosition = static_cast<int32_t>(record);
    return kOK;
}

int64_t RawDVFile::CountRecords() const
{
    return fRecordSize < 1 ? 0 : static_cast<int64_t>(fBytes) / fRecordSize;
}

bool RawDVFile::EndsInPiece() const
{
    return fRecordSize > 0 && fMode != kCreate && static_cast<int64_t>(fBytes) % fRecordSize != 0;
}

void RawDVFile::DeleteFile()
{
    if (fInitCheck == kOK) {
        static_cast<void>(fFile.Close());  // what it holds goes anyway
        unlink(fPath.c_str());
    }
    fInitCheck = kError;
}

bool IsRawDV(const uint8_t* head, size_t bytes)
{
    // The id of a DIF block: section type, sequence 0, number of the block within its section.
    struct BlockId {
        size_t at;
        uint8_t section, number;
    };
    static constexpr BlockId kSubcode[] = {{80, 0x30, 0}, {160, 0x30, 1}};
    static constexpr BlockId kVideoAux[] = {{240, 0x50, 0}, {320, 0x50, 1}};
    static constexpr BlockId kVideo[] = {{560, 0x90, 0}, {640, 0x90, 1}, {720, 0x90, 2}};
    if (bytes < kRawDVHeadSize) return false;
    const auto matches = [head](const BlockId& id) {
        return (head[id.at] & 0xF0) == id.section && head[id.at + 1] == 7 &&
               head[id.at + 2] == id.number;
    };
    return std::ranges::all_of(kSubcode, matches) || std::ranges::all_of(kVideoAux, matches) ||
           std::ranges::all_of(kVideo, matches);
}

}  // namespace kelvane
