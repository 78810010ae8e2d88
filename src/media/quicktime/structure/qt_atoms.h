#pragma once

#include <cstdint>
#include <span>

#include "base/byte_cursor.h"
#include "base/field_table.h"

namespace kelvane {

// Where an atom stands, in bytes from the start of the file or block.
struct AtomHead {
    uint64_t start = 0;  // of the head
    uint64_t body = 0;   // first byte behind the head
    uint64_t end = 0;    // as the head claims; may lie before `body` or beyond everything
    uint32_t type = 0;

    // Where a walk goes on. An atom of size 0 moves it by a byte, so that it always gets on.
    uint64_t Next() const { return end == start ? start + 1 : end; }
};

// Bytes that the head of an atom can take with a "wide" in front.
inline constexpr size_t kMaxAtomHead = 24;

// Reads the head at the start of `window`, which stands at `position`. A "wide" is a placeholder
// of 8 bytes that lets the atom behind it grow a 64-bit size: the head behind it is taken. False
// when the window ends first.
[[nodiscard]] bool ReadAtomHead(std::span<const uint8_t> window, uint64_t position, AtomHead& head);

// An atom in memory. The body is cut to what is really there.
struct Atom {
    uint32_t type = 0;
    std::span<const uint8_t> body;
};

// Walks the atoms of a block one after the other.
class AtomWalker {
public:
    explicit AtomWalker(std::span<const uint8_t> block) : fBlock(block) {}
    // False at the end of the block.
    [[nodiscard]] bool Next(Atom& atom);

private:
    std::span<const uint8_t> fBlock;
    uint64_t fAt = 0;
};

// The body of a fixed atom: its bytes as they stand in the file, seen through its table of fields.
class AtomFields {
public:
    // All fields zero.
    explicit AtomFields(std::span<const HeaderField> table)
        : fTable(table), fBytes(size_t{table.back().at} + table.back().bytes)
    {
    }

    // Takes the bytes over; a short body reads as one padded with zeros.
    void Load(std::span<const uint8_t> body);
    uint64_t Get(const HeaderField& field) const;
    // The bits that the field has no room for are cut off.
    void Set(const HeaderField& field, uint64_t value);
    // The bytes of a field, for those that are no number.
    std::span<uint8_t> Field(const HeaderField& field);

    std::span<const HeaderField> Table() const { return fTable; }
    std::span<const uint8_t> All() const { return fBytes; }

private:
    std::span<const HeaderField> fTable;
    Bytes fBytes;
};

// Appends one atom to a block: the head at construction, the true size at destruction.
class AtomScope {
public:
    AtomScope(Bytes& out, uint32_t type);
    ~AtomScope();
    AtomScope(const AtomScope&) = delete;
    AtomScope& operator=(const AtomScope&) = delete;

private:
    Bytes& fOut;
    size_t fStart;
};

}  // namespace kelvane
