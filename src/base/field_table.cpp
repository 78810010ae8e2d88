#include "base/field_table.h"

#include "base/status.h"

namespace kelvane {

namespace {

ByteOrder OrderOf(const HeaderField& field, ByteOrder order)
{
    return field.is_code ? ByteOrder::kBig : order;
}

}  // namespace

uint64_t GetField(std::span<const uint8_t> body, const HeaderField& field, ByteOrder order)
{
    if (size_t{field.at} + field.bytes > body.size()) return 0;
    return LoadBytes(body.subspan(field.at, field.bytes), OrderOf(field, order));
}

Status SetField(std::span<uint8_t> body, const HeaderField& field, uint64_t value, ByteOrder order)
{
    if (size_t{field.at} + field.bytes > body.size()) return kError;
    StoreBytes(body.subspan(field.at, field.bytes), value, OrderOf(field, order));
    return field.bytes >= 8 || value >> (8 * field.bytes) == 0 ? kOK : kError;
}

}  // namespace kelvane
