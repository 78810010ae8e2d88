#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/quicktime/qt_atoms.h"
#include "media/quicktime/qt_fields.h"
#include "media/quicktime/qt_sample_tables.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// The image of a "moov" in memory: every field as it stands in the file. A parser fills it and a
// writer writes it out.

inline constexpr size_t kMaxQTTracks = 1024;
inline constexpr size_t kMaxQTExternalFiles = 20;  // of one track

struct QTHandler {
    AtomFields fields{kHandler};
    Bytes name;  // Pascal string, length byte first
};

// One entry of a "dref".
struct QTDataReference {
    static constexpr uint32_t kSelfContained = 1;

    uint32_t type = 0;   // "alis", "url " ...
    uint32_t flags = 0;  // 24 bits
    Bytes body;          // behind version and flags

    bool IsSelfContained() const { return (flags & kSelfContained) != 0; }
};

struct QTTrack {
    AtomFields header{kTrackHeader};
    Bytes edits;  // entries of the "elst", each seen through kEdit
    AtomFields load{kLoadSettings};
    AtomFields media_header{kMediaHeader};
    QTHandler media_handler, data_handler;
    std::optional<AtomFields> video_header;  // vmhd
    std::optional<AtomFields> sound_header;  // smhd
    std::vector<QTDataReference> data_references;
    QTSampleTables samples;

    // Of the media that lie in other files, by data reference; opened when first read from.
    std::vector<std::string> external_names;
    std::vector<FileHolder> external_files;

    // The first sample description, null when there is none.
    const QTSampleDescription* Description() const;
    QTSampleDescription* Description();
    // Its data format; 0 when there is none.
    uint32_t Format() const;
    // A field of it; 0 when there is none.
    uint64_t Described(const HeaderField& field) const;
    int32_t Width() const
    {
        return static_cast<int32_t>(header.Get(kTrackHeader["track width"]) >> 16);
    }
    int32_t Height() const
    {
        return static_cast<int32_t>(header.Get(kTrackHeader["track height"]) >> 16);
    }
    uint32_t TimeScale() const;
    // Sample frames a second of a sound track.
    uint32_t SampleRate() const;
};

struct QTMovie {
    AtomFields header{kMovieHeader};
    std::vector<QTTrack> tracks;
    // Bodies of "\xA9" "cpy", "nam" and "inf" without length and language.
    enum Text { kCopyright, kName, kInformation, kTextCount };
    std::array<std::string, kTextCount> texts;
    Bytes colour_table;  // body of a "ctab"
};

// A movie as a destination begins it: times are now, all else the defaults of the format.
QTMovie NewQTMovie();
// Adds a track with the next track id, its self-contained data reference and the handlers of
// video or sound.
QTTrack& AddQTTrack(QTMovie& movie, bool video);
// Sets counts and durations from the sample tables: of the tracks, and of the movie the longest.
void FinishQTMovie(QTMovie& movie);

// Fills a movie from the body of its "moov" ("cmov" included). Whatever the bytes are, what can be
// read is read and the rest left out.
void ParseQTMovie(std::span<const uint8_t> moov, QTMovie& movie);

// The whole "moov" atom. Offsets go to "co64" when `wide_offsets`, else their low 32 bits to
// "stco".
Bytes BuildQTMovie(const QTMovie& movie, bool wide_offsets);

}  // namespace kelvane
