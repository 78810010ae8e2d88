#include "media/avi/writer/avi_layout.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/status.h"
#include "media/avi/structure/avi_codecs.h"
#include "media/riff/wave_format.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

constexpr uint32_t kSmallestReserve = 32768;  // where "movi" begins at the earliest
constexpr uint32_t kJunkSize = 20;
constexpr uint32_t kMatroxJunkSize = 13684;  // brings the first chunk to 65536
constexpr uint32_t kSuperIndexSize = 32248;
constexpr uint32_t kMatroxSuperIndexSize = 51192;
constexpr uint32_t kMatroxFormatSize = 72;
// The one field that is counted has a word of its description, 0.
constexpr uint32_t kMatroxPropertiesSize = kVideoProperties.Size() + 4;
constexpr uint32_t kMatroxFlags = 0x10030;
constexpr uint32_t kMatroxBytesPerSecond = 3609600;
constexpr std::string_view kMatroxSoftware = "Matrox MQSink Filter . Format: 4. Build: 2.0.0.271 ";
constexpr uint32_t kBytesPerSecond = 3600000;  // of DV, before the true value is known
constexpr uint32_t kRateUnits = 10000000;      // dwRate of a DV stream

uint32_t MatroxBufferSize(bool pal)
{
    return pal ? 144384 : 120832;
}

// The code for stream 0 with the number of the stream.
uint32_t StreamTag(size_t number, uint32_t code_of_0)
{
    const auto digits = static_cast<uint32_t>(number / 10 % 10 << 8 | number % 10);
    return code_of_0 + (digits << 16);
}

}  // namespace

Chunk* AVILayout::NewList(uint32_t name, Chunk* parent, Chunk* anchor)
{
    return fStructure.tree.NewChunk(
        {.id = "LIST"_4cc, .name = name, .parent = parent, .anchor = anchor});
}

Chunk* AVILayout::NewHeader(uint32_t id, Chunk* parent, uint32_t length, int32_t datatype)
{
    return fStructure.tree.NewChunk({.id = id,
                                     .length = length,
                                     .parent = parent,
                                     .datatype = datatype,
                                     .data = std::make_unique<Bytes>(length)});
}

void AVILayout::Begin(uint32_t flags)
{
    AVIStructure& s = fStructure;
    s.flags = flags;
    s.riff = s.tree.NewChunk({.id = "RIFF"_4cc, .name = "AVI "_4cc});
    s.header_list = NewList("hdrl"_4cc, s.riff);
    PlanMainHeader();
    if (Has(kAVIOpenDML)) {
        s.extended_list = NewList("odml"_4cc, s.header_list);
        s.extended_header =
            NewHeader("dmlh"_4cc, s.extended_list, kExtendedHeaderSize, kDataExtendedHeader);
    }
    if (Has(kAVIMatrox)) PlanInfo();
    s.junk = s.tree.NewChunk({.id = "JUNK"_4cc,
                              .length = Has(kAVIMatrox) ? kMatroxJunkSize : kJunkSize,
                              .parent = s.riff});
    s.media = NewList("movi"_4cc, s.riff);
}

void AVILayout::PlanMainHeader()
{
    fStructure.main_header =
        NewHeader("avih"_4cc, fStructure.header_list, kMainHeader.Size(), kDataMainHeader);
    Chunk& header = *fStructure.main_header;
    const bool pal = Has(kAVIPAL);
    const bool matrox = Has(kAVIMatrox), canopus = Has(kAVICanopus);
    Set(header, kMainHeader["dwMicroSecPerFrame"], pal ? 40000 : 33366);
    Set(header, kMainHeader["dwMaxBytesPerSec"], matrox ? kMatroxBytesPerSecond : kBytesPerSecond);
    Set(header, kMainHeader["dwPaddingGranularity"], matrox ? 512 : canopus ? 0 : 1);
    Set(header, kMainHeader["dwFlags"], matrox ? kMatroxFlags : canopus ? 0 : kTrustChunkType);
    Set(header, kMainHeader["dwSuggestedBufferSize"],
        matrox ? MatroxBufferSize(pal) : static_cast<uint32_t>(System().dv_frame_size) + 8);
}

void AVILayout::PlanInfo()
{
    fStructure.info_list = NewList("INFO"_4cc, fStructure.riff);
    Chunk* software = NewHeader("ISFT"_4cc, fStructure.info_list,
                                static_cast<uint32_t>(kMatroxSoftware.size() + 1), kDataNone);
    std::ranges::copy(kMatroxSoftware, software->data->begin());
}

