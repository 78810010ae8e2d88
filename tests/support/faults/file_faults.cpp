// File calls that fail on demand, under each name that the compiler gives them.
#undef _FILE_OFFSET_BITS  // else the headers turn "open" into "open64" here
#undef _FORTIFY_SOURCE
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "fault_plan.h"

using namespace kelvane::faults;

// One function stands for all its names where offsets have 64 bits anyway; further arguments of a
// name (the size of a checked buffer) are passed over.
static_assert(sizeof(off_t) == 8);
#define ALSO_NAMED(function, name) asm(".globl " #name "\n.set " #name ", " #function)

namespace {

// Runs `real` unless this call is to fail.
template <class Target, class Run>
auto Perform(Call call, Target target, Run real) -> decltype(real())
{
    if (FateOf(call, target) == Fate::kPass) return real();
    errno = Error(call);
    return -1;
}

// Runs `real` with the number of bytes that it may move.
template <class Run>
ssize_t Move(Call call, Fate fate, size_t bytes, Run real)
{
    if (fate != Fate::kFail) return real(fate == Fate::kHalf ? (bytes + 1) / 2 : bytes);
    errno = Error(call);
    return -1;
}

// The page of a file that cannot be read any more.
std::mutex gBadPageLock;
ino_t gBadFile = 0;
off_t gBadStart = 0, gBadEnd = 0;

// Makes the middle of these bytes the bad page.
void Spoil(ino_t file, off_t start, off_t bytes)
{
    constexpr off_t kPage = 4096;
    gBadFile = file;
    gBadStart = start + std::max<off_t>(bytes / 2 - kPage / 2, 0);
    gBadEnd = gBadStart + std::min(bytes, kPage);
}

// How many of these bytes stand before the bad page, all if they don't reach it. An offset below 0
// is the file's own place.
size_t Readable(int file, off_t offset, size_t bytes, bool spoil)
{
    static const auto seek = Real<decltype(lseek)>("lseek");
    const std::lock_guard lock(gBadPageLock);
    struct stat status;
    if ((!spoil && gBadFile == 0) || fstat(file, &status) != 0) return bytes;
    const off_t start = offset < 0 ? seek(file, 0, SEEK_CUR) : offset;
    const off_t end = start + static_cast<off_t>(bytes);
    if (spoil) Spoil(status.st_ino, start, static_cast<off_t>(bytes));
    const bool touches = status.st_ino == gBadFile && start < gBadEnd && end > gBadStart;
    return touches ? static_cast<size_t>(std::max<off_t>(gBadStart - start, 0)) : bytes;
}

template <class Run>
ssize_t Read(int file, off_t offset, size_t bytes, Run real)
{
    const Fate fate = FateOf(kRead, file);
    if (fate == Fate::kShrink) Shrink(file);
    const size_t good = Readable(file, offset, bytes, fate == Fate::kBad);
    return Move(kRead, good == 0 && bytes > 0 ? Fate::kFail : fate, good, real);
}

// `real` takes a list of pieces and its length.
template <class Run>
ssize_t WritePieces(int file, const iovec* pieces, int count, Run real)
{
    size_t bytes = 0;
    for (int i = 0; i < count; i++)
        bytes += pieces[i].iov_len;
    return Move(kWrite, FateOf(kWrite, file), bytes, [&](size_t most) -> ssize_t {
        if (most == bytes) return real(pieces, count);
        iovec fewer[IOV_MAX];
        int used = 0;
        for (; most > 0; most -= fewer[used++].iov_len)
            fewer[used] = {pieces[used].iov_base, std::min(pieces[used].iov_len, most)};
        return real(fewer, used);
    });
}

int Open(int folder, const char* path, int flags, va_list arguments)
{
    static const auto real = Real<int(int, const char*, int, ...)>("openat");
    const bool creates = flags & O_CREAT;
    const mode_t mode = creates ? va_arg(arguments, mode_t) : 0;
    return Perform(creates ? kCreate : kOpen, path,
                   [&] { return real(folder, path, flags, mode); });
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int file = Open(AT_FDCWD, path, flags, arguments);
    va_end(arguments);
    return file;
}
ALSO_NAMED(open, open64);
ALSO_NAMED(open, __open_2);
ALSO_NAMED(open, __open64_2);

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int file = Open(folder, path, flags, arguments);
    va_end(arguments);
    return file;
}
ALSO_NAMED(openat, openat64);
ALSO_NAMED(openat, __openat_2);
ALSO_NAMED(openat, __openat64_2);

ssize_t read(int file, void* buffer, size_t bytes)
{
    static const auto real = Real<decltype(read)>("read");
    return Read(file, -1, bytes, [&](size_t most) { return real(file, buffer, most); });
}
ALSO_NAMED(read, __read_chk);

ssize_t pread(int file, void* buffer, size_t bytes, off_t offset)
{
    static const auto real = Real<decltype(pread)>("pread");
    return Read(file, offset, bytes, [&](size_t most) { return real(file, buffer, most, offset); });
}
ALSO_NAMED(pread, pread64);
ALSO_NAMED(pread, __pread_chk);
ALSO_NAMED(pread, __pread64_chk);

ssize_t write(int file, const void* buffer, size_t bytes)
{
    static const auto real = Real<decltype(write)>("write");
    return Move(kWrite, FateOf(kWrite, file), bytes,
                [&](size_t most) { return real(file, buffer, most); });
}

ssize_t pwrite(int file, const void* buffer, size_t bytes, off_t offset)
{
    static const auto real = Real<decltype(pwrite)>("pwrite");
    return Move(kWrite, FateOf(kWrite, file), bytes,
                [&](size_t most) { return real(file, buffer, most, offset); });
}
ALSO_NAMED(pwrite, pwrite64);

ssize_t writev(int file, const iovec* pieces, int count)
{
    static const auto real = Real<decltype(writev)>("writev");
    return WritePieces(file, pieces, count,
                       [&](const iovec* list, int length) { return real(file, list, length); });
}

ssize_t pwritev(int file, const iovec* pieces, int count, off_t offset)
{
    static const auto real = Real<decltype(pwritev)>("pwritev");
    return WritePieces(file, pieces, count, [&](const iovec* list, int length) {
        return real(file, list, length, offset);
    });
}
ALSO_NAMED(pwritev, pwritev64);

off_t lseek(int file, off_t offset, int origin) noexcept
{
    static const auto real = Real<decltype(lseek)>("lseek");
    return Perform(kSeek, file, [&] { return real(file, offset, origin); });
}
ALSO_NAMED(lseek, lseek64);

int ftruncate(int file, off_t length) noexcept
{
    static const auto real = Real<decltype(ftruncate)>("ftruncate");
    return Perform(kTruncate, file, [&] { return real(file, length); });
}
ALSO_NAMED(ftruncate, ftruncate64);

int fsync(int file)
{
    static const auto real = Real<decltype(fsync)>("fsync");
    return Perform(kSync, file, [&] { return real(file); });
}

int fdatasync(int file)
{
    static const auto real = Real<decltype(fdatasync)>("fdatasync");
    return Perform(kSync, file, [&] { return real(file); });
}

// The file is closed; what it still had to write is what failed.
int close(int file)
{
    static const auto real = Real<decltype(close)>("close");
    const bool fails = FateOf(kClose, file) != Fate::kPass;
    const int status = real(file);
    if (!fails) return status;
    errno = Error(kClose);
    return -1;
}

int rename(const char* from, const char* to) noexcept
{
    static const auto real = Real<decltype(rename)>("rename");
    return Perform(kRename, to, [&] { return real(from, to); });
}

}  // extern "C"
