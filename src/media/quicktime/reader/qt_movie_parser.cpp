#include "media/quicktime/reader/qt_movie_parser.h"

#include <algorithm>
#include <limits>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/quicktime/reader/qt_compressed_header.h"
#include "media/quicktime/reader/qt_references.h"

namespace kelvane {

namespace {

// More descriptions than this in one track are no real movie; the rest is left out.
constexpr size_t kMaxDescriptions = 64;

// Version 1 of a header has 64-bit times and durations. Rewrites it as version 0 with `between`
// bytes between the modification time and the duration; a value that does not fit is cut to the
// largest that does.
Bytes NarrowTimes(std::span<const uint8_t> body, size_t between)
{
    Bytes narrow;
    ByteReader in(body, ByteOrder::kBig);
    ByteWriter out(narrow, ByteOrder::kBig);
    const auto narrow_one = [&] {
        const uint64_t limit = std::numeric_limits<uint32_t>::max();
        out.Put32(static_cast<uint32_t>(std::min(in.Get64(), limit)));
    };
    out.Put32(in.Get32() & 0x00FFFFFF);
    narrow_one();
    narrow_one();
    out.PutBytes(in.Take(between));
    narrow_one();
    out.PutBytes(in.Take(in.Left()));
    return narrow;
}

void LoadTimed(AtomFields& fields, std::span<const uint8_t> body, size_t between)
{
    if (!body.empty() && body[0] == 1)
        fields.Load(NarrowTimes(body, between));
    else
        fields.Load(body);
}

void ParseHandler(std::span<const uint8_t> body, QTHandler& handler)
{
    handler.fields.Load(body);
    const size_t fixed = handler.fields.All().size();
    handler.name.clear();
    if (body.size() > fixed) handler.name.assign(body.begin() + fixed, body.end());
}

// Version 1 of an "elst" has 64-bit durations and times. They are cut to what version 0 can hold.
void PutNarrowEdits(ByteReader& in, size_t count, Bytes& edits)
{
    constexpr uint64_t kNarrow = std::numeric_limits<uint32_t>::max();
    constexpr uint64_t kEmpty = std::numeric_limits<uint64_t>::max();
    ByteWriter out(edits, ByteOrder::kBig);
    for (; count > 0; count--) {
        out.Put32(static_cast<uint32_t>(std::min(in.Get64(), kNarrow)));
        const uint64_t media_time = in.Get64();
        out.Put32(static_cast<uint32_t>(media_time == kEmpty ? kNarrow
                                                             : std::min(media_time, kNarrow - 1)));
        out.PutBytes(in.Take(4));
    }
}

void ParseEdits(std::span<const uint8_t> edts, QTTrack& track)
{
    constexpr size_t kWideEdit = 20;  // bytes
    AtomWalker walker(edts);
    for (Atom atom; walker.Next(atom);) {
        if (atom.type != "elst"_4cc) continue;
        ByteReader in(atom.body, ByteOrder::kBig);
        const bool wide = in.Get32() >> 24 == 1;
        const size_t claimed = in.Get32();
        const size_t count = std::min(claimed, in.Left() / (wide ? kWideEdit : kEdit.Size()));
        track.edits.clear();
        if (wide) {
            PutNarrowEdits(in, count, track.edits);
            continue;
        }
        const auto edits = in.Take(count * kEdit.Size());
        track.edits.assign(edits.begin(), edits.end());
    }
}

void ParseDataReferences(std::span<const uint8_t> dinf, QTTrack& track)
{
    AtomWalker walker(dinf);
    for (Atom atom; walker.Next(atom);) {
        if (atom.type != "dref"_4cc || atom.body.size() < 8) continue;
        track.data_references.clear();
        AtomWalker entries(atom.body.subspan(8));
        for (Atom entry;
             track.data_references.size() < kMaxQTExternalFiles && entries.Next(entry);) {
            ByteReader in(entry.body, ByteOrder::kBig);
            QTDataReference reference;
            reference.type = entry.type;
            reference.flags = in.Get32() & 0x00FFFFFF;
            const auto body = in.Take(in.Left());
            reference.body.assign(body.begin(), body.end());
            track.data_references.push_back(std::move(reference));
        }
    }
}

void ParseVideoExtensions(std::span<const uint8_t> atoms, QTSampleDescription& description)
{
    AtomWalker walker(atoms);
    for (Atom atom; walker.Next(atom);) {
        ByteReader in(atom.body, ByteOrder::kBig);
        if (atom.type == "ctab"_4cc) {
            description.colour_table.assign(atom.body.begin(), atom.body.end());
        } else if (atom.type == "gama"_4cc) {
            description.gamma = in.Get32();
        } else if (atom.type == "fiel"_4cc) {
            description.field_count = in.Get8();
            description.field_detail = in.Get8();
        }
    }
}

// Behind the fixed part of a sound description: by its version packet sizes or all of it anew, then
// atoms, of which the first is kept.
void ParseSoundExtension(std::span<const uint8_t> body, QTSampleDescription& description)
{
    constexpr uint16_t kVariableCompression = 65534;
    const uint64_t version = description.fields.Get(kDescriptionHead["version"]);
    const bool packed =
        description.fields.Get(kSoundDescription["compression ID"]) == kVariableCompression;
    if (version == 0 && !packed) return;
    AtomFields& fields = version == 2 ? description.wide : description.packets;
    const size_t fixed = std::min(body.size(), fields.All().size());
    fields.Load(body.first(fixed));
    AtomWalker walker(body.subspan(fixed));
    for (Atom atom; walker.Next(atom);) {
        if (description.extension.empty())
            description.extension.assign(atom.body.begin(), atom.body.end());
        if (atom.type != "wave"_4cc) continue;
        AtomWalker wave(atom.body);
        for (Atom part; wave.Next(part);)
            if (part.type == "enda"_4cc)
                description.little_endian = ByteReader(part.body, ByteOrder::kBig).Get16() == 1;
    }
}

void ParseDescriptions(std::span<const uint8_t> body, const QTTrack& track, QTSampleTables& tables)
{
    constexpr HeaderField kLast = kDescriptionHead["data reference index"];
    constexpr size_t kSmallest = size_t{kLast.at} + kLast.bytes;
    ByteReader in(body, ByteOrder::kBig);
    in.Skip(4);
    tables.descriptions.clear();
    for (uint32_t left = in.Get32(); left > 0 && tables.descriptions.size() < kMaxDescriptions;
         left--) {
        const auto rest = body.subspan(in.At());
        const uint64_t claimed = GetField(rest, kDescriptionHead["size"], ByteOrder::kBig);
        if (claimed < kSmallest || rest.size() < kSmallest) return;
        const auto entry = in.Take(std::min<uint64_t>(claimed, rest.size()));
        QTSampleDescription& description = tables.descriptions.emplace_back(
            track.video_header ? std::span<const HeaderField>(kVideoDescription)
                               : std::span<const HeaderField>(kSoundDescription));
        description.fields.Load(entry);
        const size_t fixed = std::min(entry.size(), description.fields.All().size());
        if (track.video_header)
            ParseVideoExtensions(entry.subspan(fixed), description);
        else
            ParseSoundExtension(entry.subspan(fixed), description);
    }
}

void ParseSampleTables(std::span<const uint8_t> stbl, QTTrack& track)
{
    QTSampleTables& tables = track.samples;
    AtomWalker walker(stbl);
    for (Atom atom; walker.Next(atom);) {
        switch (atom.type) {
            case "stsd"_4cc:
                ParseDescriptions(atom.body, track, tables);
                break;
            case "stts"_4cc:
                tables.LoadTimes(atom.body);
                break;
            case "stss"_4cc:
                tables.LoadSyncSamples(atom.body);
                break;
            case "stsc"_4cc:
                tables.LoadChunkRuns(atom.body);
                break;
            case "stsz"_4cc:
                tables.LoadSizes(atom.body);
                break;
            case "stco"_4cc:
                tables.LoadOffsets(atom.body, 4);
                break;
            case "co64"_4cc:
                tables.LoadOffsets(atom.body, 8);
                break;
        }
    }
}

void ParseMediaInformation(std::span<const uint8_t> minf, QTTrack& track)
{
    AtomWalker walker(minf);
    for (Atom atom; walker.Next(atom);) {
        switch (atom.type) {
            case "vmhd"_4cc:
                track.video_header.emplace(kVideoHeader).Load(atom.body);
                break;
            case "smhd"_4cc:
                track.sound_header.emplace(kSoundHeader).Load(atom.body);
                break;
            case "hdlr"_4cc:
                ParseHandler(atom.body, track.data_handler);
                break;
            case "dinf"_4cc:
                ParseDataReferences(atom.body, track);
                break;
            // The kind of the descriptions follows from the header seen before them.
            case "stbl"_4cc:
                ParseSampleTables(atom.body, track);
                break;
            case "code"_4cc:
                FindNamesInCode(atom.body, track.external_names);
                break;
        }
    }
    if (track.external_names.empty())
        FindNamesInReferences(track.data_references, track.external_names);
}

void ParseMedia(std::span<const uint8_t> mdia, QTTrack& track)
{
    AtomWalker walker(mdia);
    for (Atom atom; walker.Next(atom);) {
        switch (atom.type) {
            case "mdhd"_4cc:
                LoadTimed(track.media_header, atom.body, 4);
                break;
            case "hdlr"_4cc:
                ParseHandler(atom.body, track.media_handler);
                break;
            case "minf"_4cc:
                ParseMediaInformation(atom.body, track);
                break;
        }
    }
}

void ParseTrack(std::span<const uint8_t> trak, QTTrack& track)
{
    AtomWalker walker(trak);
    for (Atom atom; walker.Next(atom);) {
        switch (atom.type) {
            case "tkhd"_4cc:
                LoadTimed(track.header, atom.body, 8);
                break;
            case "mdia"_4cc:
                ParseMedia(atom.body, track);
                break;
            case "edts"_4cc:
                ParseEdits(atom.body, track);
                break;
            case "load"_4cc:
                track.load.Load(atom.body);
                break;
        }
    }
}

void ParseUserData(std::span<const uint8_t> udta, QTMovie& movie)
{
    constexpr uint32_t kCodes[QTMovie::kTextCount] = {0xA9637079, 0xA96E616D, 0xA9696E66};
    AtomWalker walker(udta);
    for (Atom atom; walker.Next(atom);) {
        const auto* code = std::ranges::find(kCodes, atom.type);
        if (code == std::end(kCodes)) continue;
        AtomFields head(kUserText);
        head.Load(atom.body);
        const size_t length = head.Get(kUserText["text size"]);
        const auto rest = atom.body.subspan(std::min(head.All().size(), atom.body.size()));
        const auto text = rest.first(std::min(length, rest.size()));
        movie.texts[static_cast<size_t>(code - kCodes)].assign(text.begin(), text.end());
    }
}

}  // namespace

void ParseQTMovie(std::span<const uint8_t> moov, QTMovie& movie)
{
    Bytes expanded;  // what a "cmov" held; everything behind that is read from here
    AtomWalker walker(moov);
    for (Atom atom; walker.Next(atom);) {
        switch (atom.type) {
            case "cmov"_4cc: {
                // One layer only: a header that unpacks to packed headers could grow without end.
                if (!expanded.empty() || ExpandCompressedHeader(atom.body, expanded) != kOK) return;
                constexpr size_t kHead = 8;  // of the "moov" that was packed
                walker = AtomWalker(
                    std::span<const uint8_t>(expanded).subspan(std::min(kHead, expanded.size())));
                break;
            }
            case "mvhd"_4cc:
                LoadTimed(movie.header, atom.body, 4);
                break;
            case "trak"_4cc:
                if (movie.tracks.size() < kMaxQTTracks)
                    ParseTrack(atom.body, movie.tracks.emplace_back());
                break;
            case "udta"_4cc:
                ParseUserData(atom.body, movie);
                break;
            case "ctab"_4cc:
                movie.colour_table.assign(atom.body.begin(), atom.body.end());
                break;
        }
    }
}

}  // namespace kelvane
