#include "media/samples/extended_float.h"

#include <cmath>
#include <limits>

#include "base/byte_cursor.h"

namespace kelvane {

namespace {

constexpr int kBias = 16383;
constexpr uint16_t kSign = 0x8000;
constexpr uint16_t kInfinite = 0x7FFF;

}  // namespace

void StoreExtended(double value, std::span<uint8_t, 10> bytes)
{
    uint16_t exponent = 0;
    uint64_t mantissa = 0;
    if (!std::isfinite(value)) {
        exponent = kInfinite;
    } else if (value != 0.0) {
        int power = 0;
        const double fraction = std::frexp(std::fabs(value), &power);  // 0.5 up to 1
        exponent = static_cast<uint16_t>(power - 1 + kBias);
        mantissa = static_cast<uint64_t>(std::ldexp(fraction, 64));
    }
    if (value < 0.0) exponent |= kSign;
    StoreBytes(bytes.first<2>(), exponent, ByteOrder::kBig);
    StoreBytes(bytes.last<8>(), mantissa, ByteOrder::kBig);
}

double LoadExtended(std::span<const uint8_t, 10> bytes)
{
    const auto head = static_cast<uint16_t>(LoadBytes(bytes.first<2>(), ByteOrder::kBig));
    const auto high = static_cast<uint32_t>(LoadBytes(bytes.subspan<2, 4>(), ByteOrder::kBig));
    const auto low = static_cast<uint32_t>(LoadBytes(bytes.last<4>(), ByteOrder::kBig));
    const int exponent = head & ~kSign;
    double value = 0.0;
    if (exponent == kInfinite) {
        value = std::numeric_limits<double>::infinity();
    } else if (exponent != 0 || high != 0 || low != 0) {
        value = std::ldexp(high, exponent - kBias - 31) + std::ldexp(low, exponent - kBias - 63);
    }
    return head & kSign ? -value : value;
}

}  // namespace kelvane
