#include "codecs/interface/codec_registry.h"

#include <gtest/gtest.h>

#include "base/four_cc.h"
#include "codecs/built_in_codecs.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

CodecRegistry BuiltIn(bool huffYUV)
{
    CodecRegistry registry;
    RegisterBuiltInCodecs(registry, [&](uint32_t handler) {
        EXPECT_EQ("HFYU"_4cc, handler);
        return huffYUV;
    });
    return registry;
}

TEST(CodecRegistry, ListsTheBuiltInCodecsInTheirOrder)
{
    const CodecRegistry registry = BuiltIn(true);
    std::string list;
    for (const CodecDescriptor* codec : registry.Descriptors())
        list += std::string(codec->short_name) + ' ' + FourCCText(codec->code) +
                std::to_string(codec->direction) + '\n';
    EXPECT_EQ(
        "RGB Codec raw 0\nYUV Encoder yuv 0\nYUV Decoder yuv 0\nQT RLE Encoder rlee1\n"
        "QT RLE Decoder rle 2\nHuffYUV Encoder HFYU1\nHuffYUV Decoder HFYU2\n",
        list);
    CodecList all;
    const FormatList none;
    registry.EnumerateCodecs(all, &none, nullptr);
    EXPECT_TRUE(all.empty()) << "an empty list fits nothing";
    registry.EnumerateCodecs(all, nullptr, nullptr);
    EXPECT_EQ(7u, all.size());
}

TEST(CodecRegistry, HidesHuffYUVWhereNoCodecOfThatHandlerIsInstalled)
{
    const MediaFormat raw = Raw(kBGR24, 16, 4), huffYUV = Encoded(kEncodingHuffYUV, kBGR24, 16, 4);
    EXPECT_EQ(5u, BuiltIn(false).Descriptors().size());
    EXPECT_FALSE(BuiltIn(false).FindCodec(raw, huffYUV));
    EXPECT_TRUE(BuiltIn(true).FindCodec(raw, huffYUV));
}

TEST(CodecRegistry, FindsTheFirstCodecThatAcceptsThePair)
{
    const CodecRegistry registry = BuiltIn(true);
    const auto space = [](const std::unique_ptr<Codec>& codec) {
        return codec ? codec->OutputFormat().Space() : 0;
    };
    const MediaFormat yuv = Raw(kYUY2, 16, 4), other = Raw(kRGB24, 16, 4);
    const MediaFormat wide = Raw(kBGRX32, 16, 4), narrow = Raw(kBGR24, 16, 4);
    EXPECT_EQ(kBGR24, space(registry.FindCodecEither(yuv, narrow, wide)));
    EXPECT_EQ(kBGRX32, space(registry.FindCodecEither(yuv, other, wide)));
    EXPECT_EQ(kYUVSigned, space(registry.FindCodec(wide, Raw(kYUVSigned, 16, 4))));
    EXPECT_EQ(nullptr, registry.FindCodec(yuv, other));
    EXPECT_EQ(nullptr, registry.FindCodec(narrow, Encoded(kEncodingQTRLE, kBGR24, 16, 5)))
        << "frames of another size than the pictures";
}

}  // namespace
}  // namespace kelvane
