#include "media/positioned_file.h"

#include <unistd.h>

#include <algorithm>

#include "base/status.h"

namespace kelvane {

Status PositionedFile::Open(const char* path, uint32_t flags)
{
    fFile = FileHolder(FileOpen(path, flags));
    fPosition = fReal = fLength = 0;
    if (!fFile.IsOpen()) return kError;
    fLength = FileSize(fFile.Handle());
    return kOK;
}

bool PositionedFile::Agree()
{
    if (fReal == fPosition) return true;
    if (fPosition > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return false;
    const int64_t now = FileSeek(fFile.Handle(), static_cast<int64_t>(fPosition), kFromStart);
    fReal = now < 0 ? kUnknown : static_cast<uint64_t>(now);
    return fReal == fPosition;
}

int64_t PositionedFile::Read(void* buffer, uint32_t bytes)
{
    if (fPosition >= fLength) return 0;
    if (!Agree()) return kError;
    const int64_t got = FileRead(fFile.Handle(), buffer, bytes);
    if (got < 0) {
        fReal = kUnknown;
        return kError;
    }
    fReal = fPosition += static_cast<uint64_t>(got);
    return got;
}

Status PositionedFile::Write(const void* bytes, uint64_t count)
{
    constexpr uint64_t kMostAtOnce = 1u << 30;
    if (!Agree()) return kError;
    for (uint64_t done = 0; done < count;) {
        const uint32_t part = static_cast<uint32_t>(std::min(count - done, kMostAtOnce));
        if (FileWrite(fFile.Handle(), static_cast<const uint8_t*>(bytes) + done, part) != part) {
            fReal = kUnknown;
            return kError;
        }
        done += part;
    }
    fReal = fPosition += count;
    return kOK;
}

void PositionedFile::Truncate()
{
    // A file that stays longer is still good; there is nothing to report.
    if (ftruncate(fFile.Handle(), static_cast<off_t>(fPosition)) != 0) return;
}

}  // namespace kelvane
