#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace kelvane {

using Bytes = std::vector<uint8_t>;

// kLittle: RIFF; kBig: IFF, QuickTime.
enum class ByteOrder { kLittle, kBig };

// Unsigned value of `bytes.size()` (at most 8) bytes.
uint64_t LoadBytes(std::span<const uint8_t> bytes, ByteOrder order);
// Writes the low bytes of the value over `bytes` (at most 8).
void StoreBytes(std::span<uint8_t> bytes, uint64_t value, ByteOrder order);

// Takes values from a block in memory. Going past the end yields 0, moves nothing and is remembered
// until Failed() is asked, so a parser reads its fields in a straight line and asks once.
class ByteReader {
public:
    ByteReader(std::span<const uint8_t> block, ByteOrder order) : fBlock(block), fOrder(order) {}

    uint8_t Get8() { return static_cast<uint8_t>(Get(1)); }
    uint16_t Get16() { return static_cast<uint16_t>(Get(2)); }
    uint32_t Get32() { return static_cast<uint32_t>(Get(4)); }
    uint64_t Get64() { return Get(8); }
    // A four-character code, which has no byte order; see four_cc.h.
    uint32_t GetCode() { return static_cast<uint32_t>(LoadBytes(Take(4), ByteOrder::kBig)); }
    // `bytes` from 1 to 8.
    uint64_t Get(size_t bytes);
    // The next `bytes` bytes where they stand; empty when fewer are left.
    std::span<const uint8_t> Take(uint64_t bytes);
    void Skip(uint64_t bytes) { fAt += Fits(bytes) ? static_cast<size_t>(bytes) : 0; }

    size_t At() const { return fAt; }
    size_t Left() const { return fBlock.size() - fAt; }
    bool Failed() const { return fFailed; }

private:
    // Compares with what is left, never with fAt + bytes: no size from a file can overflow it.
    bool Fits(uint64_t bytes)
    {
        if (bytes > Left()) fFailed = true;
        return !fFailed;
    }

    std::span<const uint8_t> fBlock;
    size_t fAt = 0;  // 0 <= fAt <= fBlock.size()
    ByteOrder fOrder;
    bool fFailed = false;
};

// Appends values to a growing block. A place already written can be set again; a place outside the
// block is left alone and remembered until Failed() is asked.
class ByteWriter {
public:
    ByteWriter(Bytes& block, ByteOrder order) : fBlock(block), fOrder(order) {}

    void Put8(uint8_t value) { Put(value, 1); }
    void Put16(uint16_t value) { Put(value, 2); }
    void Put32(uint32_t value) { Put(value, 4); }
    void Put64(uint64_t value) { Put(value, 8); }
    // A four-character code, which has no byte order; see four_cc.h.
    void PutCode(uint32_t code);
    // The low `bytes` (1 to 8) bytes of the value.
    void Put(uint64_t value, size_t bytes);
    void PutBytes(std::span<const uint8_t> bytes);
    void PutZeros(size_t count) { fBlock.resize(fBlock.size() + count); }
    // Overwrites `bytes` bytes at `at`.
    void Set(size_t at, uint64_t value, size_t bytes);

    size_t At() const { return fBlock.size(); }
    bool Failed() const { return fFailed; }

private:
    Bytes& fBlock;
    ByteOrder fOrder;
    bool fFailed = false;
};

}  // namespace kelvane
