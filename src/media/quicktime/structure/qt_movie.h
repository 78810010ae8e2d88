#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/quicktime/structure/qt_atoms.h"
#include "media/quicktime/structure/qt_fields.h"
#include "media/quicktime/structure/qt_sample_tables.h"

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

    // Of the files that media lie in, by data reference; empty where it is the movie's own.
    std::vector<std::string> external_names;

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

// The pictures or the sound of a track, and what of them is read next.
struct QTStream {
    enum Kind { kSound = 1, kVideo = 2 };

    Kind kind;
    size_t track;         // in QTMovie::tracks
    uint64_t sample = 0;  // from 0
    uint64_t chunk = 1;   // from 1
};

struct QTMovie {
    AtomFields header{kMovieHeader};
    std::vector<QTTrack> tracks;
    std::vector<QTStream> streams;  // by track
    // Bodies of "\xA9" "cpy", "nam" and "inf" without length and language.
    enum Text { kCopyright, kName, kInformation, kTextCount };
    std::array<std::string, kTextCount> texts;
    Bytes colour_table;  // body of a "ctab"

    // Those of one track; a track with both headers is two streams.
    void AddStreams(size_t track);
    QTTrack& TrackOf(const QTStream& stream) { return tracks[stream.track]; }
    const QTTrack& TrackOf(const QTStream& stream) const { return tracks[stream.track]; }
};

}  // namespace kelvane
