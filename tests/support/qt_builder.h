#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "base/byte_cursor.h"

namespace kelvane {

// Puts movies together byte by byte, knowing nothing of the code under test.

Bytes Big(uint64_t value, size_t bytes = 4);
Bytes Longs(std::initializer_list<uint64_t> values);  // with 4 bytes each
Bytes Text(std::string_view text);
Bytes Join(std::initializer_list<Bytes> parts);
Bytes QTAtom(std::string_view type, std::initializer_list<Bytes> parts);
// A 32-bit count and the values with `bytes` each, behind version and flags of 0.
Bytes QTTable(std::initializer_list<uint64_t> values, size_t entry_values = 1, size_t bytes = 4);

// A track with nothing that is not stated here.
struct QTTestTrack {
    bool video = true;
    std::string format = "dvc ";
    uint32_t width = 720, height = 576, depth = 24;
    int64_t shown_width = -1, shown_height = -1;  // of the track; below 0: as the pictures
    uint32_t channels = 2, bits = 16, rate = 48000;
    uint32_t scale = 600;
    uint32_t duration = 24;  // of a sample
    uint32_t samples = 3;
    Bytes stts = {};  // body; empty: all samples last as long
    Bytes stsc = QTTable({1, 2, 1, 2, 1, 1}, 3);
    Bytes stsz = {};  // body; empty: every sample has 4 bytes
    Bytes stco = {};  // body
    bool wide_offsets = false;
    Bytes extension = {};  // behind the fixed part of the sample description
    uint32_t compression_id = 0;
    uint32_t version = 0;       // of the sample description
    Bytes edits = {};           // entries of an "elst" of version 0; empty: none
    Bytes data_reference = {};  // an entry of "dref"; empty: self-contained
    Bytes code = {};            // body of a "code" atom; empty: none

    Bytes Build() const;

    // Sound at 48 kHz in chunks of two samples and one, by a description of version 1 that says in
    // which order bytes are, and by one of version 2, whose older fields mean nothing.
    static QTTestTrack Packed(const std::string& format, bool little);
    static QTTestTrack Wide(const std::string& format, uint64_t channels, uint64_t bits,
                            uint64_t flags, uint64_t frame_bytes);
};

Bytes QTMovieHeader();
// A movie header and these tracks.
Bytes QTMoov(std::initializer_list<QTTestTrack> tracks);
// 32 bytes of media: frames "AAAABBBB" and "CCCC", sound "0123" and "45678901", then filler.
Bytes QTTinyMedia();
// Three frames of 4 bytes and two chunks of stereo "twos" sound (1 and 2 sample frames), whose
// media begin at `media`.
Bytes QTTinyMoov(uint64_t media, bool wide_offsets = false);
// A file of one track; without an "stco" of its own its chunks are at 8 and 16, in the media.
Bytes QTOneTrack(QTTestTrack track, const Bytes& media = QTTinyMedia());
Bytes QTCompressed(const Bytes& moov, uint64_t claimed_extra = 0);

struct QTLayout {
    std::string name;
    Bytes file;
};
// The tiny movie in every order and form that such files come in.
std::vector<QTLayout> QTLayouts();
std::vector<Bytes> QTSeedMovies();

}  // namespace kelvane
