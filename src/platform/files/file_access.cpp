#include "platform/files/file_access.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

namespace kelvane {

namespace {

// A file system without locks is used without; only somebody else's lock refuses.
bool LockedByOther(FileHandle handle, int kind)
{
    if (flock(handle, kind | LOCK_NB) == 0 || errno != EWOULDBLOCK) return false;
    errno = EBUSY;
    return true;
}

// What a write answers that the system broke off. One that wrote nothing and said nothing had no
// room.
int64_t Stopped(ssize_t put, int64_t done)
{
    if (put == 0) errno = ENOSPC;
    return done ? done : -1;
}

FileHandle OpenForReading(const char* path)
{
    // Not blocking: a FIFO without a writer must not stop a batch.
    FileHolder file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen() || !IsRegularFile(file.Handle()) || LockedByOther(file.Handle(), LOCK_SH))
        return kNoFile;
    return file.Release();
}

FileHandle OpenForCreating(const char* path, int more, uint32_t permissions)
{
    FileHolder file(open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | more, permissions));
    if (!file.IsOpen() || LockedByOther(file.Handle(), LOCK_EX)) return kNoFile;
    if (IsRegularFile(file.Handle()) && ftruncate(file.Handle(), 0) != 0) return kNoFile;
    return file.Release();
}

size_t Left(uint32_t bytes, int64_t done)
{
    return bytes - static_cast<size_t>(done);
}

// Takes the first `done` bytes off a list of pieces; returns how many pieces were used up.
int DropWritten(iovec* pieces, int count, size_t done)
{
    int used = 0;
    while (used < count && done >= pieces[used].iov_len)
        done -= pieces[used++].iov_len;
    if (used < count) {
        pieces[used].iov_base = static_cast<uint8_t*>(pieces[used].iov_base) + done;
        pieces[used].iov_len -= done;
    }
    return used;
}

}  // namespace

FileHandle FileOpen(const char* path, uint32_t flags, uint32_t permissions)
{
    if (!(flags & kOpenCreateBit)) return OpenForReading(path);
    return OpenForCreating(path, flags & kOpenNewBit ? O_EXCL : 0, permissions);
}

int64_t FileSeek(FileHandle handle, int64_t offset, SeekOrigin origin)
{
    return lseek(handle, offset, origin);
}

int64_t FileRead(FileHandle handle, void* buffer, uint32_t bytes)
{
    int64_t done = 0;
    while (done < bytes) {
        const ssize_t got = read(handle, static_cast<uint8_t*>(buffer) + done, Left(bytes, done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += got;
    }
    return done;
}

int64_t FileWrite(FileHandle handle, const void* buffer, uint32_t bytes)
{
    int64_t done = 0;
    while (done < bytes) {
        const ssize_t put =
            write(handle, static_cast<const uint8_t*>(buffer) + done, Left(bytes, done));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return Stopped(put, done);
        done += put;
    }
    return done;
}

int64_t FileReadAt(FileHandle handle, uint64_t offset, void* buffer, uint32_t bytes)
{
    constexpr uint64_t kFarthest = std::numeric_limits<off_t>::max();
    if (offset > kFarthest - bytes) return 0;
    int64_t done = 0;
    while (done < bytes) {
        const ssize_t got = pread(handle, static_cast<uint8_t*>(buffer) + done, Left(bytes, done),
                                  static_cast<off_t>(offset) + done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += got;
    }
    return done;
}

Status FileReadWhole(FileHandle handle, uint64_t offset, std::span<uint8_t> into)
{
    constexpr size_t kMostAtOnce = 1u << 30;
    for (size_t done = 0; done < into.size();) {
        const auto part = static_cast<uint32_t>(std::min(into.size() - done, kMostAtOnce));
        const int64_t got = FileReadAt(handle, offset + done, into.data() + done, part);
        if (got < 0) return Status::System(kUnread);
        if (got < part) return kMissing;
        done += part;
    }
    return kOK;
}

int64_t FileWriteAt(FileHandle handle, uint64_t offset, std::span<const FilePart> parts)
{
    iovec pieces[kMaxFileParts];
    int left = static_cast<int>(std::min(parts.size(), kMaxFileParts));
    for (int i = 0; i < left; i++)
        pieces[i] = {const_cast<void*>(parts[static_cast<size_t>(i)].data),
                     parts[static_cast<size_t>(i)].bytes};
    iovec* next = pieces + DropWritten(pieces, left, 0);
    left -= static_cast<int>(next - pieces);
    int64_t done = 0;
    while (left > 0) {
        const ssize_t put = pwritev(handle, next, left, static_cast<off_t>(offset) + done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return Stopped(put, done);
        done += put;
        const int used = DropWritten(next, left, static_cast<size_t>(put));
        next += used;
        left -= used;
    }
    return done;
}

bool FileTruncate(FileHandle handle, uint64_t bytes)
{
    return ftruncate(handle, static_cast<off_t>(bytes)) == 0;
}

Status FileClose(FileHandle handle)
{
    FileHolder closer(handle);
    return closer.Close();
}

int64_t FileReadHead(const char* path, void* buffer, uint32_t bytes)
{
    const FileHolder file(FileOpen(path, kOpenRead));
    return file.IsOpen() ? FileRead(file.Handle(), buffer, bytes) : -1;
}

uint64_t FileSize(FileHandle handle)
{
    struct stat status;
    return fstat(handle, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

bool IsRegularFile(FileHandle handle)
{
    struct stat status;
    if (fstat(handle, &status) != 0) return false;
    if (S_ISREG(status.st_mode)) return true;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return false;
}

void SwapWords(const void* source, void* destination, size_t count)
{
    const auto* from = static_cast<const uint8_t*>(source);
    auto* to = static_cast<uint8_t*>(destination);
    for (size_t i = 0; i < count; i++) {
        uint16_t word;
        memcpy(&word, from + 2 * i, 2);
        word = Swap16(word);
        memcpy(to + 2 * i, &word, 2);
    }
}

}  // namespace kelvane
