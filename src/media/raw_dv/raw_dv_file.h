#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "platform/files/file_access.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Records of a fixed size one after the other with no header: record N starts at byte
// N * record size. With a record of one DV frame this is a raw DV file. One system call for each
// read and write. For one thread at a time; the destructor finishes.
class RawDVFile {
public:
    // A null path leaves the object closed and InitCheck() 0; otherwise as Open.
    explicit RawDVFile(const char* path, uint32_t mode);
    virtual ~RawDVFile();
    RawDVFile(const RawDVFile&) = delete;
    RawDVFile& operator=(const RawDVFile&) = delete;

    // `mode` is a FileMode. Creating fails with -1. Opening for reading or update does not fail:
    // who asks has looked at the file already, and reads answer why it could not be opened. A file
    // opened for update is read-only.
    Status Open(const char* path, uint32_t mode);
    Status InitCheck() const { return fInitCheck; }
    // Bytes of a record; 1 until it is set. Not checked, always 0.
    void SetRecordSize(int32_t bytes);

    // Reads up to `count` records from the current one and moves past them; the buffer holds
    // count * record size bytes. On failure `count` is 0: kEnd behind the last byte; kMissing when
    // less than a record was left, whose bytes stay in the buffer, or when the file has become
    // shorter since it was opened; kUnread when the system failed.
    Status Read(void* buffer, int32_t& count);
    // Appends `count` records. After one that could not be written whole nothing more is, and all
    // further ones answer the same.
    Status Write(const void* buffer, int32_t count);
    // Ends a file that was created: what a failed write left is cut off, so that whole records
    // remain, and the file closed. Further calls answer the same.
    Status Finish();
    // Makes `record` the next one to read; the record behind the last is allowed.
    Status Seek(int64_t record);
    // Whole records: of the file as it was opened, or written so far.
    int64_t CountRecords() const;
    // The file, as it was opened, ends in less than a record.
    bool EndsInPiece() const;
    // Closes the file and deletes it from the disk.
    void DeleteFile();

private:
    FileHolder fFile;
    uint32_t fMode = kRead;
    Status fInitCheck = kOK;
    Status fReadable = kError;  // what reads of a closed file answer
    Status fWritten = kOK;      // the first failure
    Status fFinished = kOK;
    int32_t fPosition = 0;    // next record to read
    int32_t fRecordSize = 1;  // bytes
    uint64_t fBytes = 0;      // of the file at open, or written so far
    std::string fPath;
};

// True when the first 1000 bytes look like DIF blocks (IEC 61834-2): two subcode, two VAUX or three
// video block ids at their places in the first sequence. The header block is not looked at, so a
// damaged first block still passes. For use after every container has refused the file.
bool IsRawDV(const uint8_t* head, size_t bytes);
inline constexpr uint32_t kRawDVHeadSize = 1000;

}  // namespace kelvane
