#include "codecs/raw/raw_rgb_codec.h"

#include <algorithm>
#include <array>

#include "base/four_cc.h"
#include "codecs/raw/pixel_order.h"
#include "picture/packing.h"

namespace kelvane {

namespace {

enum Layout : size_t { kBGR, kRGB, kRGBX, kBGRX, kLayouts };

constexpr size_t kLayoutBytes[kLayouts] = {3, 3, 4, 4};

Layout LayoutOf(const MediaFormat& format)
{
    switch (format.Space()) {
        case kBGR24:
            return kBGR;
        case kRGB24:
            return kRGB;
        case kRGBX32:
            return kRGBX;
        default:
            return kBGRX;
    }
}

void AppendOpaque(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    Rgb24ToRgb32(source, destination, pixels, 0xFF);
}

// From row to column; null copies. That RGBX and BGRX turn all four bytes round while BGR makes
// RGBX with 0xFF last is deliberate: files rely on it.
constexpr PixelKernel kKernels[kLayouts][kLayouts] = {
    {nullptr, SwapRedBlue, SwapAppendOpaque, AppendOpaque},
    {SwapRedBlue, nullptr, AppendOpaque, SwapAppendOpaque},
    {SwapDropFourth, DropFourth, nullptr, ReverseBytes},
    {Rgb32ToRgb24, SwapDropFourth, ReverseBytes, nullptr},
};

constexpr size_t kAtOnce = 4;  // pixels

}  // namespace

const CodecDescriptor& RawRGBCodec::Descriptor()
{
    static const FormatList formats = RawPatterns({kBGRX32, kBGRA32, kBGR24, kRGB24, kRGBX32});
    static const CodecDescriptor descriptor = {
        "Raw RGB Video Codec",
        "RGB Codec",
        "This codec can convert between RGB24 and RGB32 color spaces.",
        kConverter,
        "raw "_4cc,
        formats,
        formats,
        MakeCodec<RawRGBCodec>,
    };
    return descriptor;
}

bool RawRGBCodec::TakesInput(const MediaFormat& format) const
{
    return Matches(Descriptor().inputs, format);
}

bool RawRGBCodec::TakesOutput(const MediaFormat& format) const
{
    return Matches(Descriptor().outputs, format);
}

std::optional<size_t> RawRGBCodec::Convert(std::span<const uint8_t> input,
                                           std::span<uint8_t> output)
{
    if (fInput.kind != kRawVideo || fOutput.kind != kRawVideo) return std::nullopt;
    const Layout from = LayoutOf(fInput);
    const Layout to = LayoutOf(fOutput);
    const PixelKernel kernel = kKernels[from][to];
    if (!kernel) {
        const size_t bytes = std::min(input.size(), output.size());
        std::ranges::copy(input.first(bytes), output.begin());
        return bytes;
    }
    const size_t pixels =
        std::min(input.size() / kLayoutBytes[from], output.size() / kLayoutBytes[to]);
    // Kernels pack pixels by fours: the last ones go through memory with room for as many.
    const size_t fours = pixels / kAtOnce * kAtOnce;
    kernel(input.data(), output.data(), fours);
    if (fours < pixels) {
        std::array<uint8_t, kAtOnce * 4> in{}, out{};
        std::ranges::copy(
            input.subspan(fours * kLayoutBytes[from], (pixels - fours) * kLayoutBytes[from]),
            in.begin());
        kernel(in.data(), out.data(), kAtOnce);
        std::copy_n(out.begin(), (pixels - fours) * kLayoutBytes[to],
                    output.begin() + static_cast<ptrdiff_t>(fours * kLayoutBytes[to]));
    }
    return pixels * kLayoutBytes[to];
}

}  // namespace kelvane
