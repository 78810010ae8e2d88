#include "engine/conversion_options.h"

#include <gtest/gtest.h>

#include "base/four_cc.h"
#include "engine/output_formats.h"

namespace kelvane {
namespace {

ConversionSettings Filled(const ConversionOptions& options, const DVCodecLists& codecs = {})
{
    ConversionSettings settings;
    FillConversionSettings(options, codecs, settings);
    return settings;
}

ConversionOptions For(uint32_t selection, uint32_t operation = kOperationConvert)
{
    ConversionOptions options;
    options.selection = selection;
    options.opselection = operation;
    return options;
}

TEST(ConversionOptions, MapChannelsAndLimits)
{
    const int32_t masks[] = {3, 1, 2, 4, 8, 3, 12, 15, 3};  // for -1 to 7
    ConversionOptions options;
    for (int32_t i = -1; i <= 7; i++) {
        options.channeloptions = i;
        EXPECT_EQ(masks[i + 1], Filled(options).four_channel_options) << i;
    }
    const struct {
        const char* text;
        int32_t frames;
        int64_t limit;
    } rows[] = {{"start", 1, 0}, {"START", 0, 0}, {"end", 0, -1},    {"END", 1, -1},
                {"End", 1, 0},   {"12.9", 1, 12}, {"-12.9", 0, -12}, {"1e3", 0, 1000},
                {"1e3", 1, 1},   {"1e99", 0, 0},  {"nan", 0, 0},     {"", 1, 0}};
    for (const auto& row : rows) {
        options.frameortime = row.frames;
        options.to = row.text;
        EXPECT_EQ(row.limit, Filled(options).to_video_frame) << row.text;
    }
}

TEST(ConversionOptions, SetTheBitsOfTheirFormat)
{
    ConversionOptions options;
    options.inplace = options.add_idx1 = options.qt_dvcp = 0;
    options.add_ptc = 1;
    const auto bits = [&](uint32_t selection) {
        options.selection = selection;
        return Filled(options).conversion_options;
    };
    EXPECT_EQ(0u, bits("ct1_"_4cc));
    EXPECT_EQ(0x800u, bits("cqt_"_4cc)) << "the first QuickTime codec sets it";
    EXPECT_EQ(0xA00u, bits("cq64"_4cc));
    EXPECT_EQ(0xC00u, bits("cqa_"_4cc));
    EXPECT_EQ(0xE00u, bits("cqa6"_4cc));
    EXPECT_EQ(0x140000u, bits("comf"_4cc));
    options.omfspec = 1;
    options.omfaudi = 2;
    EXPECT_EQ(0x200000u, bits("comf"_4cc));
    options = ConversionOptions();
    options.wr486 = options.Bafoch = 1;
    EXPECT_EQ(0x1000000u | 0x800000 | 0x800 | 0x100 | 0x2 | 0x1, bits("crdv"_4cc));
}

TEST(ConversionOptions, ChooseQuickTimeCodecsWithTheirFormats)
{
    ConversionOptions options = For("cqt_"_4cc);
    const auto with = [&](int32_t row, uint32_t operation) {
        options.qcodec = row;
        options.opselection = operation;
        return Filled(options);
    };
    EXPECT_EQ("dvc "_4cc, with(0, kOperationConvert).codec);
    EXPECT_EQ("dvpp"_4cc, with(1, kOperationConvert).codec);
    EXPECT_EQ(0u, with(1, kOperationConvert).conversion_options & kOptionDVCP);
    EXPECT_EQ("AVdv"_4cc, with(2, kOperationConvert).codec);
    options.qt_dvcp = 0;
    EXPECT_EQ(uint32_t{kOptionSoftDV | kOptionDVCP},
              with(3, kOperationConvert).conversion_options & 0x400800);
    EXPECT_EQ("dvc "_4cc, with(9, kOperationConvert).codec);

    // A file conversion: animation in the PAL size, raw pictures in the NTSC size.
    const struct {
        int32_t row;
        uint32_t operation, codec;
        int32_t height;
    } rows[] = {{4, kOperationConvert, "rle "_4cc, 576},
                {4, kOperationToNTSC, "rle "_4cc, 480},
                {5, kOperationConvert, "raw "_4cc, 480},
                {6, kOperationToPAL, "raw "_4cc, 576},
                {7, kOperationToNTSC, "2vuy"_4cc, 480}};
    for (const auto& row : rows) {
        const ConversionSettings settings = with(row.row, row.operation);
        EXPECT_EQ(row.codec, settings.codec);
        EXPECT_EQ(720, settings.destination_format.Width());
        EXPECT_EQ(row.height, settings.destination_format.Height());
        EXPECT_EQ(row.height == 576 ? 25.0f : 29.97f, settings.destination_format.FrameRate());
    }
    EXPECT_EQ(0u, with(4, kOperationToPAL).destination_format.encoded_video.ilace);
    EXPECT_EQ(1u, with(7, kOperationToPAL).destination_format.raw_video.ilace);
    EXPECT_EQ(uint32_t{kYUVSigned}, with(7, kOperationToPAL).destination_format.Space());
}

TEST(ConversionOptions, ChooseAVICodecsByRow)
{
    ConversionOptions options = For("ct2_"_4cc, kOperationToPAL);
    options.codec = 6;
    EXPECT_EQ(FourCC("CDVC"), Filled(options).codec);
    EXPECT_EQ(uint32_t{kUnknownFormat}, Filled(options).destination_format.kind);
    options.codec = 11;
    EXPECT_EQ(FourCC("YUY2"), Filled(options).codec);
    EXPECT_EQ(576, Filled(options).destination_format.Height());
    EXPECT_EQ(uint32_t{kRawVideo}, Filled(options).destination_format.kind);
    options.codec = 14;
    options.opselection = kOperationConvert;
    EXPECT_EQ(FourCC("HFYU"), Filled(options).codec);
    EXPECT_EQ(480, Filled(options).destination_format.Height());
    EXPECT_EQ(uint32_t{kEncodingHuffYUV},
              Filled(options).destination_format.encoded_video.encoding);
    for (const int32_t row : {-1, 15}) {
        options.codec = row;
        EXPECT_EQ(0u, Filled(options).codec);
    }
    options = For("cmat"_4cc);
    EXPECT_EQ(FourCC("dvsd"), Filled(options).codec);
    options.mcodec = 5;
    EXPECT_EQ(FourCC("dv25"), Filled(options).codec);
}

TEST(ConversionOptions, DeinterlaceFirstOnlyWithPulldown)
{
    ConversionOptions options = For("crdv"_4cc, kOperationToPAL);
    EXPECT_EQ(0, Filled(options).deinterlace_source_first);
    options.blendmode = 3;
    EXPECT_EQ(1, Filled(options).deinterlace_source_first);
    options.opselection = kOperationConvert;
    EXPECT_EQ(0, Filled(options).deinterlace_source_first);
}

TEST(ConversionOptions, FindCodecsByTheirLongNames)
{
    DVCodecLists codecs;
    codecs.encoders.resize(2);
    codecs.encoders[1].long_name = "DV Video Encoder (DirectX)";
    const ConversionSettings settings = Filled(ConversionOptions(), codecs);
    EXPECT_EQ(&codecs.encoders[1], settings.dv_encoder);
    EXPECT_EQ(nullptr, settings.dv_decoder);
    EXPECT_EQ(nullptr, settings.dvcpro_encoder);
}

}  // namespace
}  // namespace kelvane
