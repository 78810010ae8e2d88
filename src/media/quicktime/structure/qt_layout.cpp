#include "media/quicktime/structure/qt_layout.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <string_view>
#include <utility>

#include "base/four_cc.h"

namespace kelvane {

namespace {

constexpr uint32_t kFixedOne = 0x10000;
constexpr uint16_t kFullVolume = 0x00FF;  // 255/256 and not 1.0, deliberately

// Seconds since the start of 1904, which is how the format counts time.
uint32_t Now()
{
    constexpr int64_t kFrom1904To1970 = 2082844800;
    return static_cast<uint32_t>(time(nullptr) + kFrom1904To1970);
}

void SetIdentity(std::span<uint8_t> matrix)
{
    StoreBytes(matrix.subspan(0, 4), kFixedOne, ByteOrder::kBig);
    StoreBytes(matrix.subspan(16, 4), kFixedOne, ByteOrder::kBig);
    StoreBytes(matrix.subspan(32, 4), 0x40000000, ByteOrder::kBig);
}

Bytes PascalString(std::string_view text)
{
    Bytes bytes(1 + text.size());
    bytes[0] = static_cast<uint8_t>(text.size());
    std::ranges::copy(text, bytes.begin() + 1);
    return bytes;
}

void SetHandler(QTHandler& handler, uint32_t type, uint32_t subtype, std::string_view name)
{
    handler.fields.Set(kHandler["component type"], type);
    handler.fields.Set(kHandler["component subtype"], subtype);
    handler.fields.Set(kHandler["component manufacturer"], "appl"_4cc);
    handler.name = PascalString(name);
}

void SetVideo(QTTrack& track)
{
    constexpr uint16_t kDitherCopy = 64;
    constexpr uint16_t kHalf = 32768;
    SetHandler(track.media_handler, "mhlr"_4cc, "vide"_4cc, "Apple Video Media Handler");
    AtomFields& head = track.video_header.emplace(kVideoHeader);
    head.Set(kVideoHeader["flags"], 1);
    head.Set(kVideoHeader["graphics mode"], kDitherCopy);
    for (const HeaderField& colour :
         {kVideoHeader["opcolor red"], kVideoHeader["opcolor green"], kVideoHeader["opcolor blue"]})
        head.Set(colour, kHalf);
}

void SetSound(QTTrack& track)
{
    SetHandler(track.media_handler, "mhlr"_4cc, "soun"_4cc, "Apple Sound Media Handler");
    track.sound_header.emplace(kSoundHeader);
    track.header.Set(kTrackHeader["volume"], kFullVolume);
}

uint64_t Capped(uint64_t value)
{
    return std::min<uint64_t>(value, std::numeric_limits<uint32_t>::max());
}

}  // namespace

QTMovie NewQTMovie()
{
    QTMovie movie;
    const uint32_t now = Now();
    movie.header.Set(kMovieHeader["creation time"], now);
    movie.header.Set(kMovieHeader["modification time"], now);
    movie.header.Set(kMovieHeader["time scale"], 600);
    movie.header.Set(kMovieHeader["preferred rate"], kFixedOne);
    movie.header.Set(kMovieHeader["preferred volume"], kFullVolume);
    movie.header.Set(kMovieHeader["next track ID"], 1);
    SetIdentity(movie.header.Field(kMovieHeader["matrix"]));
    return movie;
}

QTTrack& AddQTTrack(QTMovie& movie, bool video)
{
    constexpr uint32_t kEnabledInAll = 15;  // enabled; in movie, preview and poster
    constexpr uint32_t kDefaultHints = 320;
    const uint32_t id = static_cast<uint32_t>(movie.header.Get(kMovieHeader["next track ID"]));
    movie.header.Set(kMovieHeader["next track ID"], id + 1);

    QTTrack track;  // in the movie only when it is whole
    const uint32_t now = Now();
    track.header.Set(kTrackHeader["flags"], kEnabledInAll);
    track.header.Set(kTrackHeader["creation time"], now);
    track.header.Set(kTrackHeader["modification time"], now);
    track.header.Set(kTrackHeader["track ID"], id);
    SetIdentity(track.header.Field(kTrackHeader["matrix"]));
    track.load.Set(kLoadSettings["default hints"], kDefaultHints);
    AtomFields edit(kEdit);
    edit.Set(kEdit["media rate"], kFixedOne);
    track.edits.assign(edit.All().begin(), edit.All().end());
    track.media_header.Set(kMediaHeader["creation time"], now);
    track.media_header.Set(kMediaHeader["modification time"], now);
    track.media_header.Set(kMediaHeader["quality"], 100);
    SetHandler(track.data_handler, "dhlr"_4cc, "alis"_4cc, "Apple Alias Data Handler");
    track.data_references.push_back({"alis"_4cc, QTDataReference::kSelfContained, {}});
    video ? SetVideo(track) : SetSound(track);
    movie.tracks.push_back(std::move(track));
    movie.AddStreams(movie.tracks.size() - 1);
    return movie.tracks.back();
}

void FinishQTMovie(QTMovie& movie)
{
    const uint64_t movie_scale = movie.header.Get(kMovieHeader["time scale"]);
    uint64_t longest = 0;
    for (QTTrack& track : movie.tracks) {
        track.samples.Finish();
        const uint64_t media = Capped(track.samples.Duration());
        const uint64_t scale = track.TimeScale();
        const uint64_t duration = scale ? Capped(media * movie_scale / scale) : 0;
        track.media_header.Set(kMediaHeader["duration"], media);
        track.header.Set(kTrackHeader["duration"], duration);
        StoreBytes(std::span(track.edits).first(kEdit["track duration"].bytes), duration,
                   ByteOrder::kBig);
        longest = std::max(longest, duration);
    }
    movie.header.Set(kMovieHeader["duration"], longest);
    movie.header.Set(kMovieHeader["selection duration"], longest);
}

}  // namespace kelvane
