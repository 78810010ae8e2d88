#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/byte_cursor.h"
#include "base/status.h"

namespace kelvane {

// One field of a fixed header. A header is described once, as a constexpr array of these in file
// order, and that one table serves reader, writer and dump. The body stays bytes: no packing, no
// byte-order trap, and what nobody asked about survives.
struct HeaderField {
    const char* label;     // as printed by a dump; the name in the public description of the format
    uint16_t at;           // byte offset from the start of the body
    uint8_t bytes;         // 1 to 8; more for a run of characters or reserved bytes, no number
    bool is_code = false;  // a four-character code, which has no byte order; see four_cc.h
};

// True when the rows follow one another without a gap and fill `size` bytes.
consteval bool Covers(std::span<const HeaderField> fields, size_t size)
{
    size_t at = 0;
    for (const HeaderField& field : fields) {
        if (field.at != at) return false;
        at += field.bytes;
    }
    return at == size;
}

// A header's rows with its length, made by HeaderFields. Fields are named by their label, which the
// compiler looks up: GetField(body, kMainHeader["dwStreams"], order).
template <size_t N>
struct FieldTable {
    HeaderField rows[N];

    consteval const HeaderField& operator[](std::string_view label) const
    {
        for (const HeaderField& field : rows)
            if (field.label == label) return field;
        throw "no such field";
    }
    constexpr size_t Size() const { return size_t{rows[N - 1].at} + rows[N - 1].bytes; }
    operator std::span<const HeaderField>() const { return rows; }
};

// The rows must cover `Size` bytes without a gap.
template <size_t Size, size_t N>
consteval FieldTable<N> HeaderFields(const HeaderField (&rows)[N])
{
    if (!Covers(rows, Size)) throw "the rows leave a gap or have another length";
    FieldTable<N> table{};
    for (size_t i = 0; i < N; i++)
        table.rows[i] = rows[i];
    return table;
}

// The same for a header that begins as another does.
template <size_t Size, size_t M, size_t N>
consteval FieldTable<M + N> HeaderFields(const FieldTable<M>& head, const HeaderField (&rows)[N])
{
    FieldTable<M + N> table{};
    for (size_t i = 0; i < M + N; i++)
        table.rows[i] = i < M ? head.rows[i] : rows[i - M];
    if (!Covers(table.rows, Size)) throw "the rows leave a gap or have another length";
    return table;
}

// 0 when the field lies beyond the body: a short header reads as one padded with zeros.
uint64_t GetField(std::span<const uint8_t> body, const HeaderField& field, ByteOrder order);
// kError when the field lies beyond the body or the value is wider than the field.
Status SetField(std::span<uint8_t> body, const HeaderField& field, uint64_t value, ByteOrder order);

}  // namespace kelvane
