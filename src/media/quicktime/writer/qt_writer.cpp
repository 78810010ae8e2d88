#include "media/quicktime/writer/qt_writer.h"

#include <algorithm>
#include <cstring>

#include "base/four_cc.h"
#include "base/saturating.h"
#include "media/quicktime/structure/qt_formats.h"
#include "media/quicktime/structure/qt_layout.h"
#include "media/quicktime/structure/qt_movie_builder.h"

namespace kelvane {

namespace {

// The head of the "mdat" always takes its 64-bit form.
constexpr uint64_t kMediaHead = 16;
constexpr uint64_t kMediaSizeAt = 8;
// What is given up of the media when the disk has no room for the header.
constexpr uint64_t kGivenUp = 0x100000;

constexpr char kDefaultInformation[] = "Created by Corvid";

void SetPascalString(std::span<uint8_t> field, const char* text)
{
    const size_t length = std::min(strlen(text), field.size() - 1);
    field[0] = static_cast<uint8_t>(length);
    std::copy_n(text, length, field.begin() + 1);
}

QTSampleDescription VideoDescription(const QTVideoChoice& choice, int32_t width, int32_t height,
                                     uint32_t options)
{
    constexpr uint32_t k72DotsPerInch = 72 << 16;
    const QTCompressor compressor = QTCompressorOf(choice.format, height, options);
    QTSampleDescription description(kVideoDescription);
    AtomFields& fields = description.fields;
    fields.Set(kVideoDescription["data format"], choice.format);
    fields.Set(kVideoDescription["data reference index"], 1);
    fields.Set(kVideoDescription["vendor"], compressor.vendor);
    fields.Set(kVideoDescription["temporal quality"], 100);
    fields.Set(kVideoDescription["spatial quality"], 258);
    fields.Set(kVideoDescription["width"], static_cast<uint32_t>(width));
    fields.Set(kVideoDescription["height"], static_cast<uint32_t>(height));
    fields.Set(kVideoDescription["horizontal resolution"], k72DotsPerInch);
    fields.Set(kVideoDescription["vertical resolution"], k72DotsPerInch);
    fields.Set(kVideoDescription["frame count"], 1);
    SetPascalString(fields.Field(kVideoDescription["compressor name"]), compressor.name);
    fields.Set(kVideoDescription["depth"], choice.depth);
    fields.Set(kVideoDescription["color table ID"], 0xFFFF);
    return description;
}

// A sound track's clock ticks once a sample frame.
void SetSoundFields(QTTrack& track, uint32_t rate, uint32_t channels, uint32_t bits)
{
    AtomFields& fields = track.Description()->fields;
    const uint32_t format = track.Format();
    fields.Set(kSoundDescription["number of channels"], channels);
    fields.Set(kSoundDescription["sample size"], IsQTPackedSound(format) ? 16 : bits);
    fields.Set(kSoundDescription["sample rate"], uint64_t{rate} << 16);
    track.media_header.Set(kMediaHeader["time scale"], rate);
}

// The byte behind the last chunk of a destination's track.
uint64_t LastChunkEnd(const QTTrack& track)
{
    const QTSampleTables& tables = track.samples;
    const uint64_t start = tables.offsets.back();
    if (track.video_header) return start + tables.sizes.back();
    const auto channels =
        static_cast<uint32_t>(track.Described(kSoundDescription["number of channels"]));
    const auto bits = static_cast<uint32_t>(track.Described(kSoundDescription["sample size"]));
    return start + QTSoundBytes(track.Format(), tables.chunk_runs.back().samples, channels, bits);
}

bool IsWritableRate(int64_t rate)
{
    return rate > 0 && rate <= 0xFFFF;
}

}  // namespace

QTWriter::QTWriter(QTMovie& movie, PositionedFile& file) : fMovie(movie), fFile(file) {}

Status QTWriter::Begin()
{
    Bytes head;
    ByteWriter writer(head, ByteOrder::kBig);
    writer.Put32(1);
    writer.Put32("mdat"_4cc);
    writer.Put64(0);
    fMovie = NewQTMovie();
    fMovie.texts[QTMovie::kInformation] = kDefaultInformation;
    fMediaEnd = kMediaHead;
    // A device that is full already is no destination.
    return fFile.Write(head);
}

void QTWriter::SetOptions(uint32_t options, const char* information)
{
    fOptions = options;
    if (information) fMovie.texts[QTMovie::kInformation] = information;
}

Status QTWriter::AddVideoTrack(const MediaFormat& format)
{
    return format.kind == kRawVideo ? AddVideo(format) : kFormatNotSupported;
}

Status QTWriter::AddEncodedVideoTrack(const MediaFormat& format)
{
    return format.kind == kEncodedVideo ? AddVideo(format) : kFormatNotSupported;
}

Status QTWriter::AddVideo(const MediaFormat& format)
{
    const QTVideoChoice choice = ChooseQTVideo(format, fOptions);
    const QTTimeScale time = QTTimeScaleOf(format.FrameRate());
    const int32_t width = format.Width(), height = format.Height();
    if (!choice.format || !time.scale || width < 1 || width > 0x7FFF || height < 1 ||
        height > 0x7FFF)
        return kFormatNotSupported;
    QTTrack& track = AddQTTrack(fMovie, true);
    fMovie.header.Set(kMovieHeader["time scale"], time.scale);
    track.media_header.Set(kMediaHeader["time scale"], time.scale);
    track.header.Set(kTrackHeader["track width"], static_cast<uint64_t>(width) << 16);
    track.header.Set(kTrackHeader["track height"], static_cast<uint64_t>(height) << 16);
    track.samples.Begin(time.frame, 0);
    track.samples.descriptions.push_back(VideoDescription(choice, width, height, fOptions));
    return kOK;
}

Status QTWriter::AddPCMAudioTrack(const MediaFormat& format)
{
    return format.kind == kRawAudio ? AddSound(format, format.raw_audio) : kFormatNotSupported;
}

Status QTWriter::AddAudioTrack(const MediaFormat& format)
{
    if (format.kind == kEncodedAudio) return AddSound(format, format.encoded_audio.output);
    return AddPCMAudioTrack(format);
}

Status QTWriter::AddSound(const MediaFormat& format, const RawAudioFormat& sound)
{
    if (sound.ch < 1) return kOK;
    const uint32_t code = ChooseQTSound(format);
    if (!code || !IsWritableRate(sound.srate) || sound.bitspersample < 8)
        return kFormatNotSupported;
    QTTrack& track = AddQTTrack(fMovie, false);
    track.samples.Begin(1, 1);
    QTSampleDescription& description = track.samples.descriptions.emplace_back(kSoundDescription);
    description.fields.Set(kDescriptionHead["data format"], code);
    description.fields.Set(kDescriptionHead["data reference index"], 1);
    description.fields.Set(kDescriptionHead["vendor"], "appl"_4cc);
    SetSoundFields(track, static_cast<uint32_t>(sound.srate), sound.ch, sound.bitspersample);
    return kOK;
}

Status QTWriter::SetAudioFormat(const QTStream& stream, int32_t rate, int32_t channels,
                                int32_t bits)
{
    if (stream.kind != QTStream::kSound) return kError;
    QTTrack& track = fMovie.TrackOf(stream);
    if (rate < 1) rate = static_cast<int32_t>(track.SampleRate());
    if (channels < 1)
        channels = static_cast<int32_t>(track.Described(kSoundDescription["number of channels"]));
    if (bits < 1) bits = static_cast<int32_t>(track.Described(kSoundDescription["sample size"]));
    if (track.samples.ChunkCount() > 0 || !IsWritableRate(rate) || channels > 0xFFFF || bits < 8 ||
        bits > 0xFFFF)
        return kError;
    SetSoundFields(track, static_cast<uint32_t>(rate), static_cast<uint32_t>(channels),
                   static_cast<uint32_t>(bits));
    return kOK;
}

Status QTWriter::WriteFrame(const QTStream& stream, const void* data, uint32_t size)
{
    if (fClosed || !data) return kError;
    QTTrack& track = fMovie.TrackOf(stream);
    if (stream.kind == QTStream::kSound) return WriteSound(track, data, size);
    uint64_t offset;
    const Status status = WriteMedia(data, size, offset);
    if (status == kOK) track.samples.AddSample(offset, size);
    return status;
}

Status QTWriter::WriteSound(QTTrack& track, const void* data, uint32_t size)
{
    const uint32_t format = track.Format();
    const auto channels =
        static_cast<uint32_t>(track.Described(kSoundDescription["number of channels"]));
    const auto bits = static_cast<uint32_t>(track.Described(kSoundDescription["sample size"]));
    const uint64_t samples = QTSoundSamples(format, size, channels, bits);
    if (HasQTSwappedWords(format, bits)) {
        if (fSwapped.size() < size) fSwapped.resize(size);
        SwapWords(data, fSwapped.data(), size / 2);
        if (size % 2) fSwapped[size - 1] = static_cast<const uint8_t*>(data)[size - 1];
        data = fSwapped.data();
    }
    uint64_t offset;
    const Status status = WriteMedia(data, size, offset);
    if (status == kOK) track.samples.AddChunk(offset, static_cast<uint32_t>(samples));
    return status;
}

Status QTWriter::WriteMedia(const void* data, uint32_t size, uint64_t& offset)
{
    if (!(fOptions & kQTWideOffsets) && SaturatingAdd(fMediaEnd, size) > fNarrowLimit)
        return kError;
    offset = fMediaEnd;
    fFile.SetPosition(fMediaEnd);
    const Status status = fFile.Write({static_cast<const uint8_t*>(data), size});
    fMediaEnd = fFile.Position();
    return status;
}

Status QTWriter::Close()
{
    if (fClosed) return *fClosed;
    fClosed = kError;  // of one that memory runs out in: no second one
    uint64_t end = fMediaEnd, size = 0;
    const Status written = WriteMovie(end, size);
    const bool has_movie = written == kOK || WriteMovieOverMedia(end, size) == kOK;
    // What a broken write or given up media left behind the header would be taken for atoms; a
    // header that failed left the position at its start, and goes as well.
    const Status cut = fFile.Truncate();
    const Status sized = WriteMediaSize(end);
    const Status closed = fFile.Close();
    fClosed = FirstFailure(FirstFailure(written, cut), FirstFailure(sized, closed));
    // Without either of them no reader finds a frame.
    if (!has_movie || sized != kOK) GiveUpMedia(0);
    return *fClosed;
}

// Where there is no room for a header of `size` bytes the last megabyte of media makes it; for a
// header that is larger then as much as it needs. `end` is where the media that stay end.
Status QTWriter::WriteMovieOverMedia(uint64_t& end, uint64_t size)
{
    Status status = kError;
    uint64_t given_up = 0;
    while (status != kOK && end > kMediaHead && given_up < size) {
        given_up = given_up ? (size / kGivenUp + 1) * kGivenUp : kGivenUp;
        end = fMediaEnd - std::min(given_up, fMediaEnd - kMediaHead);
        GiveUpMedia(end);
        status = WriteMovie(end, size);
        if (status == kOK) break;
        // Some file systems never write in place: they need the room back first.
        fFile.SetPosition(end);
        status = fFile.Truncate();
        if (status == kOK) status = WriteMovie(end, size);
    }
    return status;
}

Status QTWriter::WriteMediaSize(uint64_t end)
{
    uint8_t size[8];
    StoreBytes(size, end, ByteOrder::kBig);  // the "mdat" begins at byte 0
    fFile.SetPosition(kMediaSizeAt);
    return fFile.Write(size);
}

Status QTWriter::WriteMovie(uint64_t start, uint64_t& size)
{
    FinishQTMovie(fMovie);
    const Bytes moov = BuildQTMovie(fMovie, fOptions & kQTWideOffsets);
    size = moov.size();
    fFile.SetPosition(start);
    return fFile.Write(moov);
}

// Takes all chunks that end behind `from` out of the tables.
void QTWriter::GiveUpMedia(uint64_t from)
{
    for (QTTrack& track : fMovie.tracks) {
        QTSampleTables& tables = track.samples;
        while (!tables.offsets.empty() && LastChunkEnd(track) > from)
            tables.DropLastChunk();
    }
}

}  // namespace kelvane
