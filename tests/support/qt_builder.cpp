#include "support/qt_builder.h"

#include <zlib.h>

namespace kelvane {

Bytes Big(uint64_t value, size_t bytes)
{
    Bytes out(bytes);
    for (size_t i = bytes; i-- > 0; value >>= 8)
        out[i] = static_cast<uint8_t>(value);
    return out;
}

Bytes Longs(std::initializer_list<uint64_t> values)
{
    Bytes out;
    for (uint64_t value : values)
        out = Join({out, Big(value)});
    return out;
}

Bytes Text(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

Bytes Join(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

Bytes QTAtom(std::string_view type, std::initializer_list<Bytes> parts)
{
    const Bytes body = Join(parts);
    return Join({Big(body.size() + 8), Text(type), body});
}

Bytes QTTable(std::initializer_list<uint64_t> values, size_t entry_values, size_t bytes)
{
    Bytes out = Join({Big(0), Big(values.size() / entry_values)});
    for (uint64_t value : values)
        out = Join({out, Big(value, bytes)});
    return out;
}

Bytes QTTestTrack::Build() const
{
    const Bytes fixed =
        Join({Text(format), Bytes(6), Big(1, 2), Big(version, 2), Big(0, 2), Text("test")});
    const Bytes picture =
        Join({Big(0), Big(0), Big(width, 2), Big(height, 2), Big(72 << 16), Big(72 << 16), Big(0),
              Big(1, 2), Bytes(32), Big(depth, 2), Big(65535, 2)});
    const Bytes sound = Join({Big(channels, 2), Big(bits, 2), Big(compression_id, 2), Big(0, 2),
                              Big(uint64_t{rate} << 16)});
    const Bytes description = Join({fixed, video ? picture : sound, extension});
    const Bytes entry = data_reference.empty() ? QTAtom("alis", {Big(1)}) : data_reference;
    const Bytes stbl = QTAtom(
        "stbl", {QTAtom("stsd", {Big(0), Big(1), Big(description.size() + 4), description}),
                 QTAtom("stts", {stts.empty() ? QTTable({samples, duration}, 2) : stts}),
                 QTAtom("stsc", {stsc}),
                 QTAtom("stsz", {stsz.empty() ? Join({Big(0), Big(4), Big(samples)}) : stsz}),
                 QTAtom(wide_offsets ? "co64" : "stco", {stco})});
    const Bytes minf =
        QTAtom("minf", {QTAtom(video ? "vmhd" : "smhd", {Bytes(video ? 12 : 8)}),
                        code.empty() ? Bytes() : QTAtom("code", {code}),
                        QTAtom("dinf", {QTAtom("dref", {Big(0), Big(1), entry})}), stbl});
    const Bytes mdhd =
        QTAtom("mdhd", {Bytes(12), Big(scale), Big(uint64_t{samples} * duration), Bytes(4)});
    const auto shown = [](int64_t given, uint32_t coded) {
        return Big(uint64_t(given < 0 ? coded : given) << 16);
    };
    const Bytes tkhd =
        QTAtom("tkhd", {Bytes(76), shown(shown_width, width), shown(shown_height, height)});
    const Bytes elst = QTAtom("elst", {Big(0), Big(edits.size() / 12), edits});
    return QTAtom("trak", {tkhd, edits.empty() ? Bytes() : QTAtom("edts", {elst}),
                           QTAtom("mdia", {mdhd, minf})});
}

QTTestTrack QTTestTrack::Packed(const std::string& format, bool little)
{
    const Bytes wave = QTAtom(
        "wave", {QTAtom("frma", {Text(format)}), QTAtom("enda", {Big(little, 2)}), Big(8), Big(0)});
    return {.video = false,
            .format = format,
            .scale = 48000,
            .duration = 1,
            .stco = QTTable({8, 16}),
            .extension = Join({Bytes(16, 1), QTAtom("chan", {Bytes(16)}), wave}),
            .version = 1};
}

QTTestTrack QTTestTrack::Wide(const std::string& format, uint64_t channels, uint64_t bits,
                              uint64_t flags, uint64_t frame_bytes)
{
    const Bytes rate = Big(0x40E7700000000000, 8);  // 48000 as a 64-bit float
    return {.video = false,
            .format = format,
            .channels = 3,
            .rate = 1,
            .scale = 48000,
            .duration = 1,
            .stco = QTTable({8, 16}),
            .extension = Join({Big(72), rate, Big(channels), Big(0x7F000000), Big(bits), Big(flags),
                               Big(frame_bytes), Big(1)}),
            .compression_id = 65534,
            .version = 2};
}

Bytes QTMovieHeader()
{
    return QTAtom("mvhd", {Bytes(12), Big(600), Bytes(84)});
}

Bytes QTMoov(std::initializer_list<QTTestTrack> tracks)
{
    Bytes body = QTMovieHeader();
    for (const QTTestTrack& track : tracks)
        body = Join({body, track.Build()});
    return QTAtom("moov", {body});
}

Bytes QTOneTrack(QTTestTrack track, const Bytes& media)
{
    if (track.stco.empty()) track.stco = QTTable({8, 16});
    return Join({QTAtom("mdat", {media}), QTMoov({track})});
}

Bytes QTTinyMedia()
{
    return Text("AAAABBBBCCCC012345678901........");
}

Bytes QTTinyMoov(uint64_t media, bool wide_offsets)
{
    const size_t bytes = wide_offsets ? 8 : 4;
    const QTTestTrack video{
        .stco = Join({Big(0), Big(2), Big(media, bytes), Big(media + 8, bytes)}),
        .wide_offsets = wide_offsets};
    const QTTestTrack sound{
        .video = false,
        .format = "twos",
        .width = 0,
        .height = 0,
        .scale = 48000,
        .duration = 1,
        .stsc = QTTable({1, 1, 1, 2, 2, 1}, 3),
        .stsz = Join({Big(0), Big(1), Big(3)}),
        .stco = Join({Big(0), Big(2), Big(media + 12, bytes), Big(media + 16, bytes)}),
        .wide_offsets = wide_offsets};
    return QTMoov({video, sound});
}

Bytes QTCompressed(const Bytes& moov, uint64_t claimed_extra)
{
    Bytes packed(compressBound(moov.size()));
    uLongf size = packed.size();
    compress(packed.data(), &size, moov.data(), moov.size());
    packed.resize(size);
    const Bytes cmvd = QTAtom("cmvd", {Big(moov.size() + claimed_extra), packed});
    return QTAtom("moov", {QTAtom("cmov", {QTAtom("dcom", {Text("zlib")}), cmvd})});
}

std::vector<QTLayout> QTLayouts()
{
    const Bytes media = QTTinyMedia();
    const Bytes mdat = QTAtom("mdat", {media});
    const Bytes wide = QTAtom("wide", {});
    const Bytes mdat64 = Join({Big(1), Text("mdat"), Big(16 + media.size(), 8), media});
    const Bytes ftyp = QTAtom("ftyp", {Text("qt  "), Big(512), Text("qt  ")});
    const Bytes empty = Join({Big(0), Text("free")});  // of size 0
    const uint64_t moov = QTTinyMoov(0).size();
    const Bytes packed = QTCompressed(QTTinyMoov(8));
    // Read from its second byte on, the empty atom looks like one of 0x66 bytes.
    const Bytes skipped(0x66 - 7, 'x');
    return {
        {"mdat first", Join({mdat, QTTinyMoov(8)})},
        {"moov first", Join({QTTinyMoov(moov + 8), mdat})},
        {"wide and mdat", Join({wide, mdat, QTTinyMoov(16)})},
        {"wide and 64-bit mdat", Join({wide, mdat64, QTTinyMoov(24)})},
        {"64-bit mdat", Join({mdat64, QTTinyMoov(16)})},
        {"64-bit offsets", Join({mdat, QTTinyMoov(8, true)})},
        {"ftyp", Join({ftyp, wide, mdat, QTTinyMoov(ftyp.size() + 16)})},
        {"atom of size 0", Join({empty, skipped, mdat, QTTinyMoov(0x67 + 8)})},
        {"compressed", Join({mdat, packed})},
    };
}

std::vector<Bytes> QTSeedMovies()
{
    std::vector<Bytes> seeds;
    for (QTLayout& layout : QTLayouts())
        seeds.push_back(std::move(layout.file));
    const QTTestTrack outside{
        .stco = QTTable({0, 8}),
        .data_reference = QTAtom("alis", {Big(0), Bytes(20), Text("Volume:folder:media file")}),
        .code = Join({Bytes(10), Big(40, 2), Text("RU*A"), Bytes(2), Big(1, 2), Bytes(8),
                      Text("Volume:other media"), Bytes(4)})};
    const QTTestTrack packed{.video = false,
                             .stco = QTTable({0, 8}),
                             .extension = Join({Bytes(16, 1), QTAtom("wave", {Big(1)})}),
                             .compression_id = 65534};
    seeds.push_back(QTMoov({outside, packed}));
    const QTTestTrack late{.stco = QTTable({8, 16}),
                           .edits = Longs({75, 0xFFFFFFFF, 0x10000, 72, 0, 0x10000})};
    seeds.push_back(Join({QTAtom("mdat", {QTTinyMedia()}),
                          QTMoov({late, QTTestTrack::Wide("lpcm", 2, 24, 14, 6)})}));
    seeds.push_back(
        Join({QTAtom("mdat", {QTTinyMedia()}), QTMoov({late, QTTestTrack::Packed("in24", true)})}));
    return seeds;
}

}  // namespace kelvane
