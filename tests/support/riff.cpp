#include "support/riff.h"

#include <algorithm>

#include "support/temp_folder.h"

namespace kelvane {

std::string Little(uint64_t value, int bytes)
{
    std::string text;
    for (; bytes > 0; bytes--, value >>= 8)
        text += static_cast<char>(value & 0xFF);
    return text;
}

std::string AsText(std::span<const uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

std::span<const uint8_t> AsBytes(std::string_view text)
{
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

uint64_t LittleAt(std::string_view file, uint64_t at, int bytes)
{
    uint64_t value = 0;
    for (int i = bytes; i-- > 0;)
        value = value << 8 | static_cast<uint8_t>(file.at(at + static_cast<size_t>(i)));
    return value;
}

std::string RiffChunk(std::string_view id, std::string_view body)
{
    std::string chunk = std::string(id) + Little(body.size(), 4) + std::string(body);
    if (body.size() % 2) chunk += '\0';
    return chunk;
}

std::string RiffList(std::string_view name, std::initializer_list<std::string> chunks,
                     std::string_view id)
{
    std::string body(name);
    for (const std::string& chunk : chunks)
        body += chunk;
    return RiffChunk(id, body);
}

namespace {

const RiffNode kNone = {"!", "", 0, 0, 0};

void Walk(std::string_view file, uint64_t at, uint64_t end, int depth, std::vector<RiffNode>& nodes)
{
    while (at < end) {
        if (end - at < 8) return nodes.push_back(kNone);
        RiffNode node{std::string(file.substr(at, 4)), "", at,
                      static_cast<uint32_t>(LittleAt(file, at + 4, 4)), depth};
        const uint64_t next = at + 8 + node.size + node.size % 2;
        if (next > end) return nodes.push_back(kNone);
        const bool list = node.id == "LIST" || node.id == "RIFF";
        if (list) node.name = file.substr(at + 8, 4);
        nodes.push_back(node);
        if (list) Walk(file, at + 12, next, depth + 1, nodes);
        at = next;
    }
}

}  // namespace

std::vector<RiffNode> ParseRiff(std::string_view file)
{
    std::vector<RiffNode> nodes;
    Walk(file, 0, file.size(), 0, nodes);
    return nodes;
}

RiffNode FindRiff(const std::vector<RiffNode>& nodes, std::string_view id_or_name, int n)
{
    for (const RiffNode& node : nodes)
        if ((node.id == id_or_name || node.name == id_or_name) && n-- == 0) return node;
    return kNone;
}

RiffFilm::RiffFilm(const std::string& path)
{
    bytes = AsText(ReadWhole(path));
    nodes = ParseRiff(bytes);
}

uint64_t RiffFilm::At(std::string_view id, uint64_t offset, int size, int n) const
{
    return LittleAt(bytes, Find(id, n).head + 8 + offset, size);
}

std::string RiffFilm::Text(std::string_view id, uint64_t offset, size_t size, int n) const
{
    return bytes.substr(Find(id, n).head + 8 + offset, size);
}

std::vector<uint32_t> RiffFilm::Words(std::string_view id, uint64_t offset, size_t count,
                                      int n) const
{
    std::vector<uint32_t> words(count);
    for (uint32_t& word : words) {
        word = static_cast<uint32_t>(At(id, offset, 4, n));
        offset += 4;
    }
    return words;
}

bool RiffFilm::IsWhole() const
{
    return std::ranges::find(nodes, "!", &RiffNode::id) == nodes.end();
}

std::string RiffFilm::Shape() const
{
    std::string shape, last;
    for (const RiffNode& node : nodes) {
        const std::string name = node.name.empty() ? node.id : node.name;
        if (name != last) shape += (shape.empty() ? "" : " ") + name;
        last = name;
    }
    return shape;
}

std::string StandardIndex(uint64_t base, const std::vector<uint32_t>& sizes)
{
    std::string body = Little(2, 2) + Little(0x100, 2) + Little(sizes.size(), 4) + "00dc" +
                       Little(base, 8) + Little(0, 4);
    for (size_t i = 0; i < sizes.size(); i++)
        body += Little(8 + 16 * i, 4) + Little(sizes[i], 4);
    return RiffChunk("ix00", body);
}

std::string SuperIndex(const std::vector<uint64_t>& places, size_t duration)
{
    std::string body = Little(4, 4) + Little(places.size(), 4) + "00dc" + Little(0, 12);
    for (const uint64_t at : places)
        body += Little(at, 8) + Little(0, 4) + Little(duration, 4);
    return RiffChunk("indx", body);
}

TinyAVI TinyAVI::OpenDML(const std::vector<uint32_t>& sizes)
{
    TinyAVI film{.super_index = SuperIndex({0}, 0), .has_index = false};
    film.super_index = SuperIndex({film.FrameHead(film.frames.size())}, sizes.size());
    film.media_end = StandardIndex(film.FrameHead(0), sizes);
    return film;
}

std::string TinyAVI::IndexEntry(std::string_view id, uint32_t offset, uint32_t size)
{
    return std::string(id) + Little(0x10, 4) + Little(offset, 4) + Little(size, 4);
}

std::string TinyAVI::Headers() const
{
    std::string header = type + handler + std::string(12, '\0') + Little(scale, 4) +
                         Little(rate, 4) + Little(0, 4) + Little(frames.size(), 4);
    header.resize(56);
    const std::string bitmap = Little(40, 4) + Little(720, 4) + Little(576, 4) + Little(1, 2) +
                               Little(24, 2) + handler + std::string(20, '\0');
    return RiffList("hdrl", {RiffChunk("avih", std::string(56, '\0')),
                             RiffList("strl", {RiffChunk("strh", header),
                                               RiffChunk("strf", format.empty() ? bitmap : format),
                                               super_index}),
                             more_header});
}

uint64_t TinyAVI::FrameHead(size_t frame) const
{
    uint64_t at = 12 + Headers().size() + 12;
    for (size_t i = 0; i < frame; i++)
        at += RiffChunk("00db", frames[i]).size();
    return at;
}

std::string TinyAVI::Build() const
{
    std::string media, entries = index;
    const uint64_t base = FrameHead(0);
    for (size_t i = 0; i < frames.size(); i++) {
        const uint64_t at = FrameHead(i) - (from_movi ? base - first_offset : 0);
        if (index.empty())
            entries += IndexEntry("00db", static_cast<uint32_t>(at),
                                  static_cast<uint32_t>(frames[i].size()));
        media += RiffChunk("00db", frames[i]);
    }
    return RiffList("AVI ",
                    {Headers(), RiffList("movi", {media, media_end}),
                     has_index ? RiffChunk("idx1", entries) : ""},
                    "RIFF");
}

}  // namespace kelvane
