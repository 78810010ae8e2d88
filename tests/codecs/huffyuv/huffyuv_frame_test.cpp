#include <gtest/gtest.h>

#include "base/status.h"
#include "codecs/huffyuv/huffyuv_format.h"
#include "codecs/huffyuv/huffyuv_frame_decoder.h"
#include "codecs/huffyuv/huffyuv_frame_encoder.h"
#include "codecs/huffyuv/huffyuv_tables.h"

namespace kelvane {
namespace {

constexpr int kClassic = -1;  // no extension: the bit count tells the method

// Frames of a fixed picture, 64 pixels wide, that another coder of the format reads back exactly.
struct Vector {
    int32_t height;
    int kind;
    uint16_t bit_count;
    int method;
    size_t frame_size;
    uint32_t frame_crc;
};
const Vector kVectors[] = {
    {288, 16, 24, kGradient, 40296, 0x5967c962},
    {288, 16, 24, kMedian, 44256, 0x2d247510},
    {288, 24, 24, kGradientDecorrelated, 69720, 0x0afaa725},
    {288, 32, 32, kGradientDecorrelated, 90700, 0xe3f236fd},
    {290, 16, 24, kLeft, 48600, 0xc388b2cb},
    {290, 16, 24, kGradient, 40648, 0x5af70c21},
    {290, 16, 24, kMedian, 54796, 0x7c34e5ca},
    {290, 24, 24, kLeft, 56544, 0xf8212a5d},
    {290, 24, 24, kLeftDecorrelated, 56876, 0xf074d18e},
    {290, 24, 24, kGradientDecorrelated, 70628, 0xda78961e},
    {290, 32, 32, kLeft, 81928, 0x900f2b31},
    {290, 32, 32, kLeftDecorrelated, 83980, 0x1102faa0},
    {290, 32, 32, kGradientDecorrelated, 91084, 0x14bb7e26},
    {290, 16, 17, kClassic, 49004, 0x6447f1b1},
    {290, 16, 19, kClassic, 36896, 0x20987158},
    {290, 16, 20, kClassic, 46500, 0x9ff26276},
    {290, 16, 16, kClassic, 49004, 0x6447f1b1},
    {290, 24, 25, kClassic, 54776, 0x8ddbe4e2},
    {290, 24, 26, kClassic, 47888, 0xfca0c69f},
    {290, 24, 27, kClassic, 51260, 0x754c288e},
    {290, 24, 24, kClassic, 54776, 0x8ddbe4e2},
    {290, 32, 34, kClassic, 68704, 0xf0440b1b},
    {290, 32, 35, kClassic, 66320, 0x657d2219},
};

uint32_t Crc32(const Bytes& bytes)
{
    uint32_t crc = ~0u;
    for (size_t bit = 0; bit < 8 * bytes.size(); bit++) {
        const uint32_t low = (crc ^ bytes[bit / 8] >> bit % 8) & 1;
        crc = crc >> 1 ^ (low ? 0xEDB88320 : 0);
    }
    return ~crc;
}

// A slope with a little noise and now and then any value at all.
Bytes DrawPicture(const HuffYUVFormat& format)
{
    const size_t row = format.width * format.PixelBytes();
    Bytes picture(row * format.height);
    uint32_t s = 12345;
    for (size_t i = 0; i < picture.size(); i++) {
        s = s * 1664525 + 1013904223;
        const size_t slope = 3 * (i % row) + 5 * (i / row) + (s >> 24 & 7);
        picture[i] = static_cast<uint8_t>(s >> 16 & 15 ? slope : s >> 8);
    }
    return picture;
}

HuffYUVFormat FormatOf(int32_t width, int32_t height, uint16_t bitCount, const Bytes& extension)
{
    BitmapHeader header;
    header.width = width;
    header.height = height;
    header.bit_count = bitCount;
    HuffYUVFormat format;
    EXPECT_EQ(kOK, ReadHuffYUVFormat(header, extension, format));
    return format;
}

TEST(HuffYUVFrame, WritesAndReadsThePublishedFrames)
{
    for (const Vector& v : kVectors) {
        SCOPED_TRACE(testing::Message() << v.height << " lines, kind " << v.kind << ", bit count "
                                        << v.bit_count << ", method " << v.method);
        const Bytes extension = v.method == kClassic
                                    ? Bytes()
                                    : MakeHuffYUVExtension(v.kind, static_cast<uint8_t>(v.method));
        const HuffYUVFormat format = FormatOf(64, v.height, v.bit_count, extension);
        ASSERT_EQ(v.kind, format.kind);
        const Bytes picture = DrawPicture(format);
        Bytes frame(12 * 64 * 290), back(picture.size());
        HuffYUVFrameEncoder encoder;
        encoder.Prepare(format);
        ASSERT_EQ(v.frame_size, encoder.Encode(picture.data(), frame));
        frame.resize(v.frame_size);
        EXPECT_EQ(v.frame_crc, Crc32(frame));
        HuffYUVFrameDecoder decoder;
        decoder.Prepare(format);
        EXPECT_EQ(kOK, decoder.Decode(frame, back.data(), format.PixelBytes()));
        EXPECT_EQ(picture, back);
    }
}

TEST(HuffYUVFormat, TakesTheRowStepFromTheHeaderOrTheHeight)
{
    const struct {
        int32_t height;
        uint8_t flags;
        size_t step;
    } rows[] = {{288, 0, 1},    {289, 0, 2},    {576, 0x20, 1}, {100, 0x10, 2},
                {576, 0x2F, 1}, {288, 0x30, 1}, {480, 0x30, 2}};
    for (const auto& row : rows) {
        Bytes extension = MakeHuffYUVExtension(24, kGradientDecorrelated);
        extension[2] = row.flags;
        EXPECT_EQ(row.step, FormatOf(8, row.height, 24, extension).row_step)
            << row.height << ' ' << int{row.flags};
    }
}

}  // namespace
}  // namespace kelvane
