#include <gtest/gtest.h>

#include <initializer_list>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/qtrle_decoder.h"
#include "codecs/qtrle_encoder.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

constexpr uint8_t kOld = 0x77;  // what the picture held

// Decodes over a picture of 4 by 3 pixels, 24 bits, each byte kOld.
struct Decoded {
    explicit Decoded(const Bytes& frame, uint32_t depth = kBGR24, uint32_t to = kBGR24)
        : picture(4 * 3 * (to == kBGR24 ? 3 : 4), kOld)
    {
        QTRLEDecoder decoder;
        EXPECT_EQ(kOK, decoder.SetFormats(Encoded(kEncodingQTRLE, depth, 4, 3), Raw(to, 4, 3)));
        // A buffer of its own size, so that the sanitizer sees every byte read too far.
        const Bytes exact(frame);
        uint32_t size = static_cast<uint32_t>(exact.size());
        produced = static_cast<uint32_t>(picture.size());
        status = decoder.Convert(exact.data(), size, picture.data(), produced, 0);
    }
    Bytes Row(size_t row) const
    {
        const size_t bytes = picture.size() / 3;
        return {picture.begin() + static_cast<ptrdiff_t>(bytes * row),
                picture.begin() + static_cast<ptrdiff_t>(bytes * (row + 1))};
    }
    Bytes picture;
    uint32_t produced;
    int status;
};

// Without the line fields: all lines from line 0.
Bytes Frame(std::initializer_list<uint8_t> lines)
{
    Bytes frame = {0, 0, 0, 0, 0, 0};
    frame.insert(frame.end(), lines);
    return frame;
}

Bytes FrameOfLines(uint8_t start, uint8_t count, std::initializer_list<uint8_t> lines)
{
    Bytes frame = {0, 0, 0, 0, 0, 8, 0, start, 0, 0, 0, count, 0, 0};
    frame.insert(frame.end(), lines);
    return frame;
}

constexpr uint8_t kO = kOld;

TEST(QTRLEDecoder, DrawsOnlyWhatAFrameNames)
{
    // Line 0: a literal pixel, a skip of one, a run of two. Line 1: starts at pixel 3.
    const Decoded all(Frame({1, 1, 10, 11, 12, 0,   2, 254, 20, 21, 22, 255,  //
                             4, 1, 30, 31, 32, 255, 1, 255}));
    EXPECT_EQ(kOK, all.status);
    EXPECT_EQ(36u, all.produced);
    EXPECT_EQ((Bytes{12, 11, 10, kO, kO, kO, 22, 21, 20, 22, 21, 20}), all.Row(0));
    EXPECT_EQ((Bytes{kO, kO, kO, kO, kO, kO, kO, kO, kO, 32, 31, 30}), all.Row(1));
    EXPECT_EQ(Bytes(12, kO), all.Row(2));

    const Decoded part(FrameOfLines(1, 1, {1, 252, 1, 2, 3, 255, 1, 252, 9, 9, 9, 255}));
    EXPECT_EQ(Bytes(12, kO), part.Row(0));
    EXPECT_EQ((Bytes{3, 2, 1, 3, 2, 1, 3, 2, 1, 3, 2, 1}), part.Row(1));
    EXPECT_EQ(Bytes(12, kO), part.Row(2)) << "the count of lines is spent";

    const Decoded ended(Frame({1, 252, 1, 1, 1, 255, 0, 1, 252, 2, 2, 2, 255}));
    EXPECT_EQ(kOK, ended.status);
    EXPECT_EQ(Bytes(12, kO), ended.Row(1));
}

TEST(QTRLEDecoder, ReadsBothDepthsIntoBothPictures)
{
    const Bytes three = Frame({1, 1, 1, 2, 3, 253, 4, 5, 6, 255, 0});
    const Bytes four = Frame({1, 1, 99, 1, 2, 3, 253, 98, 4, 5, 6, 255, 0});
    const Bytes narrow = {3, 2, 1, 6, 5, 4, 6, 5, 4, 6, 5, 4};
    const Bytes wide = {3, 2, 1, 255, 6, 5, 4, 255, 6, 5, 4, 255, 6, 5, 4, 255};
    EXPECT_EQ(narrow, Decoded(three, kBGR24, kBGR24).Row(0));
    EXPECT_EQ(wide, Decoded(three, kBGR24, kBGRX32).Row(0));
    EXPECT_EQ(narrow, Decoded(four, kBGRX32, kBGR24).Row(0));
    EXPECT_EQ(wide, Decoded(four, kBGRA32, kBGRA32).Row(0));
    EXPECT_EQ(kError, Decoded(four, kYUY2).status) << "a depth that is not read";
}