AVIStream& AVILayout::NewStream(uint32_t type, uint32_t handler)
{
    const size_t number = fStructure.streams.size();
    AVIStream& stream = fStructure.streams.emplace_back();
    stream.type = type;
    stream.chunk_tag = stream.IsAudio()  ? StreamTag(number, "00wb"_4cc)
                       : Has(kAVIMatrox) ? StreamTag(number, "00dc"_4cc)
                                         : StreamTag(number, "00db"_4cc);
    stream.frames.Start(400);
    Chunk* list = NewList("strl"_4cc, fStructure.header_list, fStructure.extended_list);
    stream.header = NewHeader("strh"_4cc, list, kStreamHeader.Size(), kDataStreamHeader);
    Set(*stream.header, kStreamHeader["fccType"], type);
    Set(*stream.header, kStreamHeader["fccHandler"], handler);
    Set(*fStructure.main_header, kMainHeader["dwStreams"], number + 1);
    return stream;
}

void AVILayout::AddFormat(AVIStream& stream, uint32_t length, int32_t datatype)
{
    stream.format = NewHeader("strf"_4cc, stream.header->parent, length, datatype);
}

void AVILayout::AddIndex(AVIStream& stream)
{
    Chunk* list = stream.header->parent;
    if (Has(kAVIOpenDML)) {
        stream.super_index =
            NewHeader("indx"_4cc, list, Has(kAVIMatrox) ? kMatroxSuperIndexSize : kSuperIndexSize,
                      kDataSuperIndex);
        Set(*stream.super_index, kSuperIndex["wLongsPerEntry"], 4);
        Set(*stream.super_index, kSuperIndex["dwChunkId"], stream.chunk_tag);
    }
    if (Has(kAVIMatrox))
        StoreVideoProperties(
            *NewHeader("vprp"_4cc, list, kMatroxPropertiesSize, kDataVideoProperties));
}

void AVILayout::AddDVStream(uint32_t handler, bool pal)
{
    const TelevisionSystem& system = SystemFor(pal);
    const bool matrox = Has(kAVIMatrox), canopus = Has(kAVICanopus);
    const auto frame = static_cast<uint32_t>(system.dv_frame_size);
    const bool interleaved = !matrox && !canopus;
    AVIStream& stream =
        NewStream(interleaved ? "iavs"_4cc : "vids"_4cc, canopus ? "CDVC"_4cc : handler);
    Chunk& header = *stream.header;
    const uint32_t scale = matrox ? (pal ? 1 : 1001) : (pal ? 400000 : 333666);
    const uint32_t rate = matrox ? (pal ? 25 : 30000) : kRateUnits;
    Set(header, kStreamHeader["dwScale"], scale);
    Set(header, kStreamHeader["dwRate"], rate);
    Set(header, kStreamHeader["dwSuggestedBufferSize"], matrox ? MatroxBufferSize(pal) : frame + 8);
    if (matrox) Set(header, kStreamHeader["dwQuality"], 0xFFFFFFFF);
    Set(header, kStreamHeader["dwSampleSize"], frame);
    StoreRectangle(stream, system.width, system.height);
    if (interleaved) {
        AddFormat(stream, kDVInfo.Size(), kDataDVFormat);
        StoreDVInfo(stream, pal);
    } else {
        AddFormat(stream, matrox ? kMatroxFormatSize : kBitmapInfo.Size(), kDataBitmapFormat);
        StoreBitmapHeader(DVBitmap(handler, system), *stream.format->data);
    }
    AddIndex(stream);
}

BitmapHeader AVILayout::DVBitmap(uint32_t handler, const TelevisionSystem& system) const
{
    const auto uncompressed = static_cast<uint32_t>(system.width * 3 * system.height);
    return {.width = system.width,
            .height = system.height,
            .bit_count = 24,
            .compression = handler,
            .size_image =
                Has(kAVICanopus) ? uncompressed : static_cast<uint32_t>(system.dv_frame_size)};
}

void AVILayout::AddDVPictureStream(uint32_t handler)
{
    AddPictureStream(DVBitmap(handler, System()), static_cast<double>(System().rate));
}

void AVILayout::AddPictureStream(const BitmapHeader& header, double rate,
                                 std::span<const uint8_t> codec_data)
{
    AVIStream& stream = NewStream("vids"_4cc, header.compression);
    Set(*stream.header, kStreamHeader["dwScale"], 10000);
    const bool sensible = rate > 0 && rate < 100000;
    Set(*stream.header, kStreamHeader["dwRate"],
        sensible ? static_cast<uint32_t>(10000 * rate + 0.5) : 0);
    // That of PAL for all: deliberate, the true value replaces it at the end.
    Set(*stream.header, kStreamHeader["dwSuggestedBufferSize"],
        static_cast<uint32_t>(kPAL.dv_frame_size) + 8);
    Set(*stream.header, kStreamHeader["dwSampleSize"], header.size_image);
    StoreRectangle(stream, header.width, header.height);
    const size_t length = kBitmapInfo.Size() + codec_data.size();
    AddFormat(stream, static_cast<uint32_t>(length + (length & 1)), kDataBitmapFormat);
    StoreBitmapHeader(header, *stream.format->data);
    Set(*stream.format, kBitmapInfo["dwSize"], length);
    std::ranges::copy(codec_data, stream.format->data->begin() + kBitmapInfo.Size());
    AddIndex(stream);
}

