#include "engine/loop/conversion_case.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "base/four_cc.h"
#include "dv/dif_layout.h"
#include "engine/options/output_formats.h"
#include "engine/pictures/picture_decoder.h"
#include "format/picture_layout.h"

namespace kelvane {

namespace {

class CallingHost : public ConversionHost {
public:
    explicit CallingHost(const ProgressCall& call) : fCall(call) {}
    Wish Progress(const ConversionProgress& progress) override { return fCall(progress); }

private:
    const ProgressCall& fCall;
};

}  // namespace

ConversionCase::ConversionCase(const std::string& folder)
    : fDrivers(LoadCodecDrivers(folder)),
      fCodecs(ListDVCodecs(fDrivers)),
      fRegistry(MakeCodecRegistry(fDrivers)),
      fState(fRegistry, 0)
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
    const auto is = [](const std::string& name) {
        return [&](const auto& row) { return row.name == name; };
    };
    const OutputFormat& row = *std::ranges::find_if(OutputFormats(), is(format));
    fOptions.selection = row.selection;
    const auto codecs = OutputCodecs(row.codecs);
    const auto at = std::ranges::find_if(codecs, is(codec)) - codecs.begin();
    fOptions.codec = fOptions.qcodec = fOptions.mcodec = codec.empty() ? 0 : int32_t(at);
}

int ConversionCase::Convert(const std::string& source, const std::string& destination)
{
    ConversionSettings settings;
    FillConversionSettings(fOptions, fCodecs, settings);
    if (fAdjust) fAdjust(settings);
    CallingHost host(fAtProgress);
    return ConvertFile(source, destination, TypeOfDestination(fOptions.selection), settings,
                       fAtProgress ? &host : nullptr, &fResult, fState)
        .Code();
}

std::string ConversionCase::Converted(const std::string& source, const std::string& name)
{
    const std::string path = fFolder.Path(name);
    EXPECT_EQ(0, Convert(source, path)) << fResult.message;
    return path;
}

Film::Film(const std::string& path)
{
    OpenedSource opened = OpenSource(path);
    if (!opened) throw std::runtime_error(path + ": " + opened.Error().message);
    source = std::move(*opened);
    Bytes buffer(LargestFrame(source->format));
    for (int64_t number = 0;; number++) {
        const FrameRead read = source->ReadFrame(number, buffer);
        if (read.status != kOK || read.size == 0) break;
        frames.emplace_back(buffer.begin(), buffer.begin() + ptrdiff_t(read.size));
    }
    while (AudioStream* stream = source->Audio()) {
        buffer.resize(std::max<uint32_t>(stream->ChunkSize(), 1));
        uint32_t bytes = 0;
        if (stream->ReadChunk(buffer.data(), uint32_t(buffer.size()), bytes) != 0) break;
        track.insert(track.end(), buffer.begin(), buffer.begin() + bytes);
    }
}

Bytes Film::SoundOfFrames()
{
    Bytes all, some(10400);
    for (Bytes& bytes : frames) {
        const size_t got = View(bytes).ExtractAudio(some, 3);
        all.insert(all.end(), some.begin(), some.begin() + ptrdiff_t(got));
    }
    return all;
}

Bytes Film::Pictures() const
{
    Bytes all;
    for (const Bytes& frame : frames)
        all.insert(all.end(), frame.begin(), frame.end());
    if (!source->format.IsDV()) return all;
    for (size_t sequence = 0; sequence < all.size() / kDIFSequenceSize; sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            std::fill_n(&all[AudioBlockAt(sequence, block)], kDIFBlockSize, uint8_t{0});
    return all;
}

Bytes DecodedFrame(const std::string& path, size_t number, ConversionState& state)
{
    Film film(path);
    const MediaFormat& format = film.source->format;
    PictureDecoder decoder(format, state);
    const size_t pixels = PixelsOf(format);
    Bytes picture(2 * std::max<size_t>(pixels, 720 * 576) * 4);
    for (size_t i = 0; i <= number; i++) {
        Bytes& frame = film.frames.at(i);
        EXPECT_TRUE(decoder.Decode(frame, format.IsDV() && View(frame).IsDVCPRO(), picture));
    }
    picture.resize(pixels * 4);
    return picture;
}

}  // namespace kelvane
