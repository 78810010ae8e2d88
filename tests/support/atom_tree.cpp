#include "support/atom_tree.h"

#include <vector>

namespace kelvane {

namespace {

struct Found {
    std::string type;
    Bytes body;
};

std::vector<Found> Split(const Bytes& block)
{
    std::vector<Found> atoms;
    for (size_t at = 0; at < block.size();) {
        size_t head = 8;
        uint64_t size = ValueAt(block, at);
        if (size == 1) {
            head = 16;
            size = ValueAt(block, at + 8, 8);
        }
        if (size < head || size > block.size() - at) {
            atoms.push_back({"?", {}});
            break;
        }
        const auto start = block.begin() + static_cast<ptrdiff_t>(at);
        atoms.push_back(
            {std::string(start + 4, start + 8),
             Bytes(start + static_cast<ptrdiff_t>(head), start + static_cast<ptrdiff_t>(size))});
        at += size;
    }
    return atoms;
}

}  // namespace

uint64_t ValueAt(const Bytes& body, size_t at, size_t bytes)
{
    if (at + bytes > body.size()) return ~uint64_t{0};
    uint64_t value = 0;
    for (size_t i = 0; i < bytes; i++)
        value = value << 8 | body[at + i];
    return value;
}

std::string AtomNames(const Bytes& block)
{
    std::string names;
    for (const Found& atom : Split(block))
        names += (names.empty() ? "" : " ") + atom.type;
    return names;
}

Bytes AtomBody(const Bytes& block, const std::string& path)
{
    const size_t slash = path.find('/');
    const std::string type = path.substr(0, 4);
    size_t skip = path.size() > 4 && path[4] == ':' ? std::stoul(path.substr(5, slash - 5)) : 0;
    for (const Found& atom : Split(block)) {
        if (atom.type != type || skip-- > 0) continue;
        return slash == std::string::npos ? atom.body : AtomBody(atom.body, path.substr(slash + 1));
    }
    return {};
}

}  // namespace kelvane
