#include <gtest/gtest.h>

#include "base/status.h"
#include "codecs/animation/qtrle_decoder.h"
#include "codecs/animation/qtrle_encoder.h"
#include "codecs/convert.h"

namespace kelvane {
namespace {

constexpr uint8_t kO = 0x77;  // what the picture held

// Decodes over a picture of 4 by 3 pixels, each byte kO. A frame that is decoded counts as a whole
// picture, whatever it draws.
Converted Decoded(const Bytes& frame, uint32_t depth = kBGR24, uint32_t to = kBGR24)
{
    QTRLEDecoder decoder;
    EXPECT_EQ(kOK, decoder.SetFormats(Encoded(kEncodingQTRLE, depth, 4, 3), Raw(to, 4, 3)));
    const Converted c = Convert(decoder, frame, Bytes(4 * 3 * (to == kBGR24 ? 3 : 4), kO));
    EXPECT_EQ(c.output.size(), c.size.value_or(c.output.size()));
    return c;
}

Bytes Row(const Converted& c, size_t row)
{
    const auto first = c.output.begin() + static_cast<ptrdiff_t>(c.output.size() / 3 * row);
    return {first, first + static_cast<ptrdiff_t>(c.output.size() / 3)};
}

// Without the line fields: all lines from line 0.
Bytes Frame(Bytes lines)
{
    lines.insert(lines.begin(), 6, 0);
    return lines;
}

Bytes FrameOfLines(uint8_t start, uint8_t count, Bytes lines)
{
    const Bytes header = {0, 0, 0, 0, 0, 8, 0, start, 0, 0, 0, count, 0, 0};
    lines.insert(lines.begin(), header.begin(), header.end());
    return lines;
}

TEST(QTRLEDecoder, DrawsOnlyWhatAFrameNames)
{
    // Line 0: a literal pixel, a skip of one, a run of two. Line 1: starts at pixel 3.
    const Converted all = Decoded(Frame({1, 1, 10, 11, 12, 0,   2, 254, 20, 21, 22, 255,  //
                                         4, 1, 30, 31, 32, 255, 1, 255}));
    EXPECT_TRUE(all.size);
    EXPECT_EQ((Bytes{12, 11, 10, kO, kO, kO, 22, 21, 20, 22, 21, 20}), Row(all, 0));
    EXPECT_EQ((Bytes{kO, kO, kO, kO, kO, kO, kO, kO, kO, 32, 31, 30}), Row(all, 1));
    EXPECT_EQ(Bytes(12, kO), Row(all, 2));

    const Converted part =
        Decoded(FrameOfLines(1, 1, {1, 252, 1, 2, 3, 255, 1, 252, 9, 9, 9, 255}));
    EXPECT_EQ(Bytes(12, kO), Row(part, 0));
    EXPECT_EQ((Bytes{3, 2, 1, 3, 2, 1, 3, 2, 1, 3, 2, 1}), Row(part, 1));
    EXPECT_EQ(Bytes(12, kO), Row(part, 2)) << "the count of lines is spent";

    const Converted ended = Decoded(Frame({1, 252, 1, 1, 1, 255, 0, 1, 252, 2, 2, 2, 255}));
    EXPECT_TRUE(ended.size);
    EXPECT_EQ(Bytes(12, kO), Row(ended, 1));
}

TEST(QTRLEDecoder, ReadsBothDepthsIntoBothPictures)
{
    const Bytes three = Frame({1, 1, 1, 2, 3, 253, 4, 5, 6, 255, 0});
    const Bytes four = Frame({1, 1, 99, 1, 2, 3, 253, 98, 4, 5, 6, 255, 0});
    const Bytes narrow = {3, 2, 1, 6, 5, 4, 6, 5, 4, 6, 5, 4};
    const Bytes wide = {3, 2, 1, 255, 6, 5, 4, 255, 6, 5, 4, 255, 6, 5, 4, 255};
    EXPECT_EQ(narrow, Row(Decoded(three, kBGR24, kBGR24), 0));
    EXPECT_EQ(wide, Row(Decoded(three, kBGR24, kBGRX32), 0));
    EXPECT_EQ(narrow, Row(Decoded(four, kBGRX32, kBGR24), 0));
    EXPECT_EQ(wide, Row(Decoded(four, kBGRA32, kBGRA32), 0));
    EXPECT_FALSE(Decoded(four, kYUY2).size) << "a depth that is not read";
}

// Encoders write such frames of a picture that stands still (QuickTime file format).
TEST(QTRLEDecoder, AFrameWithoutLinesLeavesThePictureAsItIs)
{
    for (const uint8_t size : {4, 7, 8}) {
        Bytes frame(size);
        frame[3] = size;
        const Converted c = Decoded(frame);
        EXPECT_TRUE(c.size);
        EXPECT_EQ(Bytes(c.output.size(), kO), c.output);
    }
    EXPECT_FALSE(Decoded(Bytes(3)).size);
}

TEST(QTRLEDecoder, StaysInsideThePicture)
{
    // Runs beyond the line are cut, and the next line is where it belongs.
    const Converted beyond =
        Decoded(Frame({3,   5, 1, 1, 1,   2,   2,   2, 3, 3, 3,   4, 4,   4, 5, 5, 5,
                       200, 6, 6, 6, 255, 200, 130, 7, 7, 7, 255, 1, 252, 8, 8, 8, 255}));
    EXPECT_EQ((Bytes{kO, kO, kO, kO, kO, kO, 1, 1, 1, 2, 2, 2}), Row(beyond, 0));
    EXPECT_EQ(Bytes(12, kO), Row(beyond, 1));
    EXPECT_EQ(Bytes(12, 8), Row(beyond, 2));

    const Converted below =
        Decoded(FrameOfLines(2, 200, {1, 252, 1, 1, 1, 255, 1, 252, 2, 2, 2, 255}));
    EXPECT_TRUE(below.size);
    EXPECT_EQ(Bytes(12, 1), Row(below, 2));
    EXPECT_EQ(Bytes(36, kO), Decoded(FrameOfLines(200, 200, {1, 252, 1, 1, 1, 255})).output);
    // A skip backwards out of the line ends the frame.
    const Converted backwards = Decoded(Frame({1, 0, 0, 252, 1, 1, 1, 255}));
    EXPECT_EQ(Bytes(36, kO), backwards.output);
    EXPECT_FALSE(backwards.size);
}

// A damaged frame: only behind a line could it be meant so.
TEST(QTRLEDecoder, RefusesAFrameCutInsideALine)
{
    const Bytes whole = FrameOfLines(0, 3, {1, 2, 1, 2, 3, 4, 5, 6, 255, 1, 252, 7, 8, 9, 255});
    for (size_t size = 0; size <= whole.size(); size++) {
        SCOPED_TRACE(size);
        const Converted cut =
            Decoded(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        const bool empty = size >= 4 && size < 8;
        EXPECT_EQ(empty || size == 14 || size == 23 || size == 29, cut.size.has_value());
        EXPECT_EQ(Bytes(12, kO), Row(cut, 2));
    }
}

TEST(QTRLEEncoder, WritesLiteralRunsOnly)
{
    QTRLEEncoder encoder;
    ASSERT_EQ(kOK,
              encoder.SetFormats(Raw(kBGR24, 720, 1), Encoded(kEncodingQTRLE, kBGR24, 720, 1)));
    Bytes picture(720 * 3);
    for (size_t i = 0; i < picture.size(); i++)
        picture[i] = static_cast<uint8_t>(i * 7);
    Bytes expected = {0, 0, 0x08, 0x86, 0, 8, 0, 0, 0, 0, 0, 1, 0, 0, 1};
    for (size_t x = 0; x < 720; x++) {
        if (x % 127 == 0) expected.push_back(x < 635 ? 127 : 85);
        for (const size_t k : {2, 1, 0})
            expected.push_back(picture[3 * x + k]);
    }
    expected.push_back(255);
    ASSERT_EQ(0x886u, expected.size());

    const Converted frame = Convert(encoder, picture, Bytes(expected.size()));
    EXPECT_EQ(expected, frame.Made());
    EXPECT_FALSE(Convert(encoder, picture, Bytes(expected.size() - 1)).size);

    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGR24, 4, 0), Encoded(kEncodingQTRLE, kBGR24, 4, 0)));
    EXPECT_EQ((Bytes{0, 0, 0, 14, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0}),
              Convert(encoder, picture, Bytes(14)).Made());
}