void AVILayout::AddSoundStream(const RawAudioFormat& format)
{
    const uint32_t block = uint32_t{format.ch} * format.bitspersample / 8;
    AVIStream& stream = NewStream("auds"_4cc, 0);
    Set(*stream.header, kStreamHeader["dwScale"], 1);
    Set(*stream.header, kStreamHeader["dwRate"], static_cast<uint32_t>(format.srate));
    Set(*stream.header, kStreamHeader["dwSuggestedBufferSize"], 7680);
    Set(*stream.header, kStreamHeader["dwSampleSize"], block);
    AddFormat(stream, kWaveFormat.Size(), kDataWaveFormat);
    StoreWaveFormat(format, block, *stream.format->data);
    AddIndex(stream);
    Chunk& header = *fStructure.main_header;
    if (!Has(kAVICanopus))
        Set(header, kMainHeader["dwFlags"],
            Get32(&header, kMainHeader["dwFlags"]) | kIsInterleaved);
}

void AVILayout::StoreRectangle(AVIStream& stream, int32_t width, int32_t height)
{
    Set(*stream.header, kStreamHeader["right"], static_cast<uint32_t>(width));
    Set(*stream.header, kStreamHeader["bottom"],
        static_cast<uint32_t>(height < 0 ? -height : height));
}

// Fixed values, not taken from the frames.
void AVILayout::StoreDVInfo(AVIStream& stream, bool pal)
{
    static constexpr uint32_t kInfoPAL[] = {0xD1E030D0, 0xFFA0CF3F, 0xD1E03FD0,
                                            0xFFA0CF3F, 0xFF20FFFF, 0xFFFDC83F};
    static constexpr uint32_t kInfoNTSC[] = {0xC0C000C0, 0xFFA0CF3F, 0xC0C001C0,
                                             0xFFA0CF3F, 0xFF80FFFF, 0xFFFCC83F};
    for (size_t i = 0; i < std::size(kInfoPAL); i++)
        Set(*stream.format, kDVInfo.rows[i], pal ? kInfoPAL[i] : kInfoNTSC[i]);
}

// 485 lines in NTSC, and one field a frame of whose description there is the first word only, which
// is 0: deliberate, as this dialect has it.
void AVILayout::StoreVideoProperties(Chunk& chunk)
{
    static constexpr uint32_t kPropertiesPAL[] = {2, 1, 50, 864, 625, 0x00040003, 720, 576, 1};
    static constexpr uint32_t kPropertiesNTSC[] = {4, 2, 60, 858, 525, 0x00040003, 720, 485, 1};
    for (size_t i = 0; i < std::size(kPropertiesPAL); i++)
        Set(chunk, kVideoProperties.rows[i], Has(kAVIPAL) ? kPropertiesPAL[i] : kPropertiesNTSC[i]);
}

void AVILayout::SetAudioFormat(AVIStream& stream, int32_t rate, int32_t channels, int32_t bits)
{
    Chunk& format = *stream.format;
    if (rate > 0) {
        Set(format, kWaveFormat["nSamplesPerSec"], static_cast<uint32_t>(rate));
        Set(*stream.header, kStreamHeader["dwRate"], static_cast<uint32_t>(rate));
    }
    if (channels > 0) Set(format, kWaveFormat["nChannels"], static_cast<uint32_t>(channels));
    if (bits > 0) Set(format, kWaveFormat["wBitsPerSample"], static_cast<uint32_t>(bits));
    const uint64_t block =
        Get(&format, kWaveFormat["nChannels"]) * Get(&format, kWaveFormat["wBitsPerSample"]) / 8;
    Set(format, kWaveFormat["nBlockAlign"], block);
    Set(*stream.header, kStreamHeader["dwSampleSize"], block);
    Set(format, kWaveFormat["nAvgBytesPerSec"],
        2 * Get(&format, kWaveFormat["nChannels"]) * Get(&format, kWaveFormat["nSamplesPerSec"]));
}

