#include "engine/options/conversion_options.h"

#include <gtest/gtest.h>

#include "base/four_cc.h"
#include "engine/options/output_formats.h"

namespace kelvane {
namespace {

ConversionSettings Filled(const ConversionOptions& options)
{
    ConversionSettings settings;
    FillConversionSettings(options, {}, settings);
    return settings;
}

TEST(ConversionOptions, MapChannelsAndLimits)
{
    const int32_t masks[] = {3, 1, 2, 4, 8, 3, 12, 15, 3};  // for -1 to 7
    ConversionOptions options;
    for (int32_t i = -1; i <= 7; i++) {
        options.channeloptions = i;
        EXPECT_EQ(masks[i + 1], Filled(options).four_channel_options) << i;
    }
    const std::tuple<const char*, int32_t, int64_t> rows[] = {
        {"start", 1, 0}, {"START", 0, 0}, {"end", 0, -1},    {"END", 1, -1},
        {"End", 1, 0},   {"12.9", 1, 12}, {"-12.9", 0, -12}, {"1e3", 0, 1000},
        {"1e3", 1, 1},   {"1e99", 0, 0},  {"nan", 0, 0},     {"", 1, 0}};
    for (const auto& [text, frames, limit] : rows) {
        options.frameortime = frames;
        options.to = text;
        EXPECT_EQ(limit, Filled(options).to_video_frame) << text;
    }
}

TEST(ConversionOptions, SetTheBitsOfTheirFormat)
{
    ConversionOptions options;
    options.inplace = options.add_idx1 = options.qt_dvcp = 0;
    options.add_ptc = 1;
    // The first QuickTime codec sets 0x800.
    const std::pair<uint32_t, uint32_t> rows[] = {{"ct1_"_4cc, 0x000}, {"cqt_"_4cc, 0x800},
                                                  {"cq64"_4cc, 0xA00}, {"cqa_"_4cc, 0xC00},
                                                  {"cqa6"_4cc, 0xE00}, {"comf"_4cc, 0x140000}};
    for (const auto& [selection, bits] : rows) {
        options.selection = selection;
        EXPECT_EQ(bits, Filled(options).conversion_options) << std::hex << bits;
    }
    options.omfspec = 1;
    options.omfaudi = 2;
    EXPECT_EQ(0x200000u, Filled(options).conversion_options);
    options = ConversionOptions();
    options.selection = "crdv"_4cc;
    options.wr486 = options.Bafoch = 1;
    EXPECT_EQ(0x1000000u | 0x800000 | 0x800 | 0x100 | 0x2 | 0x1,
              Filled(options).conversion_options);
    options.selection = "cqt_"_4cc;
    options.qcodec = 1;
    EXPECT_EQ(0u, Filled(options).conversion_options & kOptionDVCP);
    options.qt_dvcp = 0;
    options.qcodec = 3;
    EXPECT_EQ(0x400800u, Filled(options).conversion_options & 0x400800);
}

TEST(ConversionOptions, ChooseCodecsByRowWithTheFormatsOfTheirPictures)
{
    constexpr uint32_t avi = "ct2_"_4cc, qt = "cqt_"_4cc, mx = "cmat"_4cc, no_codec = 0;
    constexpr uint32_t file = kOperationConvert, pal = kOperationToPAL, ntsc = kOperationToNTSC;
    // For a file conversion animation has the PAL size and raw pictures the NTSC size.
    const struct {
        uint32_t selection;
        int32_t row;
        uint32_t operation, codec;
        int32_t height;  // 0 of DV
    } rows[] = {{qt, 0, file, "dvc "_4cc, 0},     {qt, 1, file, "dvpp"_4cc, 0},
                {qt, 2, file, "AVdv"_4cc, 0},     {qt, 3, file, "dvc "_4cc, 0},
                {qt, 9, file, "dvc "_4cc, 0},     {qt, 4, file, "rle "_4cc, 576},
                {qt, 4, ntsc, "rle "_4cc, 480},   {qt, 5, file, "raw "_4cc, 480},
                {qt, 6, pal, "raw "_4cc, 576},    {qt, 7, ntsc, "2vuy"_4cc, 480},
                {avi, 6, pal, "CDVC"_4cc, 0},     {avi, 11, pal, "YUY2"_4cc, 576},
                {avi, 14, file, "HFYU"_4cc, 480}, {avi, -1, file, no_codec, 0},
                {avi, 15, file, no_codec, 0},     {mx, 0, file, "dvsd"_4cc, 0},
                {mx, 5, file, "dv25"_4cc, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        ConversionOptions options;
        options.selection = row.selection;
        options.opselection = row.operation;
        options.codec = options.qcodec = options.mcodec = row.row;
        const ConversionSettings settings = Filled(options);
        const MediaFormat& format = settings.destination_format;
        EXPECT_EQ(row.codec, settings.codec);
        uint32_t encoding = row.codec == "rle "_4cc ? kEncodingQTRLE : 0u;
        if (row.codec == "HFYU"_4cc) encoding = kEncodingHuffYUV;
        const bool raw = encoding == 0;
        EXPECT_EQ(row.height == 0 ? kUnknownFormat : raw ? kRawVideo : kEncodedVideo, format.kind);
        if (row.height == 0) continue;
        EXPECT_EQ(720, format.Width());
        EXPECT_EQ(row.height, format.Height());
        EXPECT_EQ(row.height == 576 ? 25.0f : 29.97f, format.FrameRate());
        EXPECT_EQ(row.codec == "2vuy"_4cc, format.Space() == kYUVSigned);
        EXPECT_EQ(encoding, raw ? 0 : format.encoded_video.encoding);
        EXPECT_EQ(encoding != kEncodingQTRLE,
                  bool(raw ? format.raw_video.ilace : format.encoded_video.ilace));
    }
}

// What a row is called on the command line is what its file gets.
TEST(ConversionOptions, EachRowOfCodecsIsTheCodeOfItsSettings)
{
    for (const OutputFormat& format : OutputFormats()) {
        int32_t row = 0;
        for (const OutputCodec& codec : OutputCodecs(format.codecs)) {
            ConversionOptions options;
            options.selection = format.selection;
            options.codec = options.qcodec = options.mcodec = row++;
            EXPECT_EQ(FourCCText(codec.code), FourCCText(Filled(options).codec))
                << format.name << ' ' << codec.name;
        }
    }
}

// By operation, and the last one for all other numbers.
TEST(ConversionOptions, NameTheGeometryModes)
{
    using enum GeometryMode;
    const std::tuple<uint32_t, int32_t, GeometryMode> rows[] = {
        {kOperationToPAL, 0, kScale},
        {kOperationToPAL, 1, kLetterBox},
        {kOperationToPAL, 2, kPanAndScan},
        {kOperationToPAL, 3, kLetterBoxPanAndScan},
        {kOperationToPAL, 17, kLetterBoxPanAndScan},
        {kOperationToPAL, -1, kLetterBoxPanAndScan},
        {kOperationToNTSC, 0, kScale},
        {kOperationToNTSC, 1, kCrop},
        {kOperationToNTSC, -1, kCrop},
        {kOperationConvert, 1, kScale},
    };
    for (const auto& [operation, number, mode] : rows) {
        ConversionOptions options;
        options.opselection = operation;
        options.mode = number;
        EXPECT_EQ(mode, Filled(options).mode) << FourCCText(operation) << ' ' << number;
    }
}

TEST(ConversionOptions, DeinterlaceFirstOnlyWithPulldown)
{
    ConversionOptions options;  // to PAL
    EXPECT_EQ(0, Filled(options).deinterlace_source_first);
    options.blendmode = 3;
    EXPECT_EQ(1, Filled(options).deinterlace_source_first);
    options.opselection = kOperationConvert;
    EXPECT_EQ(0, Filled(options).deinterlace_source_first);
}

}  // namespace
}  // namespace kelvane
