#include "format/bitmap_header.h"

namespace kelvane {

BitmapHeader LoadBitmapHeader(std::span<const uint8_t> body)
{
    const auto get = [body](const HeaderField& field) {
        return static_cast<uint32_t>(GetField(body, field, ByteOrder::kLittle));
    };
    return {.size = get(kBitmapInfo["dwSize"]),
            .width = static_cast<int32_t>(get(kBitmapInfo["biWidth"])),
            .height = static_cast<int32_t>(get(kBitmapInfo["biHeight"])),
            .planes = static_cast<uint16_t>(get(kBitmapInfo["biPlanes"])),
            .bit_count = static_cast<uint16_t>(get(kBitmapInfo["biBitCount"])),
            .compression = get(kBitmapInfo["biCompression"]),
            .size_image = get(kBitmapInfo["biSizeImage"]),
            .x_pels_per_meter = static_cast<int32_t>(get(kBitmapInfo["biXPelsPerMeter"])),
            .y_pels_per_meter = static_cast<int32_t>(get(kBitmapInfo["biYPelsPerMeter"])),
            .clr_used = get(kBitmapInfo["num_colours"]),
            .clr_important = get(kBitmapInfo["imp_colours"])};
}

void StoreBitmapHeader(const BitmapHeader& header, std::span<uint8_t> body)
{
    const auto set = [body](const HeaderField& field, auto value) {
        // The body has room, and each value the width of its field.
        static_cast<void>(SetField(body, field, static_cast<uint32_t>(value), ByteOrder::kLittle));
    };
    set(kBitmapInfo["dwSize"], header.size);
    set(kBitmapInfo["biWidth"], header.width);
    set(kBitmapInfo["biHeight"], header.height);
    set(kBitmapInfo["biPlanes"], header.planes);
    set(kBitmapInfo["biBitCount"], header.bit_count);
    set(kBitmapInfo["biCompression"], header.compression);
    set(kBitmapInfo["biSizeImage"], header.size_image);
    set(kBitmapInfo["biXPelsPerMeter"], header.x_pels_per_meter);
    set(kBitmapInfo["biYPelsPerMeter"], header.y_pels_per_meter);
    set(kBitmapInfo["num_colours"], header.clr_used);
    set(kBitmapInfo["imp_colours"], header.clr_important);
}

}  // namespace kelvane
