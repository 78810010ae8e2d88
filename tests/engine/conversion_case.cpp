#include "engine/conversion_case.h"

#include <algorithm>
#include <cmath>

#include "base/four_cc.h"
#include "dv/dif_frame.h"
#include "dv/dif_layout.h"
#include "engine/output_formats.h"
#include "engine/picture_decoder.h"
#include "engine/picture_size.h"

namespace kelvane {

namespace {

int32_t RowOf(CodecMenu menu, const std::string& codec)
{
    const auto rows = OutputCodecs(menu);
    for (size_t row = 0; row < rows.size(); row++)
        if (rows[row].name == codec) return static_cast<int32_t>(row);
    return 0;
}

Bytes TrackOf(Source& source)
{
    Bytes all;
    AudioStream* stream = source.Audio();
    for (int status = 0; stream && status == 0;) {
        Bytes chunk(std::max<uint32_t>(stream->ChunkSize(), 1));
        uint32_t bytes = 0;
        status = stream->ReadChunk(chunk.data(), static_cast<uint32_t>(chunk.size()), bytes);
        if (status == 0) all.insert(all.end(), chunk.begin(), chunk.begin() + bytes);
    }
    return all;
}

}  // namespace

ConversionCase::ConversionCase(const std::string& folder, int threads)
    : fDrivers(LoadCodecDrivers(folder)),
      fCodecs(ListDVCodecs(fDrivers)),
      fRegistry(MakeCodecRegistry(fDrivers)),
      fState(fRegistry, threads)
{
    fOptions.selection = "crdv"_4cc;
    fOptions.opselection = kOperationConvert;
    fOptions.DVCPROencoder = fOptions.DVencoder;
    fOptions.DVCPROdecoder = fOptions.DVdecoder;
}

std::string ConversionCase::MakeClip(const std::string& name, int64_t frames,
                                     const SampleOptions& options)
{
    SampleClip clip(LoadCodecDrivers(CodecFolder()), options);
    EXPECT_EQ(0, WriteSampleFile(fFolder.Path(name), clip, frames));
    return fFolder.Path(name);
}

void ConversionCase::Choose(const std::string& format, const std::string& codec)
{
    for (const OutputFormat& row : OutputFormats()) {
        if (row.name != format) continue;
        fOptions.selection = row.selection;
        const int32_t number = RowOf(row.codecs, codec);
        fOptions.codec = fOptions.qcodec = fOptions.mcodec = number;
    }
}

int ConversionCase::Convert(const std::string& source, const std::string& destination)
{
    ConversionSettings settings;
    FillConversionSettings(fOptions, fCodecs, settings);
    if (fAdjust) fAdjust(settings);
    return ConvertFile(source, destination, TypeOfDestination(fOptions.selection), settings,
                       &fResult, fState);
}

std::string ConversionCase::Converted(const std::string& source, const std::string& name)
{
    const std::string path = fFolder.Path(name);
    EXPECT_EQ(0, Convert(source, path)) << fResult.message;
    return path;
}

Film::Film(const std::string& path)
{
    std::string message;
    const auto source = OpenSource(path, message);
    EXPECT_TRUE(source) << message;
    if (!source) return;
    format = source->format;
    format.encoded_video.private_data = nullptr;  // goes with the source
    pal = source->is_pal;
    told_frames = source->CountFrames();
    Bytes buffer(LargestFrame(format));
    for (int64_t size = 0; source->ReadFrame(buffer, size) == 0 && size > 0;)
        frames.emplace_back(buffer.begin(), buffer.begin() + size);
    track = TrackOf(*source);
}

Bytes Film::SoundOfFrames()
{
    Bytes all;
    Bytes some(10400);
    for (Bytes& bytes : frames) {
        DIFFrame frame(bytes.data(), static_cast<uint32_t>(bytes.size()));
        const size_t got = frame.ExtractAudio(some, 3);
        all.insert(all.end(), some.begin(), some.begin() + static_cast<ptrdiff_t>(got));
    }
    return all;
}

Bytes Film::Pictures() const
{
    Bytes all;
    for (const Bytes& frame : frames)
        all.insert(all.end(), frame.begin(), frame.end());
    if (!format.IsDV()) return all;
    for (size_t sequence = 0; sequence < all.size() / kDIFSequenceSize; sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            std::fill_n(all.begin() + static_cast<ptrdiff_t>(AudioBlockAt(sequence, block)),
                        kDIFBlockSize, uint8_t{0});
    return all;
}

Bytes DecodedFrame(const std::string& path, size_t number, ConversionState& state)
{
    std::string message;
    const auto source = OpenSource(path, message);
    if (!source) return {};
    PictureDecoder decoder(source->format, state);
    Bytes buffer(LargestFrame(source->format));
    Bytes picture(2 * std::max<size_t>(PixelsOf(source->format), 720 * 576) * 4);
    for (size_t i = 0; i <= number; i++) {
        int64_t size = 0;
        if (source->ReadFrame(buffer, size) != 0) return {};
        const std::span<const uint8_t> frame(buffer.data(), static_cast<size_t>(size));
        DIFFrame view(buffer.data(), static_cast<uint32_t>(size));
        if (decoder.Decode(frame, source->format.IsDV() && view.IsDVCPRO(), picture) != 0)
            return {};
    }
    picture.resize(PixelsOf(source->format) * 4);
    return picture;
}

double PictureNoise(const Bytes& a, const Bytes& b)
{
    if (a.size() != b.size() || a.empty()) return 0;
    double squares = 0;
    for (size_t i = 0; i < a.size(); i++)
        if (i % 4 != 3) squares += (a[i] - b[i]) * (a[i] - b[i]);
    if (squares == 0) return 99;
    return 10 * std::log10(255.0 * 255.0 * (static_cast<double>(a.size()) * 3 / 4) / squares);
}

}  // namespace kelvane
