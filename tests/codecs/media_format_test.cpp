#include "codecs/media_format.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "base/four_cc.h"

namespace kelvane {
namespace {

std::string Printed(const MediaFormat& format, int indent = 0)
{
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    PrintFormat(format, out, indent);
    fclose(out);
    const std::string result(text, size);
    free(text);
    return result;
}

MediaFormat Raw(uint32_t cspace, int32_t width, int32_t height)
{
    return MediaFormat(RawVideoFormat{cspace, width, height, 25.0f, 1, 0});
}

MediaFormat Encoded(uint32_t encoding, uint32_t cspace = 0)
{
    EncodedVideoFormat view{};
    view.encoding = encoding;
    view.cspace = cspace;
    view.w = 10;
    view.h = 4;
    return MediaFormat(view);
}

TEST(MediaFormat, PrintsOneLineForEachView)
{
    EXPECT_EQ("MediaFormat(AV_UNKNOWN_FORMAT)\n", Printed(MediaFormat()));
    EXPECT_EQ(
        "   MediaFormat(AV_RAW_VIDEO_FORMAT) : cspace=0x2008  width=720  height=576  "
        "frate=25.00  ilace=1\n",
        Printed(Raw(kBGRA32, 720, 576), 3));
    EXPECT_EQ(
        "MediaFormat(AV_ENCODED_VIDEO_FORMAT) : encoding=DV  codec=0x0 bitrate=28800000.00  "
        "framesize=120000  OUTPUT: cspace=0x3  w=720  h=480  frate=29.97  ilace=1\n",
        Printed(DVFormat(false)));
    EXPECT_NE(std::string::npos, Printed(Encoded(kEncodingHuffYUV)).find("encoding=???"));
    const RawAudioFormat pcm = {kSamplePCM, 2, 16, 48000};
    EXPECT_EQ(
        "MediaFormat(AV_RAW_AUDIO_FORMAT) : format=PCM  ch=2  bitspersample=16  "
        "srate=48000\n",
        Printed(MediaFormat(pcm)));
    // Encoding names end at 7, names of the output format at 5.
    const EncodedAudioFormat ima = {{kSampleADPCM, 1, 4, 8000}, kSampleIMA4, 1.5f};
    EXPECT_EQ(
        "MediaFormat(AV_ENCODED_AUDIO_FORMAT) : encoding=IMA4  bitrate=1.50  OUTPUT: "
        "format=???  ch=1  bitspersample=4  srate=8000\n",
        Printed(MediaFormat(ima)));
    MediaFormat invalid;
    invalid.kind = 9;
    EXPECT_EQ("MediaFormat(INVALID)\n", Printed(invalid));
}

TEST(MediaFormat, CountsBytesByColourSpaceWithItsTwoOddRows)
{
    const struct {
        uint32_t cspace, bytes;
    } rows[] = {{3, 3},     {5, 3},     {6, 4},     {8, 4},     {8200, 4},  {16384, 2},
                {16385, 2}, {16387, 3}, {16388, 2}, {16389, 4}, {16416, 2}, {16417, 2},
                {16419, 3}, {16420, 2}, {16421, 4}, {0, 4},     {99, 4}};
    for (const auto& row : rows)
        EXPECT_EQ(10 * 4 * row.bytes, BytesOfPicture(Raw(row.cspace, 10, 4))) << row.cspace;
    EXPECT_EQ(0u, BytesOfPicture(MediaFormat(RawAudioFormat{kSamplePCM, 2, 16, 48000})));
}

TEST(MediaFormat, ComparesKindsWithoutSizes)
{
    EXPECT_TRUE(SameKind(Raw(8, 720, 576), Raw(8, -1, -1)));
    EXPECT_FALSE(SameKind(Raw(8, 720, 576), Raw(3, 720, 576)));
    EXPECT_TRUE(SameKind(Encoded(1, 3), Encoded(1, 8)));
    EXPECT_FALSE(SameKind(Encoded(1), Encoded(9)));
    EXPECT_FALSE(SameKind(MediaFormat(), MediaFormat()));
    EXPECT_TRUE(SameSize(Raw(8, 10, 4), Encoded(1)));
    EXPECT_FALSE(SameSize(MediaFormat(), MediaFormat()));
}

TEST(MediaFormat, FillsBitmapHeaders)
{
    BitmapHeader header;
    ToBitmapHeaderRaw(Raw(kYUY2, 720, 576), header);
    EXPECT_EQ(40u, header.size);
    EXPECT_EQ(FourCC("YUY2"), header.compression);
    EXPECT_EQ(16, header.bit_count);
    EXPECT_EQ(720u * 576 * 2, header.size_image);
    ToBitmapHeaderRaw(Raw(kRGB24, 720, 576), header);
    EXPECT_EQ(32, header.bit_count) << "deliberate: 32 bits for this 24-bit layout";

    ToBitmapHeaderEncoded(DVFormat(true), header);
    EXPECT_EQ(FourCC("dvsd"), header.compression);
    EXPECT_EQ(24, header.bit_count);
    EXPECT_EQ(144000u, header.size_image);
    const struct {
        uint32_t cspace;
        uint16_t bits;
    } rows[] = {{3, 24}, {8, 32}, {8200, 32}, {16389, 16}};
    for (const auto& row : rows) {
        ToBitmapHeaderEncoded(Encoded(kEncodingHuffYUV, row.cspace), header);
        EXPECT_EQ(row.bits, header.bit_count) << row.cspace;
        EXPECT_EQ(10u * 4 * 3, header.size_image);
    }
    MediaFormat named = Encoded(kEncodingDV);
    named.encoded_video.codec = FourCC("CDVC");
    ToBitmapHeaderEncoded(named, header);
    EXPECT_EQ(FourCC("CDVC"), header.compression);
    ToBitmapHeaderEncoded(Encoded(77), header);
    EXPECT_EQ(0u, header.compression);
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
