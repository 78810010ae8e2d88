#include "media/samples/sample_chunks.h"

#include <algorithm>
#include <utility>

#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr int32_t kMostDepth = 8;       // of lists in lists; deeper ones are skipped
constexpr size_t kMostChunks = 100000;  // a file of nothing but small chunks ends here

// Null where there is none.
const SampleChunkRule* RuleOf(const SampleFileGrammar& grammar, uint32_t id)
{
    const auto rule = std::ranges::find(grammar.rules, id, &SampleChunkRule::id);
    return rule == grammar.rules.end() ? nullptr : &*rule;
}

bool Holds(std::span<const uint32_t> codes, uint32_t code)
{
    return std::ranges::find(codes, code) != codes.end();
}

class Walker {
public:
    Walker(ChunkSource& source, const SampleFileGrammar& grammar, ChunkTree& tree)
        : fSource(source), fGrammar(grammar), fTree(tree)
    {
    }

    Chunk* ReadForm()
    {
        uint32_t id = 0, length = 0, name = 0;
        if (!fSource.ReadCode(id) || !fSource.ReadLength(length) || !fSource.ReadCode(name))
            return nullptr;
        if (!Holds(fGrammar.forms, id) || !Holds(fGrammar.names, name)) return nullptr;
        Chunk* form = Note({.id = id, .name = name, .length = length, .parent = fTree.Root()},
                           fSource.Position() - 4);
        ReadChildren(*form);
        return form;
    }

private:
    Chunk* Note(ChunkPlan plan, uint64_t offset)
    {
        plan.relayout = false;
        return fTree.NoteChunk(std::move(plan), offset);
    }

    uint64_t EndOf(const Chunk& list) const
    {
        // A recording that was cut off before its sizes were written.
        if (list.length == 0) return fSource.FileEnd();
        return std::min(list.offset + list.length, fSource.FileEnd());
    }

    void ReadChildren(Chunk& list)
    {
        const uint64_t end = EndOf(list);
        uint32_t id = 0, length = 0;
        while (fSource.Position() < end && fTree.CountChunks() < kMostChunks &&
               fSource.ReadCode(id) && fSource.ReadLength(length)) {
            const uint64_t body = fSource.Position();
            ReadChunk(list, id, length);
            fSource.Seek(body + length);
        }
    }

    void ReadChunk(Chunk& parent, uint32_t id, uint32_t length)
    {
        const uint64_t offset = fSource.Position();
        ChunkPlan plan{.id = id, .length = length, .parent = &parent};
        if (fTree.IsListId(id)) {
            if (!fSource.ReadCode(plan.name)) return;
            const bool deep = parent.depth >= kMostDepth;
            Chunk* list = Note(std::move(plan), offset);
            list->opaque = deep;
            if (!deep && length > 4) ReadChildren(*list);
            return;
        }
        const SampleChunkRule* rule = RuleOf(fGrammar, id);
        plan.datatype = DataTypeOf(fGrammar, id);
        if ((rule && rule->load) || parent.name == fGrammar.info)
            plan.data = fSource.ReadBody(length);
        Note(std::move(plan), offset);
    }

    ChunkSource& fSource;
    const SampleFileGrammar& fGrammar;
    ChunkTree& fTree;
};

}  // namespace

SampleChunks ReadSampleChunks(FileHandle file, const SampleFileGrammar& grammar, ChunkTree& tree)
{
    ChunkSource source(file, grammar.order);
    Chunk* form = Walker(source, grammar, tree).ReadForm();
    return {form, source.Trouble()};
}

bool HasForm(const char* path, const SampleFileGrammar& grammar)
{
    uint8_t head[100] = {};
    if (FileReadHead(path, head, sizeof head) < 12) return false;
    ByteReader reader(head, grammar.order);
    if (!Holds(grammar.forms, reader.GetCode())) return false;
    reader.Skip(4);
    return Holds(grammar.names, reader.GetCode());
}

uint64_t SampleBytes(const Chunk& body, uint32_t header)
{
    const Chunk& form = *body.parent;
    const bool cut_off = body.length <= header && form.offset + form.length <= body.offset + header;
    constexpr uint32_t kOpen = 0xFFFFFFFE;  // rounded to even
    if (cut_off || body.length == kOpen) return kToTheEnd;
    return body.length > header ? body.length - header : 0;
}

int32_t DataTypeOf(const SampleFileGrammar& grammar, uint32_t id)
{
    const SampleChunkRule* rule = RuleOf(grammar, id);
    return rule ? rule->datatype : kDataNone;
}

Chunk* LastChunk(const ChunkTree& tree, uint32_t id)
{
    Chunk* last = nullptr;
    for (size_t i = 1; i < tree.CountChunks(); i++)
        if (tree.ChunkAt(i)->id == id) last = tree.ChunkAt(i);
    return last;
}

}  // namespace kelvane
