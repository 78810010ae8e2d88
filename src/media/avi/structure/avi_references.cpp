#include "media/avi/structure/avi_references.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/byte_cursor.h"
#include "base/four_cc.h"
#include "base/status.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint32_t kChunkHead = 8;

// The extension is what follows the last dot, if that stands behind the folders; in its place comes
// the number in three digits.
std::string ReferencePath(const std::string& destination, uint64_t number)
{
    size_t folder = destination.rfind('/');
    if (folder == std::string::npos) folder = destination.rfind('\\');
    const size_t dot = destination.rfind('.');
    const bool extension =
        dot != std::string::npos && (folder == std::string::npos || dot > folder);
    std::string path = destination.substr(0, extension ? dot : std::string::npos) + '.';
    for (const uint64_t place : {100, 10, 1})
        path += static_cast<char>('0' + number / place % 10);
    return path;
}

}  // namespace

bool IsReference(std::span<const uint8_t> chunk)
{
    return chunk.size() >= kReferenceHeadSize && chunk.size() < kSmallestFrame &&
           memcmp(chunk.data(), "REF ", 4) == 0 && !ParseReference(chunk).path.empty();
}

Reference ParseReference(std::span<const uint8_t> chunk)
{
    ByteReader reader(chunk, ByteOrder::kLittle);
    reader.Skip(4);
    Reference reference;
    reference.position = reader.Get32();
    reference.frame = reader.Get32();
    const uint32_t length = reader.Get32();
    const auto path = reader.Take(length);  // nothing where the chunk ends before
    reference.path.assign(path.begin(), std::ranges::find(path, uint8_t{0}));
    return reference;
}

std::vector<uint8_t> BuildReference(const Reference& reference)
{
    Bytes chunk;
    ByteWriter writer(chunk, ByteOrder::kLittle);
    writer.PutCode("REF "_4cc);
    writer.Put32(reference.position);
    writer.Put32(reference.frame);
    writer.Put32(static_cast<uint32_t>(reference.path.size() + 1));
    chunk.insert(chunk.end(), reference.path.begin(), reference.path.end());
    chunk.resize((reference.path.size() + 18) & ~size_t{1});
    return chunk;
}

Status ReadEntry(FileHandle file, const FrameEntry& entry, std::span<uint8_t> buffer,
                 uint32_t& size)
{
    size = 0;
    if (entry.offset > kBeyondAnyFile - entry.size) return kMissing;
    const auto bytes = static_cast<uint32_t>(std::min<size_t>(entry.size, buffer.size()));
    const int64_t got = FileReadAt(file, entry.offset, buffer.data(), bytes);
    if (got < 0) return Status::System(kUnread);
    const bool all_tried = bytes == entry.size && bytes > 0;
    if (got < bytes || (!all_tried && entry.offset + entry.size > FileSize(file))) return kMissing;
    size = bytes;
    return bytes < entry.size ? kTooLarge : kOK;
}

ReferencedFiles::OpenFile ReferencedFiles::Open(const std::string& path) const
{
    OpenFile file{path, FileHolder(FileOpen(path.c_str(), kOpenRead)), kOK};
    if (file.file.IsOpen()) return file;
    const bool gone = errno == ENOENT || errno == ENOTDIR;
    file.opened = Status::System(kReferenceMissing);
    const std::string beside =
        fFilm.substr(0, fFilm.rfind('/') + 1) + path.substr(path.find_last_of("/\\") + 1);
    if (gone) file.file = FileHolder(FileOpen(beside.c_str(), kOpenRead));
    if (file.file.IsOpen()) file.opened = kOK;
    return file;
}

const ReferencedFiles::OpenFile& ReferencedFiles::FileOf(const std::string& path)
{
    const auto known = std::ranges::find(fFiles, path, &OpenFile::path);
    if (known != fFiles.end()) return *known;
    OpenFile opened = Open(path);
    if (fFiles.size() < kMostOpen) return fFiles.emplace_back(std::move(opened));
    OpenFile& place = fFiles[fOldest];
    fOldest = (fOldest + 1) % kMostOpen;
    return place = std::move(opened);
}

Status ReferencedFiles::Read(const Reference& reference, uint32_t bytes, std::span<uint8_t> buffer,
                             uint32_t& size)
{
    size = 0;
    const OpenFile& file = FileOf(reference.path);
    if (file.opened != kOK) return file.opened;
    return ReadEntry(file.file.Handle(), {uint64_t{reference.position} + kChunkHead, bytes}, buffer,
                     size);
}

// A file is left behind the chunk that begins beyond the limit, and the next one begun at once.
std::vector<std::string> ReferenceFiles(const std::string& destination, uint64_t frames,
                                        uint64_t frameBytes, uint64_t limit)
{
    const uint64_t frames_of_file = limit / (kChunkHead + frameBytes) + 2;
    std::vector<std::string> files;
    for (uint64_t number = 0; number <= frames / frames_of_file; number++)
        files.push_back(ReferencePath(destination, number));
    return files;
}

ReferenceOutput::ReferenceOutput(const std::string& destination, uint64_t limit, uint64_t replaced)
    : fDestination(destination), fLimit(limit), fReplaced(replaced)
{
}

// The file of the number.
Status ReferenceOutput::Open()
{
    fPath = ReferencePath(fDestination, fNumber);
    const uint32_t flags = fNumber < fReplaced ? kOpenCreate : kOpenCreateNew;
    fFile = FileHolder(FileOpen(fPath.c_str(), flags));
    fEnd = 0;
    return fFile.IsOpen() ? kOK : Status::System();
}

// Cut back to whole chunks.
Status ReferenceOutput::Close()
{
    const bool cut = !fTail || FileTruncate(fFile.Handle(), fEnd);
    const Status status = cut ? Status(kOK) : Status::System();
    fTail = false;
    return FirstFailure(status, fFile.Close());
}

Status ReferenceOutput::Write(uint32_t tag, std::span<const uint8_t> frame, Reference& reference)
{
    if (!fFile.IsOpen()) {
        const Status opened = Open();
        if (opened != kOK) return opened;
    }
    const auto size = static_cast<uint32_t>(frame.size());
    uint8_t head[kChunkHead];
    StoreBytes(std::span(head).first(4), tag, ByteOrder::kBig);
    StoreBytes(std::span(head).last(4), size, ByteOrder::kLittle);
    const FilePart parts[] = {{head, kChunkHead}, {frame.data(), size}};
    if (FileWriteAt(fFile.Handle(), fEnd, parts) != int64_t{kChunkHead} + size) {
        fTail = true;
        return Status::System();
    }
    reference.position = static_cast<uint32_t>(fEnd);
    const bool full = fEnd > fLimit;
    fEnd += kChunkHead + uint64_t{size};
    if (full) {
        const Status closed = Close();
        fNumber++;
        const Status stepped = FirstFailure(closed, Open());
        if (stepped != kOK) return stepped;
    }
    // Taken after the step to the next file, so that the one frame that crosses the limit names a
    // file that it is not in. Deliberate: the naming is part of this dialect.
    reference.path = fPath;
    return kOK;
}

}  // namespace kelvane
