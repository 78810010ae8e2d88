// The built-in codecs against libavcodec's, both ways, bit for bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/status.h"
#include "codecs/huffyuv_decoder.h"
#include "codecs/huffyuv_encoder.h"
#include "codecs/qtrle_decoder.h"
#include "codecs/qtrle_encoder.h"
#include "support/drawn_picture.h"
#include "support/libav_peer.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

constexpr int kNoise = 6;
constexpr int kWild = 200;  // noise that needs the longest codes

size_t PixelBytes(uint32_t space)
{
    return space == kBGR24 ? 3 : space == kYUY2 || space == kUYVY ? 2 : 4;
}

Bytes UpsideDown(const Bytes& picture, size_t height)
{
    const auto row = static_cast<ptrdiff_t>(picture.size() / height);
    Bytes turned;
    for (auto at = picture.end(); at != picture.begin(); at -= row)
        turned.insert(turned.end(), at - row, at);
    return turned;
}

// As HuffYUV takes and gives pictures: RGB bottom row first.
Bytes InStreamOrder(const Bytes& picture, uint32_t space, size_t height)
{
    return PixelBytes(space) == 2 ? picture : UpsideDown(picture, height);
}

Bytes Convert(Codec& codec, const Bytes& input, Bytes output)
{
    uint32_t inputSize = static_cast<uint32_t>(input.size());
    uint32_t outputSize = static_cast<uint32_t>(output.size());
    EXPECT_EQ(kOK, codec.Convert(input.data(), inputSize, output.data(), outputSize, 0));
    output.resize(outputSize);
    return output;
}

struct Source {
    uint32_t space;
    const char* method;
    int height;
    const char* flags;
};

TEST(HuffYUVInterop, DecodesLibavcodecsFramesToTheSamePixels)
{
    std::vector<Source> sources;
    for (const int height : {480, 576, 288, 100}) {
        for (const char* flags : {"0", "+ildct"}) {
            for (const char* method : {"left", "plane", "median"})
                sources.push_back({kYUY2, method, height, flags});
            for (const char* method : {"left", "plane"}) {
                sources.push_back({kBGR24, method, height, flags});
                sources.push_back({kBGRA32, method, height, flags});
            }
        }
    }
    for (const Source& s : sources) {
        SCOPED_TRACE(testing::Message()
                     << s.space << ' ' << s.method << ' ' << s.height << ' ' << s.flags);
        constexpr int kWidth = 176;
        PeerEncoder encoder("huffyuv", s.space, kWidth, s.height,
                            {{"pred", s.method}, {"flags", s.flags}});
        const PeerStream stream = encoder.Stream();
        MediaFormat encoded = Encoded(kEncodingHuffYUV, s.space, kWidth, s.height);
        encoded.encoded_video.private_data = stream.extension.data();
        encoded.encoded_video.private_size = static_cast<uint32_t>(stream.extension.size());
        HuffYUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(encoded, Raw(s.space, kWidth, s.height)));
        for (const int noise : {0, kNoise, kWild}) {
            const auto height = static_cast<size_t>(s.height);
            const Bytes picture = DrawPicture(kWidth, height, PixelBytes(s.space), noise);
            encoder.SetPicture(picture);
            const auto frame = encoder.Encode();
            Bytes decoded =
                Convert(decoder, Bytes(frame.begin(), frame.end()), Bytes(4 * kWidth * height));
            decoded.resize(picture.size());
            EXPECT_EQ(InStreamOrder(picture, s.space, height), decoded);
        }
    }
}

struct Target {
    uint32_t from;
    int width, height;
};

TEST(HuffYUVInterop, WritesFramesThatLibavcodecDecodesToTheOriginalPixels)
{
    for (const uint32_t from : {kYUY2, kUYVY, kBGR24, kBGRX32, kBGRA32}) {
        for (const int height : {576, 480, 288, 289}) {
            SCOPED_TRACE(testing::Message() << from << ", " << height << " lines");
            constexpr int kWidth = 720;
            HuffYUVEncoder encoder;
            const MediaFormat encoded = Encoded(kEncodingHuffYUV, from, kWidth, height);
            ASSERT_EQ(kOK, encoder.SetFormats(Raw(from, kWidth, height), encoded));
            const auto lines = static_cast<size_t>(height);
            const Bytes picture = DrawPicture(kWidth, lines, PixelBytes(from), kNoise);
            const Bytes frame =
                Convert(encoder, InStreamOrder(picture, from, lines), Bytes(12 * kWidth * lines));

            BitmapHeader header;
            ToHuffYUVHeader(encoder.OutputFormat(), header);
            const auto& view = encoder.OutputFormat().encoded_video;
            PeerDecoder peer({"huffyuv", kWidth, height, header.bit_count,
                              Bytes(view.private_data, view.private_data + view.private_size)});
            ASSERT_TRUE(peer.Decode(frame));
            Bytes expected = picture;
            if (from == kUYVY)
                for (size_t i = 0; i < expected.size(); i += 2)
                    std::swap(expected[i], expected[i + 1]);
            const uint32_t to = from == kUYVY ? kYUY2 : from == kBGRX32 ? kBGRA32 : from;
            EXPECT_EQ(expected, peer.Picture(to));
        }
    }
}

