// The built-in codecs against libavcodec's, both ways, bit for bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/status.h"
#include "codecs/animation/qtrle_decoder.h"
#include "codecs/animation/qtrle_encoder.h"
#include "codecs/huffyuv/huffyuv_decoder.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
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

// As HuffYUV takes and gives pictures: RGB bottom row first.
Bytes InStreamOrder(const Bytes& picture, uint32_t space, int height)
{
    if (PixelBytes(space) == 2) return picture;
    const auto row = static_cast<ptrdiff_t>(picture.size()) / height;
    Bytes turned;
    for (auto at = picture.end(); at != picture.begin(); at -= row)
        turned.insert(turned.end(), at - row, at);
    return turned;
}

Bytes Drawn(int width, int height, uint32_t space, int noise = kNoise)
{
    return DrawPicture(static_cast<size_t>(width), static_cast<size_t>(height), PixelBytes(space),
                       noise);
}

Bytes Convert(Codec& codec, std::span<const uint8_t> input, Bytes output)
{
    const std::optional<size_t> size = codec.Convert(input, output);
    EXPECT_TRUE(size);
    output.resize(size.value_or(0));
    return output;
}

TEST(HuffYUVInterop, DecodesLibavcodecsFramesToTheSamePixels)
{
    const std::pair<const char*, uint32_t> streams[] = {
        {"left", kYUY2},   {"plane", kYUY2},  {"median", kYUY2}, {"left", kBGR24},
        {"plane", kBGR24}, {"left", kBGRA32}, {"plane", kBGRA32}};
    for (const auto& [method, space] : streams)
        for (const int height : {480, 576, 288, 100})
            for (const char* flags : {"0", "+ildct"}) {
                SCOPED_TRACE(testing::Message()
                             << space << ' ' << method << ' ' << height << ' ' << flags);
                PeerEncoder encoder("huffyuv", space, 176, height,
                                    {{"pred", method}, {"flags", flags}});
                const Bytes extension = encoder.Stream().extension;
                MediaFormat encoded = Encoded(kEncodingHuffYUV, space, 176, height);
                encoded.encoded_video.private_data = extension.data();
                encoded.encoded_video.private_size = static_cast<uint32_t>(extension.size());
                HuffYUVDecoder decoder;
                ASSERT_EQ(kOK, decoder.SetFormats(encoded, Raw(space, 176, height)));
                for (const int noise : {0, kNoise, kWild}) {
                    const Bytes picture = Drawn(176, height, space, noise);
                    encoder.SetPicture(picture);
                    Bytes decoded = Convert(decoder, encoder.Encode(), Bytes(2 * picture.size()));
                    decoded.resize(picture.size());
                    EXPECT_EQ(InStreamOrder(picture, space, height), decoded);
                }
            }
}

TEST(HuffYUVInterop, WritesFramesThatLibavcodecDecodesToTheOriginalPixels)
{
    for (const uint32_t from : {kYUY2, kUYVY, kBGR24, kBGRX32, kBGRA32}) {
        for (const int height : {576, 480, 288, 289}) {
            SCOPED_TRACE(testing::Message() << from << ", " << height << " lines");
            constexpr int kWidth = 720;
            HuffYUVEncoder encoder;
            ASSERT_EQ(kOK, encoder.SetFormats(Raw(from, kWidth, height),
                                              Encoded(kEncodingHuffYUV, from, kWidth, height)));
            Bytes picture = Drawn(kWidth, height, from);
            const Bytes frame =
                Convert(encoder, InStreamOrder(picture, from, height), Bytes(5 * picture.size()));

            BitmapHeader header;
            ToHuffYUVHeader(encoder.OutputFormat(), header);
            const auto& view = encoder.OutputFormat().encoded_video;
            PeerDecoder peer({"huffyuv", kWidth, height, header.bit_count,
                              Bytes(view.private_data, view.private_data + view.private_size)});
            ASSERT_TRUE(peer.Decode(frame));
            if (from == kUYVY)
                for (size_t i = 0; i < picture.size(); i += 2)
                    std::swap(picture[i], picture[i + 1]);
            const uint32_t to = from == kUYVY ? kYUY2 : from == kBGRX32 ? kBGRA32 : from;
            EXPECT_EQ(picture, peer.Picture(to));
        }
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
        const Bytes still = Drawn(kWidth, kHeight, space, 0);
        Bytes decoded(still.size());
        for (size_t frame = 0; frame < 8; frame++) {
            Bytes picture = MovedBar(still, kWidth * pixel, pixel, 20 * frame);
            encoder.SetPicture(picture);
            const auto bytes = encoder.Encode();
            EXPECT_TRUE(frame == 0 || bytes.size() < picture.size() / 4) << "difference frames";
            decoded = Convert(decoder, bytes, decoded);
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
            const Bytes picture = Drawn(width, 60, space);
            const Bytes frame = Convert(encoder, picture, Bytes(2 * picture.size() + 1000));
            PeerDecoder peer({"qtrle", width, 60, space == kBGR24 ? 24 : 32, {}});
            ASSERT_TRUE(peer.Decode(frame));
            EXPECT_EQ(picture, peer.Picture(space)) << space << ", width " << width;
        }
    }
}

}  // namespace
}  // namespace kelvane
