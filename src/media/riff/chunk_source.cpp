#include "media/riff/chunk_source.h"

#include <algorithm>

#include "platform/files/file_access.h"

namespace kelvane {

ChunkSource::ChunkSource(FileHandle file, ByteOrder order)
    : fFile(file), fOrder(order), fFileEnd(FileSize(file)), fBodiesLeft(0)
{
    fBodiesLeft = std::min(fFileEnd, kMostBodies);
}

bool ChunkSource::ReadFour(uint32_t& value, ByteOrder order)
{
    fFailure = kOK;
    if (fPosition >= fFileEnd || fFileEnd - fPosition < 4) return false;
    const bool inside = fPosition >= fWindowStart && fPosition + 4 <= fWindowStart + fWindowSize;
    if (!inside && !FillWindow()) return false;
    const auto at = static_cast<size_t>(fPosition - fWindowStart);
    value = static_cast<uint32_t>(LoadBytes(std::span(fWindow).subspan(at, 4), order));
    fPosition += 4;
    return true;
}

// At the position. Where the system cannot read the window whole, the four bytes may still be had.
bool ChunkSource::FillWindow()
{
    int64_t got = FileReadAt(fFile, fPosition, fWindow.data(), fWindow.size());
    if (got < 0) got = FileReadAt(fFile, fPosition, fWindow.data(), 4);
    if (got < 0) Fail();
    fWindowStart = fPosition;
    fWindowSize = got > 0 ? static_cast<uint32_t>(got) : 0;
    return fWindowSize >= 4;
}

void ChunkSource::Fail()
{
    fFailure = Status::System();
    fTrouble = FirstFailure(fTrouble, fFailure);
}

bool ChunkSource::ReadLength(uint32_t& length)
{
    if (!Read32(length)) return false;
    if (length == 0xFFFFFFFF) length--;
    length += length & 1;
    return true;
}

std::unique_ptr<Bytes> ChunkSource::ReadBody(uint32_t length)
{
    fFailure = kOK;
    if (fPosition >= fFileEnd) return nullptr;
    const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(length, fFileEnd - fPosition));
    if (bytes == 0 || bytes > fBodiesLeft) return nullptr;
    auto body = std::make_unique<Bytes>(bytes);
    const int64_t got = FileReadAt(fFile, fPosition, body->data(), bytes);
    if (got < 0) Fail();
    if (got <= 0) return nullptr;
    body->resize(static_cast<size_t>(got));
    fBodiesLeft -= static_cast<uint64_t>(got);
    fPosition += length;
    return body;
}

}  // namespace kelvane
