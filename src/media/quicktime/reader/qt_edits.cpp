#include "media/quicktime/reader/qt_edits.h"

#include <algorithm>
#include <cmath>

#include "media/quicktime/structure/qt_sound.h"

namespace kelvane {

namespace {

constexpr uint32_t kEmpty = 0xFFFFFFFF;  // as media time
constexpr uint32_t kOneToOne = 0x10000;  // as media rate, fixed 16.16
// An edit this much shorter than its media cuts nothing off: clocks differ.
constexpr double kSameLength = 0.04;
// Beyond every film, and small enough to count with.
constexpr double kMostSeconds = 1e7;
// Of a frame: no such rest makes another frame.
constexpr double kNoRest = 1e-6;

struct TrackStart {
    double seconds = 0;  // of nothing in front
    bool has_other_edits = false;
};

double Seconds(uint64_t ticks, uint64_t scale)
{
    return scale ? std::min(double(ticks) / double(scale), kMostSeconds) : 0;
}

TrackStart StartOf(const QTTrack& track, uint64_t movie_scale)
{
    const std::span<const uint8_t> edits = track.edits;
    const auto get = [&](size_t at, const HeaderField& field) {
        return GetField(edits.subspan(at), field, ByteOrder::kBig);
    };
    uint64_t empty = 0;
    size_t at = 0;
    for (; at < edits.size() && get(at, kEdit["media time"]) == kEmpty; at += kEdit.Size())
        empty += get(at, kEdit["track duration"]);
    if (edits.empty()) return {};
    if (at == edits.size()) return {0, true};
    // One of no length goes to the end.
    const uint64_t length = get(at, kEdit["track duration"]);
    const double media = Seconds(track.samples.Duration(), track.TimeScale());
    const bool whole = length == 0 || Seconds(length, movie_scale) > media - kSameLength;
    const bool plain = at + kEdit.Size() == edits.size() && get(at, kEdit["media time"]) == 0 &&
                       get(at, kEdit["media rate"]) == kOneToOne && whole;
    return {Seconds(empty, movie_scale), !plain};
}

}  // namespace

QTStart QTStartOf(const QTMovie& movie, const QTTrack& video, const QTFrameTime& frame,
                  const QTTrack* sound)
{
    const uint64_t scale = movie.header.Get(kMovieHeader["time scale"]);
    const TrackStart picture = StartOf(video, scale);
    if (!sound) return {.has_other_edits = picture.has_other_edits};
    const TrackStart heard = StartOf(*sound, scale);
    QTStart start{.has_other_edits = picture.has_other_edits || heard.has_other_edits};
    const double rate = QTSoundOf(*sound).format.raw_audio.srate;
    const double clock = double(video.TimeScale()) * double(frame.parts);
    double late = heard.seconds - picture.seconds;  // of the sound
    // Pictures are held for whole frames; what is too much is silence.
    if (late < 0 && frame.ticks > 0 && clock > 0) {
        const double seconds = double(frame.ticks) / clock;
        start.held = static_cast<uint64_t>(std::min(std::ceil(-late / seconds - kNoRest), 1e12));
        late += double(start.held) * seconds;
    }
    if (late > 0 && rate > 0) start.silence = static_cast<uint64_t>(std::llround(late * rate));
    return start;
}

}  // namespace kelvane
