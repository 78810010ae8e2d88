#include "media/quicktime/reader/qt_salvage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

#include "base/four_cc.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "media/quicktime/reader/qt_frame_search.h"
#include "media/quicktime/reader/qt_movie_parser.h"
#include "media/quicktime/structure/qt_fields.h"
#include "media/quicktime/structure/qt_formats.h"
#include "media/quicktime/structure/qt_layout.h"
#include "media/quicktime/structure/qt_movie_builder.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint32_t kBytesOf16Bits = 2;

// What lies between frames.
struct Gap {
    uint64_t place;
    uint64_t bytes;
    uint64_t frames;  // since the gap before
};

struct FoundSound {
    uint32_t rate = 0;  // hertz; 0: none
    uint32_t channels = 0;
    uint32_t format = 0;
    std::vector<Gap> chunks{};
    uint64_t left_out = 0;  // bytes
    uint64_t silent = 0;    // frames

    uint32_t SampleBytes() const { return channels * kBytesOf16Bits; }
};

// In the order of the file; the last one, behind the last frame, has no bytes.
std::vector<Gap> GapsBetween(const FoundFrames& found, uint64_t from)
{
    std::vector<Gap> gaps;
    uint64_t at = from, frames = 0;
    for (const uint64_t place : found.places) {
        if (place > at) {
            gaps.push_back({at, place - at, frames});
            frames = 0;
        }
        at = place + static_cast<uint64_t>(SystemFor(found.pal).dv_frame_size);
        frames++;
    }
    gaps.push_back({at, 0, frames});
    return gaps;
}

// Bytes of a gap for each frame before it: what half of the gaps have at least.
double UsualBytes(const std::vector<Gap>& gaps)
{
    std::vector<double> bytes;
    for (const Gap& gap : gaps)
        if (gap.frames > 0 && gap.bytes > 0)
            bytes.push_back(double(gap.bytes) / double(gap.frames));
    if (bytes.empty()) return 0;
    const auto middle = bytes.begin() + static_cast<ptrdiff_t>(bytes.size() / 2);
    std::ranges::nth_element(bytes, middle);
    return *middle;
}

bool IsNear(double value, double wanted, double tolerance)
{
    return std::abs(value - wanted) <= wanted * tolerance;
}

// Sound comes in pieces that may be longer or shorter than their frames, but not by half.
bool Fits(const Gap& gap, double bytes_of_frame, uint64_t more_frames = 0)
{
    const uint64_t frames = gap.frames + more_frames;
    const double counted = frames ? double(frames) : 1;  // in front of the first one
    return IsNear(double(gap.bytes), bytes_of_frame * counted, 0.5);
}

// The rate and channels whose sound has the length that the gaps have on average.
FoundSound SoundOfLength(const std::vector<Gap>& gaps, float frame_rate)
{
    const double usual = UsualBytes(gaps);
    double bytes = 0, frames = 0;
    for (const Gap& gap : gaps)
        if (gap.frames > 0 && Fits(gap, usual)) {
            bytes += double(gap.bytes);
            frames += double(gap.frames);
        }
    if (frames > 0)
        for (const uint32_t rate : {48000u, 44100u, 32000u})
            for (const uint32_t channels : {2u, 1u, 4u})
                if (const FoundSound sound{.rate = rate, .channels = channels};
                    IsNear(bytes * frame_rate / frames, rate * sound.SampleBytes(), 0.04))
                    return sound;
    return {};
}

// Sound is smoother in its own order of bytes than in the other.
bool IsLittleEndian(const PositionedFile& file, const FoundSound& sound)
{
    constexpr size_t kMostChunks = 100;
    constexpr uint64_t kMostBytes = 1 << 16;  // of each
    uint64_t little = 0, big = 0;
    Bytes bytes;
    for (size_t i = 0; i < std::min(sound.chunks.size(), kMostChunks); i++) {
        bytes.resize(static_cast<size_t>(std::min(sound.chunks[i].bytes, kMostBytes)));
        if (sound.chunks[i].place == kSalvagedSilence ||
            FileReadWhole(file.Handle(), sound.chunks[i].place, bytes) != kOK)
            continue;
        const auto step = [&](size_t at, size_t high) {
            const auto value = [&](size_t sample) {
                return static_cast<int16_t>(bytes[sample + high] << 8 | bytes[sample + 1 - high]);
            };
            return static_cast<uint64_t>(std::abs(value(at + sound.SampleBytes()) - value(at)));
        };
        for (size_t at = 0; at + sound.SampleBytes() + 1 < bytes.size(); at += kBytesOf16Bits) {
            little += step(at, 1);
            big += step(at, 0);
        }
    }
    return little < big;
}

// Bytes of sound behind the last frame; 0 when a frame or a header begins there.
uint64_t SoundAtTheEnd(const PositionedFile& file, uint64_t place, uint64_t end)
{
    if (place >= end) return 0;
    std::array<uint8_t, 8> head;
    const Status read = FileReadWhole(file.Handle(), place, head);
    // Whoever reads it is told.
    if (read == kUnread) return end - place;
    if (read != kOK || BeginsWithHeaderBlock(head)) return 0;
    const auto type = std::span(head).subspan(4);
    return LoadBytes(type, ByteOrder::kBig) == "moov"_4cc ? 0 : end - place;
}

