#include "codecs/convert_report.h"

#include <gtest/gtest.h>

#include "codecs/huffyuv/huffyuv_encoder.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

// Status, bytes consumed and bytes produced.
using Report = std::tuple<int, size_t, size_t>;

template <class C>
Report ReportOf(C& codec, const Bytes& input, Bytes output)
{
    const ConvertReport report = ConvertAndReport(codec, input, output);
    return {report.status.Code(), report.consumed, report.produced};
}

TEST(ConvertReport, OfRawRGBTellsWhatWasUsedAndNeverSuccess)
{
    const struct {
        uint32_t from, to;
        size_t input, room, consumed, produced;
    } rows[] = {{kBGR24, kBGRX32, 9, 400, 9, 12},
                {kBGR24, kBGRX32, 400, 11, 6, 8},
                {kBGRX32, kRGB24, 15, 400, 12, 9},
                {kRGBX32, kBGRA32, 11, 400, 8, 8},
                {kRGBX32, kRGBX32, 11, 400, 11, 11}};
    for (const auto& row : rows) {
        RawRGBCodec codec;
        ASSERT_EQ(kOK, codec.SetFormats(Raw(row.from, 720, 576), Raw(row.to, 720, 576)));
        EXPECT_EQ(Report(kError, row.consumed, row.produced),
                  ReportOf(codec, Bytes(row.input), Bytes(row.room)))
            << row.from << " to " << row.to;
    }
    RawRGBCodec unset;
    EXPECT_EQ(Report(kError, 0, 0), ReportOf(unset, Bytes(12), Bytes(12)));
}

TEST(ConvertReport, OfYUVTellsTheSizesThatCallersKnow)
{
    const struct {
        uint32_t rgb, yuv;
        size_t rgb_size;  // reported, 8 by 2 pixels
    } rows[] = {{kBGRX32, kYUY2, 64},     {kBGR24, kYUY2, 48},   {kBGRA32, kUYVY, 64},
                {kBGR24, kYUVSigned, 48}, {kBGRX32, kVYU24, 64}, {kBGR24, kVYU24, 64}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.rgb << ' ' << row.yuv);
        const MediaFormat rgb = Raw(row.rgb, 8, 2), yuv = Raw(row.yuv, 8, 2);
        YUVEncoder encoder;
        ASSERT_EQ(kOK, encoder.SetFormats(rgb, yuv));
        EXPECT_EQ(Report(kOK, row.rgb_size, 32), ReportOf(encoder, Bytes(64), Bytes(64)));
        EXPECT_EQ(Report(kOK, 0, 0), ReportOf(encoder, Bytes(64), Bytes(31)));
        if (row.yuv == kVYU24) continue;
        YUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(yuv, rgb));
        EXPECT_EQ(Report(kOK, 32, row.rgb_size), ReportOf(decoder, Bytes(64), Bytes(64)));
        EXPECT_EQ(Report(kOK, 0, 0), ReportOf(decoder, Bytes(31), Bytes(64)));
    }
}

TEST(ConvertReport, OfYUVLeavesTheSizesOfOtherCodes)
{
    YUVEncoder encoder;
    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGRX32, 8, 2), Raw(0x4000, 8, 2)));
    EXPECT_EQ(Report(kOK, 7, 9), ReportOf(encoder, Bytes(7), Bytes(9)));
    YUVDecoder decoder;
    ASSERT_EQ(kOK, decoder.SetFormats(Raw(kVYU24, 8, 2), Raw(kBGR24, 8, 2)));
    EXPECT_EQ(Report(kOK, 7, 9), ReportOf(decoder, Bytes(7), Bytes(9)));
}

TEST(ConvertReport, OfHuffYUVCountsFourBytesAPixelOfAllButThree)
{
    constexpr size_t kPixels = 32 * 12;
    HuffYUVEncoder encoder;
    ASSERT_EQ(kOK,
              encoder.SetFormats(Raw(kYUY2, 32, 12), Encoded(kEncodingHuffYUV, kYUY2, 32, 12)));
    Bytes frame(12 * kPixels);
    frame.resize(encoder.Convert(Bytes(2 * kPixels, 99), frame).value_or(0));
    for (const auto& [space, bytes] : {std::pair(kYUY2, 4u), {kBGR24, 3}, {kBGRX32, 4}}) {
        HuffYUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(encoder.OutputFormat(), Raw(space, 32, 12)));
        EXPECT_EQ(Report(kOK, frame.size(), bytes * kPixels),
                  ReportOf(decoder, frame, Bytes(4 * kPixels)));
        EXPECT_EQ(Report(kError, 7, 0), ReportOf(decoder, Bytes(7), Bytes(4 * kPixels)));
    }
}

}  // namespace
}  // namespace kelvane
