#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane {

// RIFF files as texts of bytes, written and read here independently of the library.

// The value's low bytes, lowest first.
std::string Little(uint64_t value, int bytes);
std::string AsText(std::span<const uint8_t> bytes);
std::span<const uint8_t> AsBytes(std::string_view text);
// Odd bodies are padded.
std::string RiffChunk(std::string_view id, std::string_view body);
std::string RiffList(std::string_view name, std::initializer_list<std::string> chunks,
                     std::string_view id = "LIST");

struct RiffNode {
    std::string id;
    std::string name;  // of a list
    uint64_t head;     // file position of the id
    uint32_t size;     // as stored
    int depth;         // 0 for a RIFF
};

// Walks all chunks, into "movi" too. A chunk that reaches over the end of its list or of the file
// ends the result with a node "!".
std::vector<RiffNode> ParseRiff(std::string_view file);
// The n-th chunk of this id or list of this name; a node "!" when there is none.
RiffNode FindRiff(const std::vector<RiffNode>& nodes, std::string_view id_or_name, int n = 0);
// `bytes` bytes at `at` as a number.
uint64_t LittleAt(std::string_view file, uint64_t at, int bytes);

// A file as the walk sees it.
struct RiffFilm {
    explicit RiffFilm(const std::string& path);

    RiffNode Find(std::string_view id, int n = 0) const { return FindRiff(nodes, id, n); }
    // A number, or four characters, in the body of the n-th chunk of this id.
    uint64_t At(std::string_view id, uint64_t offset, int size, int n = 0) const;
    std::string Text(std::string_view id, uint64_t offset, size_t size = 4, int n = 0) const;
    // `count` 32-bit numbers.
    std::vector<uint32_t> Words(std::string_view id, uint64_t offset, size_t count,
                                int n = 0) const;
    // False when some chunk reaches over the end of its list or of the file.
    bool IsWhole() const;
    // The ids, or names of lists, in order; runs of the same one once.
    std::string Shape() const;

    std::string bytes;
    std::vector<RiffNode> nodes;
};

// An "ix00" chunk for frames 16 bytes apart; `base` is the head of the first.
std::string StandardIndex(uint64_t base, const std::vector<uint32_t>& sizes);
// An "indx" chunk for standard indexes at these places.
std::string SuperIndex(const std::vector<uint64_t>& places, size_t duration);

// A small AVI of one "vids" stream with an "idx1", made to be changed in parts.
struct TinyAVI {
    std::string handler = "dvsd";
    std::string type = "vids";
    uint32_t scale = 1, rate = 25;
    std::string format = {};  // "strf" in place of a bitmap header of 720 by 576
    std::vector<std::string> frames = {"frame 0!", "frame 1.", "frame 2?"};
    bool from_movi = true;         // what "idx1" counts from
    uint32_t first_offset = 4;     // of the first entry, when it counts from "movi"
    std::string super_index = {};  // an "indx" chunk
    std::string more_header = {};  // chunks and lists behind the stream
    std::string media_end = {};    // chunks behind the frames
    std::string index = {};        // entries in place of those for the frames
    bool has_index = true;

    std::string Build() const;
    // Where the head of a frame is in a file with this header.
    uint64_t FrameHead(size_t frame) const;
    static std::string IndexEntry(std::string_view id, uint32_t offset, uint32_t size);
    // A film whose only index is a standard index with these sizes.
    static TinyAVI OpenDML(const std::vector<uint32_t>& sizes);

private:
    std::string Headers() const;
};

}  // namespace kelvane