TEST(QTRLEDecoder, StaysInsideThePicture)
{
    // Runs beyond the line are cut, and the next line is where it belongs.
    const Decoded beyond(Frame({3,   5, 1, 1, 1,   2,   2,   2, 3, 3, 3,   4, 4,   4, 5, 5, 5,
                                200, 6, 6, 6, 255, 200, 130, 7, 7, 7, 255, 1, 252, 8, 8, 8, 255}));
    EXPECT_EQ((Bytes{kO, kO, kO, kO, kO, kO, 1, 1, 1, 2, 2, 2}), beyond.Row(0));
    EXPECT_EQ(Bytes(12, kO), beyond.Row(1));
    EXPECT_EQ(Bytes(12, 8), beyond.Row(2));

    const Decoded below(FrameOfLines(2, 200, {1, 252, 1, 1, 1, 255, 1, 252, 2, 2, 2, 255}));
    EXPECT_EQ(kOK, below.status);
    EXPECT_EQ(Bytes(12, 1), below.Row(2));
    EXPECT_EQ(Bytes(36, kO), Decoded(FrameOfLines(200, 200, {1, 252, 1, 1, 1, 255})).picture);
    // A skip backwards out of the line ends the frame.
    EXPECT_EQ(Bytes(36, kO), Decoded(Frame({1, 0, 0, 252, 1, 1, 1, 255})).picture);
}

TEST(QTRLEDecoder, TakesAFrameCutAnywhere)
{
    const Bytes whole = FrameOfLines(0, 3, {1, 2, 1, 2, 3, 4, 5, 6, 255, 1, 252, 7, 8, 9, 255});
    for (size_t size = 0; size <= whole.size(); size++) {
        SCOPED_TRACE(size);
        const Decoded cut(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        EXPECT_EQ(size < 8 ? kError : kOK, cut.status);
        EXPECT_EQ(size < 8 ? 0u : 36u, cut.produced);
        EXPECT_EQ(Bytes(12, kO), cut.Row(2));
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

    Bytes frame(expected.size());
    uint32_t consumed = 720 * 3;
    uint32_t produced = static_cast<uint32_t>(frame.size());
    EXPECT_EQ(kOK, encoder.Convert(picture.data(), consumed, frame.data(), produced, 0));
    EXPECT_EQ(expected.size(), produced);
    EXPECT_EQ(expected, frame);
    produced--;
    EXPECT_EQ(kError, encoder.Convert(picture.data(), consumed, frame.data(), produced, 0));
    EXPECT_EQ(0u, produced);

    ASSERT_EQ(kOK, encoder.SetFormats(Raw(kBGR24, 4, 0), Encoded(kEncodingQTRLE, kBGR24, 4, 0)));
    produced = 14;
    EXPECT_EQ(kOK, encoder.Convert(picture.data(), consumed, frame.data(), produced, 0));
    EXPECT_EQ((Bytes{0, 0, 0, 14, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0}),
              Bytes(frame.begin(), frame.begin() + produced));
}

TEST(QTRLEEncoder, ComesBackFromTheDecoderInAllFormats)
{
    for (const uint32_t from : {kBGR24, kBGRX32}) {
        for (const uint32_t depth : {kBGR24, kBGRX32}) {
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
                uint32_t size = static_cast<uint32_t>(picture.size());
                Bytes frame(2 * picture.size() + 100), back(picture.size());
                uint32_t frameSize = static_cast<uint32_t>(frame.size());
                ASSERT_EQ(kOK, encoder.Convert(picture.data(), size, frame.data(), frameSize, 0));
                ASSERT_EQ(kOK, decoder.Convert(frame.data(), frameSize, back.data(), size, 0));
                EXPECT_EQ(picture, back) << from << ' ' << depth << ' ' << width;
            }
        }
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
