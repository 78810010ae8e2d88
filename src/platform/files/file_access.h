#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/status.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// Flags of FileOpen. Only the create bit has an effect, and the new bit beside it; update yields a
// read-only handle, as the classes that open for update rely on.
inline constexpr uint32_t kOpenCreateBit = 0x100;
inline constexpr uint32_t kOpenNewBit = 0x10000;
inline constexpr uint32_t kOpenCreate = 0x8322;
inline constexpr uint32_t kOpenCreateNew = kOpenCreate | kOpenNewBit;  // only where there is none
inline constexpr uint32_t kOpenRead = 0x8020;
inline constexpr uint32_t kOpenUpdate = 0x8022;

// Origins of FileSeek.
enum SeekOrigin { kFromStart = 0, kFromCurrent = 1, kFromEnd = 2 };

// What a file class is opened for; kDescribe (AVI only) stops parsing at the first frame.
enum FileMode : uint32_t { kRead = 0, kCreate = 1, kUpdate = 2, kDescribe = 3 };

// Thin, unbuffered 64-bit file access: every read and write is one system call, repeated only when
// a signal or the system cuts it short.

// Opens an existing regular file for reading (shared), or creates one anew for reading and writing
// (unshared: truncated only once it is locked). Devices and FIFOs can be written but not read.
// Returns kNoFile on failure.
[[nodiscard]] FileHandle FileOpen(const char* path, uint32_t flags, uint32_t permissions = 0644);
// The new position in bytes, -1 on failure.
int64_t FileSeek(FileHandle handle, int64_t offset, SeekOrigin origin);
// Bytes read, fewer than asked only at the end of the file; -1 with errno when the system failed,
// whatever came before.
[[nodiscard]] int64_t FileRead(FileHandle handle, void* buffer, uint32_t bytes);
// Bytes written, fewer than asked, with errno, when the disk filled up on the way; -1 when nothing
// was written.
[[nodiscard]] int64_t FileWrite(FileHandle handle, const void* buffer, uint32_t bytes);

// A piece of memory that goes into a file.
struct FilePart {
    const void* data;
    uint32_t bytes;
};
inline constexpr size_t kMaxFileParts = 8;

// As FileRead and FileWrite, at an offset of their own: the file pointer does not count and does
// not move. An offset that no file can have is read as one behind the end.
[[nodiscard]] int64_t FileReadAt(FileHandle handle, uint64_t offset, void* buffer, uint32_t bytes);
// Reads all of `into`: kOK; kMissing when the file, as it is now, ends before that; kUnread with
// errno when the system failed.
Status FileReadWhole(FileHandle handle, uint64_t offset, std::span<uint8_t> into);
// Writes up to kMaxFileParts parts one behind the other. Bytes written in all; fewer than the sum
// when the disk filled up on the way, -1 when nothing was written.
[[nodiscard]] int64_t FileWriteAt(FileHandle handle, uint64_t offset,
                                  std::span<const FilePart> parts);
// Cuts a file off behind `bytes` bytes.
[[nodiscard]] bool FileTruncate(FileHandle handle, uint64_t bytes);
Status FileClose(FileHandle handle);
// Opens for reading, reads once from the start, closes. Bytes read, -1 when it cannot be opened.
[[nodiscard]] int64_t FileReadHead(const char* path, void* buffer, uint32_t bytes);
// Length of an open file in bytes as it is now, 0 when it cannot be told.
uint64_t FileSize(FileHandle handle);
// False for devices and pipes too, which have nothing to cut off.
bool IsRegularFile(FileHandle handle);

constexpr uint16_t Swap16(uint16_t value)
{
    return __builtin_bswap16(value);
}
// Exchanges the two bytes of each of `count` 16-bit words; both may be the same buffer.
void SwapWords(const void* source, void* destination, size_t count);

}  // namespace kelvane
