#include "media/quicktime/structure/qt_atoms.h"

#include <algorithm>
#include <limits>

#include "base/four_cc.h"

namespace kelvane {

bool ReadAtomHead(std::span<const uint8_t> window, uint64_t position, AtomHead& head)
{
    ByteReader in(window, ByteOrder::kBig);
    head.start = position;
    uint64_t size = in.Get32();
    head.type = in.Get32();
    if (head.type == "wide"_4cc) {
        head.start += in.At();
        size = in.Get32();
        head.type = in.Get32();
    }
    if (size == 1) size = std::max<uint64_t>(in.Get64(), 8);
    if (in.Failed()) return false;
    head.body = position + in.At();
    const uint64_t room = std::numeric_limits<uint64_t>::max() - head.start;
    head.end = head.start + std::min(size, room);
    return true;
}

bool AtomWalker::Next(Atom& atom)
{
    AtomHead head;
    if (fAt >= fBlock.size() || !ReadAtomHead(fBlock.subspan(static_cast<size_t>(fAt)), fAt, head))
        return false;
    const uint64_t end = std::min<uint64_t>(head.end, fBlock.size());
    atom.type = head.type;
    atom.body = {};
    if (end > head.body)
        atom.body =
            fBlock.subspan(static_cast<size_t>(head.body), static_cast<size_t>(end - head.body));
    fAt = head.Next();
    return true;
}

void AtomFields::Load(std::span<const uint8_t> body)
{
    const size_t count = std::min(body.size(), fBytes.size());
    std::copy_n(body.begin(), count, fBytes.begin());
    std::fill(fBytes.begin() + static_cast<ptrdiff_t>(count), fBytes.end(), uint8_t{0});
}

uint64_t AtomFields::Get(const HeaderField& field) const
{
    return GetField(fBytes, field, ByteOrder::kBig);
}

void AtomFields::Set(const HeaderField& field, uint64_t value)
{
    StoreBytes(Field(field), value, ByteOrder::kBig);
}

std::span<uint8_t> AtomFields::Field(const HeaderField& field)
{
    if (size_t{field.at} + field.bytes > fBytes.size()) return {};
    return std::span(fBytes).subspan(field.at, field.bytes);
}

AtomScope::AtomScope(Bytes& out, uint32_t type) : fOut(out), fStart(out.size())
{
    ByteWriter writer(fOut, ByteOrder::kBig);
    writer.Put32(0);
    writer.Put32(type);
}

AtomScope::~AtomScope()
{
    StoreBytes(std::span(fOut).subspan(fStart, 4), fOut.size() - fStart, ByteOrder::kBig);
}

}  // namespace kelvane
