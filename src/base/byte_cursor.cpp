#include "base/byte_cursor.h"

namespace kelvane {

uint64_t LoadBytes(std::span<const uint8_t> bytes, ByteOrder order)
{
    uint64_t value = 0;
    const size_t count = bytes.size();
    for (size_t i = 0; i < count; i++)
        value = value << 8 | bytes[order == ByteOrder::kBig ? i : count - 1 - i];
    return value;
}

void StoreBytes(std::span<uint8_t> bytes, uint64_t value, ByteOrder order)
{
    const size_t count = bytes.size();
    for (size_t i = 0; i < count; i++, value >>= 8)
        bytes[order == ByteOrder::kBig ? count - 1 - i : i] = static_cast<uint8_t>(value);
}

uint64_t ByteReader::Get(size_t bytes)
{
    return LoadBytes(Take(bytes), fOrder);
}

std::span<const uint8_t> ByteReader::Take(uint64_t bytes)
{
    if (!Fits(bytes)) return {};
    const auto taken = fBlock.subspan(fAt, static_cast<size_t>(bytes));
    fAt += taken.size();
    return taken;
}

void ByteWriter::Put(uint64_t value, size_t bytes)
{
    fBlock.resize(fBlock.size() + bytes);
    StoreBytes(std::span(fBlock).last(bytes), value, fOrder);
}

void ByteWriter::PutCode(uint32_t code)
{
    fBlock.resize(fBlock.size() + 4);
    StoreBytes(std::span(fBlock).last(4), code, ByteOrder::kBig);
}

void ByteWriter::PutBytes(std::span<const uint8_t> bytes)
{
    fBlock.insert(fBlock.end(), bytes.begin(), bytes.end());
}

void ByteWriter::Set(size_t at, uint64_t value, size_t bytes)
{
    if (at > fBlock.size() || bytes > fBlock.size() - at) {
        fFailed = true;
        return;
    }
    StoreBytes(std::span(fBlock).subspan(at, bytes), value, fOrder);
}

}  // namespace kelvane
