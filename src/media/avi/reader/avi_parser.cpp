#include "media/avi/reader/avi_parser.h"

#include <algorithm>

#include "base/status.h"

namespace kelvane {

namespace {

constexpr int32_t kMostNesting = 16;
// Chunks outside "movi", and with those inside: far beyond any real file, far below what would
// fill the memory.
constexpr size_t kMostChunks = 100'000;
constexpr size_t kMostChunksWithMedia = 4'000'000;
constexpr uint32_t kLargestFirstFrame = 64 << 20;  // bytes

}  // namespace

bool IsStandardIndexId(uint32_t id)
{
    for (uint32_t i = 0; i < 8; i++)
        if (id == "ix00"_4cc + i || id == "00ix"_4cc + (i << 16)) return true;
    return false;
}

AVIParser::AVIParser(FileHandle file, bool describe, AVIStructure& found)
    : fFound(found), fSource(file, ByteOrder::kLittle), fDescribe(describe)
{
}

Status AVIParser::Run()
{
    ParseList(fFound.tree.Root(), false);
    if (fFound.media_lists.empty()) fHeaderTrouble = fSource.Trouble();
    if (fSource.Failure() != kOK && !fFound.riff) return fSource.Failure();
    if (fStatus == kOK && !fFound.riff) fStatus = kNotThisClass;
    if (fStatus == kOK && HeaderSeen()) CaptureFirstFrame();
    return fStatus;
}

void AVIParser::Stop(Status status)
{
    fStopped = true;
    fStatus = status;
}

// Entered at the id.
void AVIParser::ParseList(Chunk* parent, bool load)
{
    uint32_t id = 0, length = 0, name = 0;
    if (!fSource.ReadCode(id) || !fSource.ReadLength(length)) return Stop();
    const uint64_t start = fSource.Position();
    if (!fSource.ReadCode(name)) return Stop();
    const bool to_the_end = id == "RIFF"_4cc || name == "movi"_4cc;
    const uint64_t end = to_the_end ? EndOfLongList(start, length) : start + length;
    if (length == 0 && !to_the_end && fFound.tree.IsListId(id)) Stop(kCorrupted);
    Chunk* list = Note(start, id, name, length == 0 ? 0 : 4, parent);
    if (fStopped) return;
    NoteList(list);
    if (!fFound.riff) return Stop(kNotThisClass);
    if (name == "movi"_4cc && fFound.media_lists.empty()) fHeaderTrouble = fSource.Trouble();
    if (name == "movi"_4cc) fFound.media_lists.push_back({start + 4, end});
    if (name == "movi"_4cc && !(fFound.flags & kAVIListMedia)) {
        list->opaque = true;
        list->length = length;
        return fSource.Seek(end);
    }
    if (list->depth > kMostNesting) return fSource.Seek(end);
    ParseListBody(list, end, load || name == "hdrl"_4cc || name == "INFO"_4cc);
    if (parent == fFound.tree.Root() && !fStopped && !HeaderSeen()) ParseSegments();
}

// Of a RIFF or "movi". A program that breaks off leaves 0 in its size, or what it had planned.
uint64_t AVIParser::EndOfLongList(uint64_t start, uint32_t length)
{
    const uint64_t file_end = fSource.FileEnd();
    const uint64_t end = length == 0 ? file_end : start + length;
    // Not by the padding that a last chunk should have.
    if (length == 0 || end > file_end + 1) fFound.broken_off = true;
    return end;
}

void AVIParser::ParseListBody(Chunk* list, uint64_t end, bool load)
{
    while (!fStopped && fSource.Position() < end && !(list == fFound.riff && HeaderSeen()))
        ParseChunk(list, load);
}

void AVIParser::ParseSegments()
{
    while (!fStopped) {
        uint32_t id = 0, length = 0, name = 0;
        if (!fSource.ReadCode(id) || !fSource.ReadLength(length)) return;
        const uint64_t start = fSource.Position();
        if (!fSource.ReadCode(name)) return;
        if (id != "RIFF"_4cc || name != "AVIX"_4cc) return;
        Chunk* riff = Note(start, id, name, 4, fFound.tree.Root());
        fFound.segments.push_back({riff, nullptr, 0});
        ParseListBody(riff, EndOfLongList(start, length), false);
    }
}

// Entered at the id.
void AVIParser::ParseChunk(Chunk* parent, bool load)
{
    const uint64_t start = fSource.Position();
    uint32_t id = 0, length = 0;
    if (!fSource.ReadCode(id)) return Stop();
    if (id == "LIST"_4cc) {
        fSource.Seek(start);
        return ParseList(parent, load);
    }
    if (!fSource.ReadLength(length)) return Stop();
    Chunk* chunk = Note(fSource.Position(), id, 0, length, parent);
    if (fStopped || length == 0) return;
    NoteChunk(chunk);
    load = load || id == "idx1"_4cc || IsStandardIndexId(id);
    if (load && id != "JUNK"_4cc) {
        chunk->datatype = DataType(id);
        chunk->data = fSource.ReadBody(length);
        UseBody(chunk);
    }
    fSource.Seek(chunk->offset + length);
}

Chunk* AVIParser::Note(uint64_t offset, uint32_t id, uint32_t name, uint32_t length, Chunk* parent)
{
    const size_t most = fFound.flags & kAVIListMedia ? kMostChunksWithMedia : kMostChunks;
    if (fFound.tree.CountChunks() >= most) Stop(fStatus);
    return fFound.tree.NoteChunk({.id = id, .name = name, .length = length, .parent = parent},
                                 offset);
}

void AVIParser::NoteList(Chunk* list)
{
    const uint32_t name = list->name;
    if (list->id == "RIFF"_4cc) {
        if (name == "AVI "_4cc) fFound.riff = list;
    } else if (name == "hdrl"_4cc) {
        fFound.header_list = list;
    } else if (name == "INFO"_4cc) {
        fFound.info_list = list;
    } else if (name == "odml"_4cc) {
        fFound.extended_list = list;
    } else if (name == "movi"_4cc) {
        (fFound.segments.empty() ? fFound.media : fFound.segments.back().media) = list;
    }
}

void AVIParser::NoteChunk(Chunk* chunk)
{
    if (chunk->id == "avih"_4cc) fFound.main_header = chunk;
    if (chunk->id == "dmlh"_4cc) fFound.extended_header = chunk;
    if (chunk->id == "idx1"_4cc && !fFound.old_index) fFound.old_index = chunk;
    if (chunk->id == "JUNK"_4cc && !fFound.junk) fFound.junk = chunk;
}

// Gives the stream headers their meaning.
void AVIParser::UseBody(Chunk* chunk)
{
    if (!chunk->data) return;
    if (chunk->id == "strh"_4cc) {
        AVIStream& stream = fFound.streams.emplace_back();
        stream.header = chunk;
        fStreamType = Get32(chunk, kStreamHeader["fccType"]);
        const uint32_t known[] = {"vids"_4cc, "auds"_4cc, "iavs"_4cc};
        stream.type = std::ranges::count(known, fStreamType) ? fStreamType : 0;
        return;
    }
    if (fFound.streams.empty()) return;
    AVIStream& stream = fFound.streams.back();
    if (chunk->id == "indx"_4cc) stream.super_index = chunk;
    if (chunk->id == "strf"_4cc) stream.format = chunk;
}

int32_t AVIParser::DataType(uint32_t id) const
{
    if (id == "strf"_4cc) {
        if (fStreamType == "iavs"_4cc) return kDataDVFormat;
        if (fStreamType == "vids"_4cc) return kDataBitmapFormat;
        return fStreamType == "auds"_4cc ? kDataWaveFormat : kDataNone;
    }
    static constexpr struct {
        uint32_t id;
        int32_t type;
    } kTypes[] = {
        {"avih"_4cc, kDataMainHeader}, {"strh"_4cc, kDataStreamHeader},
        {"indx"_4cc, kDataSuperIndex}, {"dmlh"_4cc, kDataExtendedHeader},
        {"idx1"_4cc, kDataOldIndex},   {"vprp"_4cc, kDataVideoProperties},
    };
    for (const auto& row : kTypes)
        if (row.id == id) return row.type;
    return IsStandardIndexId(id) ? kDataStandardIndex : kDataNone;
}

// Goes on from the end of "hdrl". Only a "movi" list that is the next list counts, and only a
// first frame among the first ten chunks.
void AVIParser::CaptureFirstFrame()
{
    if (!SkipToMedia()) return;
    for (int i = 0; i < 10; i++) {
        uint32_t id = 0, length = 0;
        if (!fSource.ReadCode(id) || !fSource.ReadLength(length)) return;
        if (id == "00dc"_4cc || id == "00db"_4cc) {
            if (length > kLargestFirstFrame) return;
            if (auto body = fSource.ReadBody(length)) fFound.first_frame = std::move(*body);
            return;
        }
        fSource.Seek(fSource.Position() + length);
    }
}

// To the first chunk inside "movi"; false when another list comes first.
bool AVIParser::SkipToMedia()
{
    uint32_t id = 0, length = 0, name = 0;
    for (size_t i = 0; i < kMostChunks; i++) {
        if (!fSource.ReadCode(id) || !fSource.ReadLength(length)) return false;
        if (id == "LIST"_4cc) return fSource.ReadCode(name) && name == "movi"_4cc;
        fSource.Seek(fSource.Position() + length);
    }
    return false;
}

}  // namespace kelvane