void AddSilence(uint64_t frames, double bytes_of_frame, FoundSound& sound)
{
    const auto samples = [&](uint64_t count) {
        return std::llround(double(count) * bytes_of_frame / sound.SampleBytes());
    };
    for (uint64_t i = 0; i < frames; i++) {
        const auto length = static_cast<uint64_t>(samples(i + 1) - samples(i));
        sound.chunks.push_back({kSalvagedSilence, length * sound.SampleBytes(), 1});
    }
    sound.silent += frames;
}

FoundSound FindSound(const PositionedFile& file, const FoundFrames& found, uint64_t from,
                     uint64_t end)
{
    const float frame_rate = SystemFor(found.pal).rate;
    std::vector<Gap> gaps = GapsBetween(found, from);
    FoundSound sound = SoundOfLength(gaps, frame_rate);
    gaps.back().bytes = SoundAtTheEnd(file, gaps.back().place, end);
    const double bytes_of_frame = double(sound.rate) * sound.SampleBytes() / frame_rate;
    uint64_t without = 0;  // frames behind the last sound, up to the last gap that is none
    for (Gap& gap : gaps) {
        const uint64_t rest = sound.rate ? gap.bytes % sound.SampleBytes() : 0;
        // Of the frames behind what is left out, or of those before it as well.
        const bool of_few = Fits(gap, bytes_of_frame), of_all = Fits(gap, bytes_of_frame, without);
        const bool is_sound = sound.rate && (of_few || of_all);
        // What is not whole at the end is no loss of its own.
        if (&gap != &gaps.back()) sound.left_out += is_sound ? rest : gap.bytes;
        gap.bytes -= rest;
        without += is_sound ? 0 : gap.frames;
        if (!is_sound) continue;
        const auto middle = double(gap.frames) + double(without) / 2;
        if (double(gap.bytes) < bytes_of_frame * middle) AddSilence(without, bytes_of_frame, sound);
        without = 0;
        sound.chunks.push_back(gap);
    }
    sound.format = IsLittleEndian(file, sound) ? "sowt"_4cc : "twos"_4cc;
    return sound;
}

void AddPictures(QTMovie& movie, const FoundFrames& found)
{
    const TelevisionSystem& system = SystemFor(found.pal);
    const QTTimeScale time = QTTimeScaleOf(system.rate);
    QTTrack& track = AddQTTrack(movie, true);
    track.media_header.Set(kMediaHeader["time scale"], time.scale);
    track.samples.Begin(time.frame, 0);
    AtomFields& fields = track.samples.descriptions.emplace_back(kVideoDescription).fields;
    fields.Set(kVideoDescription["data format"], "dvc "_4cc);
    fields.Set(kVideoDescription["data reference index"], 1);
    fields.Set(kVideoDescription["width"], static_cast<uint64_t>(system.width));
    fields.Set(kVideoDescription["height"], static_cast<uint64_t>(system.height));
    for (const uint64_t place : found.places)
        track.samples.AddSample(place, static_cast<uint32_t>(system.dv_frame_size));
}

void AddSound(QTMovie& movie, const FoundSound& sound)
{
    QTTrack& track = AddQTTrack(movie, false);
    track.media_header.Set(kMediaHeader["time scale"], sound.rate);
    track.samples.Begin(1, 1);
    AtomFields& fields = track.samples.descriptions.emplace_back(kSoundDescription).fields;
    fields.Set(kSoundDescription["data format"], sound.format);
    fields.Set(kSoundDescription["data reference index"], 1);
    fields.Set(kSoundDescription["number of channels"], sound.channels);
    fields.Set(kSoundDescription["sample size"], 16);
    fields.Set(kSoundDescription["sample rate"], uint64_t{sound.rate} << 16);
    for (const Gap& chunk : sound.chunks)
        track.samples.AddChunk(chunk.place,
                               static_cast<uint32_t>(chunk.bytes / sound.SampleBytes()));
}

}  // namespace

QTSalvage SalvageQTMovie(const PositionedFile& file, uint64_t from, uint64_t end, QTMovie& movie)
{
    const FoundFrames found = DIFFrameSearch(file).FindFrom(from);
    if (found.places.empty()) return {.status = found.status};
    const FoundSound sound = FindSound(file, found, from, end);
    // The header that should be there, read as if it were.
    QTMovie missing = NewQTMovie();
    AddPictures(missing, found);
    if (!sound.chunks.empty()) AddSound(missing, sound);
    FinishQTMovie(missing);
    constexpr size_t kHead = 8;
    ParseQTMovie(std::span<const uint8_t>(BuildQTMovie(missing, true)).subspan(kHead), movie);
    return {found.places.size(), sound.left_out, sound.silent};
}

}  // namespace kelvane
