#include "format/media_format.h"

#include <gtest/gtest.h>

#include <string>

#include "base/four_cc.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

std::string Printed(const MediaFormat& format, int indent = 0)
{
    testing::internal::CaptureStdout();
    PrintFormat(format, nullptr, indent);
    return testing::internal::GetCapturedStdout();
}

const MediaFormat kPCM(RawAudioFormat{kSamplePCM, 2, 16, 48000});
const MediaFormat kDV = Encoded(kEncodingDV, kBGR24, 10, 4);
const MediaFormat kHuffYUV = Encoded(kEncodingHuffYUV, kBGR24, 10, 4);

TEST(MediaFormat, PrintsOneLineForEachView)
{
    // Encoding names end at 7, names of the output format at 5.
    const EncodedAudioFormat ima = {{kSampleADPCM, 1, 4, 8000}, kSampleIMA4, 1.5f};
    MediaFormat invalid;
    invalid.kind = 9;
    EXPECT_EQ(
        "MediaFormat(AV_UNKNOWN_FORMAT)\n"
        "   MediaFormat(AV_RAW_VIDEO_FORMAT) : cspace=0x2008  width=720  height=576  "
        "frate=25.00  ilace=1\n"
        "MediaFormat(AV_ENCODED_VIDEO_FORMAT) : encoding=DV  codec=0x0 bitrate=28800000.00  "
        "framesize=120000  OUTPUT: cspace=0x3  w=720  h=480  frate=29.97  ilace=1\n"
        "MediaFormat(AV_RAW_AUDIO_FORMAT) : format=PCM  ch=2  bitspersample=16  srate=48000\n"
        "MediaFormat(AV_ENCODED_AUDIO_FORMAT) : encoding=IMA4  bitrate=1.50  OUTPUT: "
        "format=???  ch=1  bitspersample=4  srate=8000\n"
        "MediaFormat(INVALID)\n",
        Printed(MediaFormat()) + Printed(Raw(kBGRA32, 720, 576), 3) + Printed(DVFormat(false)) +
            Printed(kPCM) + Printed(MediaFormat(ima)) + Printed(invalid));
    EXPECT_NE(std::string::npos, Printed(kHuffYUV).find("encoding=???"));
    // A code as the number that it is in its file: little-endian, big-endian in QuickTime.
    MediaFormat coded = kHuffYUV, animation = Encoded(kEncodingQTRLE, kBGR24, 10, 4);
    coded.encoded_video.codec = "HFYU"_4cc;
    animation.encoded_video.codec = "rle "_4cc;
    EXPECT_NE(std::string::npos, Printed(coded).find("codec=0x55594648 "));
    EXPECT_NE(std::string::npos, Printed(animation).find("codec=0x726C6520 "));
}

TEST(MediaFormat, CountsBytesByColourSpaceWithItsTwoOddRows)
{
    const std::pair<uint32_t, uint32_t> rows[] = {
        {kBGR24, 3}, {kRGB24, 3},     {kBGRX32, 4}, {kBGRA32, 4}, {kYUY2, 4}, {kUYVY, 2},
        {kVYU24, 3}, {kYUVSigned, 4}, {0x4003, 3},  {0x4021, 2},  {99, 4}};
    for (const auto& [space, bytes] : rows)
        EXPECT_EQ(10 * 4 * bytes, BytesOfPicture(Raw(space, 10, 4))) << space;
    EXPECT_EQ(0u, BytesOfPicture(kPCM));
}

TEST(MediaFormat, ComparesKindsWithoutSizes)
{
    EXPECT_TRUE(SameKind(Raw(8, 720, 576), Raw(8, -1, -1)));
    EXPECT_FALSE(SameKind(Raw(8, 720, 576), Raw(3, 720, 576)));
    EXPECT_TRUE(SameKind(kDV, Encoded(kEncodingDV, kBGRX32, 10, 4)));
    EXPECT_FALSE(SameKind(kDV, kHuffYUV));
    EXPECT_FALSE(SameKind(MediaFormat(), MediaFormat()));
    EXPECT_TRUE(SameSize(Raw(8, 10, 4), kDV));
    EXPECT_FALSE(SameSize(MediaFormat(), MediaFormat()));
}

TEST(MediaFormat, FillsBitmapHeaders)
{
    MediaFormat named = kDV;
    named.encoded_video.codec = "CDVC"_4cc;
    const struct {
        MediaFormat format;
        uint32_t compression;
        uint16_t bits;
        uint32_t size_image;
    } rows[] = {
        {Raw(kYUY2, 720, 576), "YUY2"_4cc, 16, 720 * 576 * 2},
        // Deliberate: 32 bits for this 24-bit layout.
        {Raw(kRGB24, 720, 576), 0, 32, 720 * 576 * 4},
        {DVFormat(true), "dvsd"_4cc, 24, 144000},
        {named, "CDVC"_4cc, 24, 120},
        {Encoded(77, kBGR24, 10, 4), 0, 24, 120},
        {kHuffYUV, "HFYU"_4cc, 24, 120},
        {Encoded(kEncodingHuffYUV, kBGRX32, 10, 4), "HFYU"_4cc, 32, 120},
        {Encoded(kEncodingHuffYUV, kBGRA32, 10, 4), "HFYU"_4cc, 32, 120},
        {Encoded(kEncodingHuffYUV, kYUVSigned, 10, 4), "HFYU"_4cc, 16, 120},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Printed(row.format));
        BitmapHeader header;
        (row.format.kind == kRawVideo ? ToBitmapHeaderRaw : ToBitmapHeaderEncoded)(row.format,
                                                                                   header);
        EXPECT_EQ(40u, header.size);
        EXPECT_EQ(row.compression, header.compression);
        EXPECT_EQ(row.bits, header.bit_count);
        EXPECT_EQ(row.size_image, header.size_image);
    }
}

TEST(BitmapHeader, StandsInFilesLowByteFirst)
{
    const BitmapHeader header = {44, 720, -576, 1, 24, "HFYU"_4cc, 0x01020304, 5, 6, 7, 8};
    Bytes body(44, 0xEE);
    StoreBitmapHeader(header, body);
    EXPECT_EQ(Bytes({44, 0,   0,   0,   0xD0, 2, 0, 0, 0xC0, 0xFD, 0xFF, 0xFF, 1,    0,   24,
                     0,  'H', 'F', 'Y', 'U',  4, 3, 2, 1,    5,    0,    0,    0,    6,   0,
                     0,  0,   7,   0,   0,    0, 8, 0, 0,    0,    0xEE, 0xEE, 0xEE, 0xEE}),
              body);
    EXPECT_EQ(-576, LoadBitmapHeader(body).height);
    EXPECT_EQ(header.size_image, LoadBitmapHeader(body).size_image);
    EXPECT_EQ(8u, LoadBitmapHeader(body).clr_important);
    const BitmapHeader cut = LoadBitmapHeader(std::span(body).first(14));
    EXPECT_EQ(720, cut.width);
    EXPECT_EQ(0, cut.bit_count);
}

TEST(MediaFormat, MapsSampleFormatsToTagsAndBack)
{
    for (const uint16_t tag : {1, 2, 3, 6, 7})
        EXPECT_EQ(tag, TagOfSampleFormat(SampleFormatOfTag(tag)));
    EXPECT_EQ(1, TagOfSampleFormat(kSamplePCMUnsigned));
    EXPECT_EQ(0, TagOfSampleFormat(kSampleIMA4));
    EXPECT_EQ(0u, SampleFormatOfTag(0x11));
}

}  // namespace
}  // namespace kelvane
