#include "media/quicktime/structure/qt_movie_builder.h"

#include "base/four_cc.h"

namespace kelvane {

namespace {

// "\xA9" stands for the copyright sign with which the names of text atoms begin.
constexpr uint32_t TextCode(uint32_t name)
{
    return 0xA9000000u | (name & 0x00FFFFFFu);
}

void Put(Bytes& out, const AtomFields& fields)
{
    out.insert(out.end(), fields.All().begin(), fields.All().end());
}

void PutAtom(Bytes& out, uint32_t type, const AtomFields& fields)
{
    const AtomScope atom(out, type);
    Put(out, fields);
}

void PutText(Bytes& out, uint32_t name, const std::string& text)
{
    if (text.empty()) return;
    const std::string_view stored = std::string_view(text).substr(0, 0xFFFF);
    const AtomScope atom(out, TextCode(name));
    AtomFields head(kUserText);
    head.Set(kUserText["text size"], stored.size());
    Put(out, head);
    out.insert(out.end(), stored.begin(), stored.end());
}

void PutUserData(Bytes& out, const QTMovie& movie)
{
    const AtomScope udta(out, "udta"_4cc);
    PutText(out, " cpy"_4cc, movie.texts[QTMovie::kCopyright]);
    PutText(out, " nam"_4cc, movie.texts[QTMovie::kName]);
    PutText(out, " inf"_4cc, movie.texts[QTMovie::kInformation]);
}

// Version and flags of 0 and the count of entries.
ByteWriter PutTableHead(Bytes& out, size_t count)
{
    ByteWriter writer(out, ByteOrder::kBig);
    writer.Put32(0);
    writer.Put32(static_cast<uint32_t>(count));
    return writer;
}

void PutHandler(Bytes& out, const QTHandler& handler)
{
    const AtomScope atom(out, "hdlr"_4cc);
    Put(out, handler.fields);
    out.insert(out.end(), handler.name.begin(), handler.name.end());
}

void PutEdits(Bytes& out, const Bytes& edits)
{
    const AtomScope edts(out, "edts"_4cc);
    const AtomScope list(out, "elst"_4cc);
    PutTableHead(out, edits.size() / kEdit.Size()).PutBytes(edits);
}

void PutDataReferences(Bytes& out, const std::vector<QTDataReference>& references)
{
    const AtomScope dinf(out, "dinf"_4cc);
    const AtomScope dref(out, "dref"_4cc);
    PutTableHead(out, references.size());
    for (const QTDataReference& reference : references) {
        const AtomScope entry(out, reference.type);
        ByteWriter writer(out, ByteOrder::kBig);
        writer.Put32(reference.flags);  // version 0
        writer.PutBytes(reference.body);
    }
}

void PutDescriptions(Bytes& out, const std::vector<QTSampleDescription>& descriptions)
{
    const AtomScope stsd_atom(out, "stsd"_4cc);
    PutTableHead(out, descriptions.size());
    for (const QTSampleDescription& description : descriptions) {
        const size_t start = out.size();
        Put(out, description.fields);
        if (description.field_count) {
            const AtomScope fiel(out, "fiel"_4cc);
            out.push_back(description.field_count);
            out.push_back(description.field_detail);
        }
        const HeaderField& size = kDescriptionHead["size"];
        StoreBytes(std::span(out).subspan(start + size.at, size.bytes), out.size() - start,
                   ByteOrder::kBig);
    }
}

void PutSizes(Bytes& out, const QTSampleTables& tables)
{
    const AtomScope stsz(out, "stsz"_4cc);
    ByteWriter writer = PutTableHead(out, tables.sample_size);
    writer.Put32(tables.sample_count);
    if (tables.sample_size != 0) return;
    for (uint32_t size : tables.sizes)
        writer.Put32(size);
}

void PutOffsets(Bytes& out, const std::vector<uint64_t>& offsets, bool wide)
{
    const AtomScope atom(out, wide ? "co64"_4cc : "stco"_4cc);
    ByteWriter writer = PutTableHead(out, offsets.size());
    for (uint64_t offset : offsets)
        writer.Put(offset, wide ? 8 : 4);
}

void PutSampleTables(Bytes& out, const QTSampleTables& tables, bool wide_offsets)
{
    const AtomScope stbl(out, "stbl"_4cc);
    PutDescriptions(out, tables.descriptions);
    {
        const AtomScope stts(out, "stts"_4cc);
        ByteWriter writer = PutTableHead(out, tables.times.size());
        for (const QTTimeToSample& entry : tables.times) {
            writer.Put32(entry.count);
            writer.Put32(entry.duration);
        }
    }
    if (!tables.sync_samples.empty()) {
        const AtomScope stss(out, "stss"_4cc);
        ByteWriter writer = PutTableHead(out, tables.sync_samples.size());
        for (uint32_t sample : tables.sync_samples)
            writer.Put32(sample);
    }
    {
        const AtomScope stsc(out, "stsc"_4cc);
        ByteWriter writer = PutTableHead(out, tables.chunk_runs.size());
        for (const QTSampleToChunk& entry : tables.chunk_runs) {
            writer.Put32(entry.first_chunk);
            writer.Put32(entry.samples);
            writer.Put32(entry.description);
        }
    }
    PutSizes(out, tables);
    PutOffsets(out, tables.offsets, wide_offsets);
}

void PutMedia(Bytes& out, const QTTrack& track, bool wide_offsets)
{
    const AtomScope mdia(out, "mdia"_4cc);
    PutAtom(out, "mdhd"_4cc, track.media_header);
    PutHandler(out, track.media_handler);
    const AtomScope minf(out, "minf"_4cc);
    if (track.video_header) PutAtom(out, "vmhd"_4cc, *track.video_header);
    if (track.sound_header) PutAtom(out, "smhd"_4cc, *track.sound_header);
    PutHandler(out, track.data_handler);
    PutDataReferences(out, track.data_references);
    PutSampleTables(out, track.samples, wide_offsets);
}

}  // namespace

Bytes BuildQTMovie(const QTMovie& movie, bool wide_offsets)
{
    Bytes out;
    {
        const AtomScope moov(out, "moov"_4cc);
        PutAtom(out, "mvhd"_4cc, movie.header);
        PutUserData(out, movie);
        for (const QTTrack& track : movie.tracks) {
            const AtomScope trak(out, "trak"_4cc);
            PutAtom(out, "tkhd"_4cc, track.header);
            PutAtom(out, "load"_4cc, track.load);
            PutEdits(out, track.edits);
            PutMedia(out, track, wide_offsets);
        }
    }
    return out;
}

}  // namespace kelvane
