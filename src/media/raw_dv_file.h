#pragma once

#include <cstdint>
#include <string>

#include "base/file_handle.h"
#include "base/status.h"
#include "media/file_access.h"

namespace kelvane {

// Records of a fixed size one after the other with no header: record N starts at byte
// N * record size. With a record of one DV frame this is a raw DV file. One system call for each
// read and write. For one thread at a time; the file is closed by the destructor.
class RawDVFile {
public:
    // A null path leaves the object closed and InitCheck() 0; otherwise as Open.
    explicit RawDVFile(const char* path, uint32_t mode);
    virtual ~RawDVFile() = default;
    RawDVFile(const RawDVFile&) = delete;
    RawDVFile& operator=(const RawDVFile&) = delete;

    // `mode` is a FileMode. Creating fails with -1. Opening for reading or update does not fail:
    // who asks has looked at the file already, and reads of a closed file answer -1. A file opened
    // for update is read-only.
    Status Open(const char* path, uint32_t mode);
    Status InitCheck() const { return fInitCheck; }
    // Bytes of a record; 1 until it is set. Not checked, always 0.
    void SetRecordSize(int32_t bytes);

    // Reads up to `count` records from the current one and moves past them; the buffer holds
    // count * record size bytes. -1 with `count` 0 when not one whole record was left; the bytes
    // that did arrive stay in the buffer.
    Status Read(void* buffer, int32_t& count);
    // Appends `count` records. -1 when they could not be written whole.
    Status Write(const void* buffer, int32_t count);
    // Makes `record` the next one to read; the record behind the last is allowed.
    Status Seek(int64_t record);
    // Whole records: of the file as it was opened, or written so far.
    int64_t CountRecords() const;
    bool EndsInPiece() const { return fFileSize % static_cast<uint64_t>(fRecordSize) != 0; }
    Status Finish() { return fFile.Close(); }
    // Closes the file and deletes it from the disk. Always 0.
    void DeleteFile();

private:
    FileHolder fFile;
    uint32_t fMode = kRead;
    Status fInitCheck = kOK;
    int32_t fPosition = 0;    // next record to read
    int32_t fRecordSize = 1;  // bytes
    uint64_t fFileSize = 0;   // bytes at open; not kept up to date while writing
    std::string fPath;
};

// True when the first 1000 bytes look like DIF blocks (IEC 61834-2): two subcode, two VAUX or three
// video block ids at their places in the first sequence. The header block is not looked at, so a
// damaged first block still passes. For use after every container has refused the file.
bool IsRawDV(const uint8_t* head, size_t bytes);
inline constexpr uint32_t kRawDVHeadSize = 1000;

// "DIF/DV PAL 4:2:0 (4:3 format)" and the like for the first frame of a raw DV file; empty when
// the file cannot be read.
std::string DescribeRawDV(const char* path);

}  // namespace kelvane