Status AVILayout::SetVideoFormat(AVIStream& stream, std::span<const uint8_t> block, bool fixed)
{
    const uint64_t length = GetField(block, kBitmapInfo["dwSize"], ByteOrder::kLittle);
    if (length < kBitmapInfo.Size() || length > block.size()) return kError;
    auto body = std::make_unique<Bytes>(block.begin(), block.begin() + static_cast<long>(length));
    body->resize(length + (length & 1));
    if (fixed && body->size() != stream.format->length) return kError;
    stream.format->length = static_cast<uint32_t>(body->size());
    stream.format->data = std::move(body);
    stream.format->dirty_header = stream.format->dirty_data = true;
    fStructure.tree.Layout();
    return kOK;
}

uint32_t AVILayout::Settle()
{
    const auto head = static_cast<uint32_t>(fStructure.media->offset - 8);
    if (head >= kSmallestReserve) return head;
    fStructure.junk->length += kSmallestReserve - head;
    fStructure.junk->dirty_header = true;
    fStructure.tree.Layout();
    return kSmallestReserve;
}

void AVILayout::Finish()
{
    const AVIStream* picture = nullptr;
    for (AVIStream& stream : fStructure.streams) {
        FinishStream(stream);
        if (!stream.IsAudio()) picture = &stream;
    }
    if (picture) FinishMainHeader(*picture);
}

bool AVILayout::IsWhole() const
{
    return fStructure.main_header && fStructure.media &&
           std::ranges::all_of(fStructure.streams,
                               [](const AVIStream& s) { return s.header && s.format; });
}

void AVILayout::FinishStream(AVIStream& stream)
{
    // A reference tells the size of the frame that it stands for, not its own.
    const auto largest = static_cast<uint32_t>(
        std::max(stream.largest_chunk, Has(kAVIReference) ? stream.largest_frame : 0));
    Set(*stream.header, kStreamHeader["dwSuggestedBufferSize"],
        Has(kAVIMatrox) ? Get32(fStructure.main_header, kMainHeader["dwSuggestedBufferSize"])
                        : largest + 8);
    uint64_t length = static_cast<uint32_t>(stream.chunks);
    if (stream.IsAudio() && stream.Handler() == 0) {
        const uint64_t frame = Get(stream.format, kWaveFormat["nChannels"]) *
                               Get(stream.format, kWaveFormat["wBitsPerSample"]) / 8;
        length = frame > 0 ? stream.bytes / frame : 0;
    }
    Set(*stream.header, kStreamHeader["dwLength"], length);
    if (stream.IsVideo()) {
        Set(*stream.format, kBitmapInfo["biSizeImage"], largest);
        Set(*stream.format, kBitmapInfo["biCompression"], stream.Handler());
    }
}

void AVILayout::FinishMainHeader(const AVIStream& stream)
{
    Chunk& header = *fStructure.main_header;
    const auto get = [&](const HeaderField& field) { return Get32(stream.header, field); };
    const double scale = get(kStreamHeader["dwScale"]), rate = get(kStreamHeader["dwRate"]);
    const uint32_t buffer = get(kStreamHeader["dwSuggestedBufferSize"]);
    Set(header, kMainHeader["dwTotalFrames"], get(kStreamHeader["dwLength"]));
    if (rate > 0)
        Set(header, kMainHeader["dwMicroSecPerFrame"],
            static_cast<uint64_t>(scale * 1000000 / rate));
    if (!Has(kAVIMatrox)) {
        Set(header, kMainHeader["dwMaxBytesPerSec"], static_cast<uint64_t>(buffer * rate / scale));
        Set(header, kMainHeader["dwSuggestedBufferSize"], buffer);
    }
    if (stream.IsVideo()) {
        const auto height = static_cast<int32_t>(Get32(stream.format, kBitmapInfo["biHeight"]));
        Set(header, kMainHeader["dwWidth"], Get(stream.format, kBitmapInfo["biWidth"]));
        Set(header, kMainHeader["dwHeight"], static_cast<uint32_t>(height < 0 ? -height : height));
    } else if (IsDVHandler(stream.Handler())) {
        Set(header, kMainHeader["dwWidth"], 720);
        Set(header, kMainHeader["dwHeight"], stream.IsPAL() ? 576 : 480);
    }
    if (Has(kAVICanopus)) {
        Set(header, kMainHeader["Scale"], get(kStreamHeader["dwScale"]));
        Set(header, kMainHeader["Rate"], get(kStreamHeader["dwRate"]));
        Set(header, kMainHeader["Start"], get(kStreamHeader["dwStart"]));
        Set(header, kMainHeader["Length"], get(kStreamHeader["dwLength"]));
    }
    if (fStructure.extended_header)
        Set(*fStructure.extended_header, kExtendedHeader["dwTotalFrames"],
            static_cast<uint32_t>(stream.chunks));
}

}  // namespace kelvane