// A stream without tables in the header, as told by the low bits of its bit count.
TEST(HuffYUVInterop, AgreesOnTheClassicTables)
{
    struct {
        uint16_t bit_count;
        uint32_t space;
    } const rows[] = {{17, kYUY2}, {19, kYUY2}, {20, kYUY2}, {25, kBGR24}, {27, kBGR24}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bit_count);
        BitmapHeader header;
        header.width = 64;
        header.height = 300;
        header.bit_count = row.bit_count;
        HuffYUVFormat format;
        ASSERT_EQ(kOK, ReadHuffYUVFormat(header, {}, format));
        HuffYUVFrameEncoder encoder;
        encoder.Prepare(format);
        const Bytes picture = DrawPicture(64, 300, format.PixelBytes(), kNoise);
        Bytes frame(12 * 64 * 300);
        size_t size = 0;
        ASSERT_EQ(kOK, encoder.Encode(picture.data(), frame, size));
        frame.resize(size);
        PeerDecoder peer({"huffyuv", 64, 300, row.bit_count, {}});
        ASSERT_TRUE(peer.Decode(frame));
        EXPECT_EQ(InStreamOrder(picture, row.space, 300), peer.Picture(row.space));

        // The way such a stream reaches the decoder from a file.
        const Bytes data = HuffYUVPrivateData(header, {});
        MediaFormat encoded = Encoded(kEncodingHuffYUV, row.space, 64, 300);
        encoded.encoded_video.private_data = data.data();
        encoded.encoded_video.private_size = static_cast<uint32_t>(data.size());
        HuffYUVDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(encoded, Raw(row.space, 64, 300)));
        Bytes decoded = Convert(decoder, frame, Bytes(4 * 64 * 300));
        decoded.resize(picture.size());
        EXPECT_EQ(picture, decoded);
    }
}

// The bar stands where it was or has moved: difference frames with skips, runs and literals.
Bytes MovedBar(const Bytes& picture, size_t rowBytes, size_t pixelBytes, size_t at)
{
    Bytes moved = picture;
    for (size_t row = 20; row < 40; row++)
        std::fill_n(moved.begin() + static_cast<ptrdiff_t>(row * rowBytes + at * pixelBytes),
                    30 * pixelBytes, uint8_t{200});
    return moved;
}

TEST(QTRLEInterop, DecodesLibavcodecsFramesToTheSamePixels)
{
    for (const uint32_t space : {kBGR24, kBGRA32}) {
        constexpr int kWidth = 720, kHeight = 96;
        const size_t pixel = PixelBytes(space);
        PeerEncoder encoder("qtrle", space, kWidth, kHeight, {{"g", "100"}});
        QTRLEDecoder decoder;
        ASSERT_EQ(kOK, decoder.SetFormats(Encoded(kEncodingQTRLE, space, kWidth, kHeight),
                                          Raw(space, kWidth, kHeight)));
        const Bytes still = DrawPicture(kWidth, kHeight, pixel, 0);
        Bytes decoded(still.size());
        for (size_t frame = 0; frame < 8; frame++) {
            Bytes picture = MovedBar(still, kWidth * pixel, pixel, 20 * frame);
            encoder.SetPicture(picture);
            const auto bytes = encoder.Encode();
            EXPECT_TRUE(frame == 0 || bytes.size() < picture.size() / 4) << "difference frames";
            decoded = Convert(decoder, Bytes(bytes.begin(), bytes.end()), decoded);
            // The alpha is not kept.
            for (size_t i = 3; pixel == 4 && i < picture.size(); i += 4)
                picture[i] = 255;
            ASSERT_EQ(picture, decoded) << space << ", frame " << frame;
        }
    }
}

TEST(QTRLEInterop, WritesFramesThatLibavcodecDecodesToTheOriginalPixels)
{
    for (const uint32_t space : {kBGR24, kBGRA32}) {
        for (const int width : {720, 127, 128, 254, 1}) {
            QTRLEEncoder encoder;
            ASSERT_EQ(kOK, encoder.SetFormats(Raw(space, width, 60),
                                              Encoded(kEncodingQTRLE, space, width, 60)));
            const Bytes picture =
                DrawPicture(static_cast<size_t>(width), 60, PixelBytes(space), kNoise);
            const Bytes frame = Convert(encoder, picture, Bytes(2 * picture.size() + 1000));
            PeerDecoder peer({"qtrle", width, 60, space == kBGR24 ? 24 : 32, {}});
            ASSERT_TRUE(peer.Decode(frame));
            EXPECT_EQ(picture, peer.Picture(space)) << space << ", width " << width;
        }
    }
}

}  // namespace
}  // namespace kelvane
