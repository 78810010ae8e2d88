#include "media/riff/chunk_tree.h"

#include <gtest/gtest.h>

#include "base/four_cc.h"
#include "platform/files/file_access.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

// Adds a list of this name.
Chunk* AddList(ChunkTree& tree, uint32_t name, Chunk* parent, Chunk* anchor = nullptr)
{
    return tree.NewChunk({.id = "LIST"_4cc, .name = name, .parent = parent, .anchor = anchor});
}

// The ids in list order, each led by a dash for every level.
std::string Shape(const ChunkTree& tree)
{
    std::string shape;
    for (size_t i = 0; const Chunk* chunk = tree.ChunkAt(i); i++)
        shape += std::string(static_cast<size_t>(chunk->depth), '-') + FourCCText(chunk->id) + " ";
    return shape;
}

std::string Written(ChunkTree& tree)
{
    const TempFolder folder;
    const FileHolder file(FileOpen(folder.Path("file").c_str(), kOpenCreate));
    EXPECT_EQ(0, tree.Flush(file.Handle()));
    return AsText(ReadWhole(folder.Path("file")));
}

TEST(ChunkTree, PlacesByParentAndAnchor)
{
    ChunkTree tree(ByteOrder::kLittle);
    EXPECT_EQ("FILE ", Shape(tree));
    Chunk* riff = tree.NewChunk({.id = "RIFF"_4cc, .name = "AVI "_4cc});
    Chunk* header = AddList(tree, "hdrl"_4cc, riff);
    tree.NewChunk({.id = "avih"_4cc, .parent = header});
    Chunk* extended = AddList(tree, "odml"_4cc, header);
    tree.NewChunk({.id = "dmlh"_4cc, .parent = extended});
    tree.NewChunk({.id = "JUNK"_4cc, .parent = riff});
    Chunk* media = AddList(tree, "movi"_4cc, riff);
    EXPECT_EQ("FILE -RIFF --LIST ---avih ---LIST ----dmlh --JUNK --LIST ", Shape(tree));

    Chunk* stream = AddList(tree, "strl"_4cc, header, extended);
    tree.NewChunk({.id = "strh"_4cc, .parent = stream});
    tree.NewChunk({.id = "strf"_4cc, .parent = stream});
    tree.NewChunk({.id = "last"_4cc, .parent = header});
    Chunk* frame = tree.NewChunk({.id = "00db"_4cc, .parent = media});
    tree.NewChunk({.id = "idx1"_4cc, .parent = riff});
    EXPECT_EQ(media, tree.NewChunk({.id = "01wb"_4cc, .anchor = frame})->parent);
    EXPECT_EQ(
        "FILE -RIFF --LIST ---avih ---LIST ----strh ----strf ---LIST ----dmlh ---last --JUNK "
        "--LIST ---00db ---01wb --idx1 ",
        Shape(tree));
}

TEST(ChunkTree, WritesALittleEndianFileWithTrueSizes)
{
    ChunkTree tree(ByteOrder::kLittle);
    Chunk* riff = tree.NewChunk({.id = "RIFF"_4cc, .name = "WAVE"_4cc});
    tree.NewChunk(
        {.id = "fmt "_4cc, .length = 4, .parent = riff, .data = std::make_unique<Bytes>(4, 'x')});
    AddList(tree, "INFO"_4cc, riff);
    Chunk* data = tree.NewChunk({.id = "data"_4cc, .length = 2, .parent = riff});
    EXPECT_EQ(std::string("RIFF\x26\0\0\0WAVEfmt \4\0\0\0xxxxLIST\4\0\0\0INFOdata\2\0\0\0", 44),
              Written(tree));
    EXPECT_EQ("", Written(tree)) << "all is clean now";

    data->length = 0x102;
    data->dirty_header = true;
    tree.Layout();
    const std::string again = Written(tree);
    EXPECT_EQ(std::string("RIFF\x26\1\0\0WAVE", 12), again.substr(0, 12));
    EXPECT_EQ(std::string("\0\0\0\0", 4), again.substr(20, 4)) << "a clean body is not written";
    EXPECT_EQ(std::string("data\2\1\0\0", 8), again.substr(36));

    const FileHolder full(FileOpen("/dev/full", kOpenCreate));
    data->dirty_header = true;
    EXPECT_EQ(-1, tree.Flush(full.Handle()));

    ChunkTree plain(ByteOrder::kLittle);
    Chunk* leaf = plain.NewChunk({.id = "FORM"_4cc, .length = 6});
    EXPECT_EQ(22u, plain.NewChunk({.id = "next"_4cc})->offset);
    EXPECT_EQ(6u, leaf->length) << "a list in IFF files only";
}

TEST(ChunkTree, KeepsTheLengthOfAnOpaqueList)
{
    ChunkTree tree(ByteOrder::kLittle);
    Chunk* riff = tree.NewChunk({.id = "RIFF"_4cc, .name = "AVI "_4cc});
    Chunk* media = AddList(tree, "movi"_4cc, riff);
    media->opaque = true;
    media->length = 1000;
    const Chunk* noted = tree.NoteChunk({.id = "ix00"_4cc, .length = 8, .parent = media}, 500);
    EXPECT_EQ(20u + 1000 + 8, tree.NewChunk({.id = "idx1"_4cc, .parent = riff})->offset);
    EXPECT_EQ(500u, noted->offset) << "not laid out";
    EXPECT_FALSE(noted->dirty_header);
}

}  // namespace
}  // namespace kelvane