TEST(QTRLEEncoder, ComesBackFromTheDecoderInAllFormats)
{
    for (const uint32_t from : {kBGR24, kBGRX32})
        for (const uint32_t depth : {kBGR24, kBGRX32})
            for (const int32_t width : {1, 126, 127, 128, 255}) {
                QTRLEEncoder encoder;
                QTRLEDecoder decoder;
                const MediaFormat raw = Raw(from, width, 2);
                const MediaFormat encoded = Encoded(kEncodingQTRLE, depth, width, 2);
                ASSERT_EQ(kOK, encoder.SetFormats(raw, encoded));
                ASSERT_EQ(kOK, decoder.SetFormats(encoded, raw));
                Bytes picture(BytesOfPicture(raw));
                for (size_t i = 0; i < picture.size(); i++)
                    picture[i] = from == kBGRX32 && i % 4 == 3 ? 255 : static_cast<uint8_t>(i * 5);
                const Converted frame = Convert(encoder, picture, Bytes(2 * picture.size() + 100));
                EXPECT_TRUE(frame.size);
                const Converted back = Convert(decoder, frame.Made(), Bytes(picture.size()));
                EXPECT_EQ(picture, back.Made()) << from << ' ' << depth << ' ' << width;
            }
}

TEST(QTRLECodecs, CompareSizesWhenTheOutputIsSet)
{
    QTRLEDecoder decoder;
    EXPECT_EQ(kOK, decoder.SetOutputFormat(Raw(kBGR24, 8, 8)));
    EXPECT_EQ(kOK, decoder.SetInputFormat(Encoded(kEncodingQTRLE, kBGR24, 4, 3)));
    EXPECT_EQ(kError, decoder.SetOutputFormat(Raw(kBGR24, 8, 8)));
    EXPECT_EQ(kOK, decoder.SetOutputFormat(Raw(kBGRX32, 4, 3)));
    EXPECT_EQ(kError, decoder.SetOutputFormat(Raw(kRGB24, 4, 3)));
}

}  // namespace
}  // namespace kelvane
