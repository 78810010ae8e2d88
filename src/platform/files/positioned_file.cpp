#include "platform/files/positioned_file.h"

#include <algorithm>

namespace kelvane {

Status PositionedFile::Open(const char* path, uint32_t flags)
{
    fFile = FileHolder(FileOpen(path, flags));
    fPosition = fLength = 0;
    if (!fFile.IsOpen()) return Status::System();
    fLength = FileSize(fFile.Handle());
    return kOK;
}

Status PositionedFile::Read(std::span<uint8_t> into, size_t& got) const
{
    const int64_t read =
        FileReadAt(fFile.Handle(), fPosition, into.data(), static_cast<uint32_t>(into.size()));
    got = static_cast<size_t>(std::max<int64_t>(read, 0));
    if (read < 0) return Status::System(kUnread);
    return got == 0 && !into.empty() ? kEnd : kOK;
}

Status PositionedFile::Write(std::span<const uint8_t> bytes)
{
    constexpr size_t kMostAtOnce = 1u << 30;
    for (size_t done = 0; done < bytes.size();) {
        const FilePart part = {bytes.data() + done,
                               static_cast<uint32_t>(std::min(bytes.size() - done, kMostAtOnce))};
        if (FileWriteAt(fFile.Handle(), fPosition + done, {&part, 1}) != part.bytes)
            return Status::System();
        done += part.bytes;
    }
    fPosition += bytes.size();
    return kOK;
}

Status PositionedFile::Truncate()
{
    if (!IsRegularFile(fFile.Handle())) return kOK;
    return FileTruncate(fFile.Handle(), fPosition) ? Status(kOK) : Status::System();
}

}  // namespace kelvane
