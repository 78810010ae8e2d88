#include "engine/sound/sample_converter.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "base/byte_cursor.h"

namespace kelvane {

namespace {

constexpr int64_t kMost = 32767;
constexpr int64_t kLeast = -32768;

void Put16(uint8_t* to, int64_t value)
{
    const auto sample = static_cast<uint16_t>(std::clamp(value, kLeast, kMost));
    to[0] = static_cast<uint8_t>(sample);
    to[1] = static_cast<uint8_t>(sample >> 8);
}

// `bytes` bytes as the top of 32 bits, rounded to 16.
template <size_t bytes>
void ConvertIntegers(const SampleCoding& coding, std::span<const uint8_t> from, uint8_t* to)
{
    const uint32_t flip = coding.is_unsigned ? 0x80000000 : 0;
    for (size_t at = 0; at + bytes <= from.size(); at += bytes, to += 2) {
        uint32_t value = 0;
        for (size_t i = 0; i < bytes; i++) {
            const uint32_t byte = from[at + (coding.big_endian ? i : bytes - 1 - i)];
            value |= byte << (24 - 8 * i);
        }
        Put16(to, (int64_t{static_cast<int32_t>(value ^ flip)} + 0x8000) >> 16);
    }
}

void ConvertFloats(const SampleCoding& coding, std::span<const uint8_t> from, uint8_t* to)
{
    const size_t bytes = coding.Bytes();
    const ByteOrder order = coding.big_endian ? ByteOrder::kBig : ByteOrder::kLittle;
    for (size_t at = 0; at + bytes <= from.size(); at += bytes, to += 2) {
        const uint64_t raw = LoadBytes(from.subspan(at, bytes), order);
        const double value = bytes == 8 ? std::bit_cast<double>(raw)
                                        : double{std::bit_cast<float>(static_cast<uint32_t>(raw))};
        // Limited before it becomes an integer; what is not a number is silence.
        const double scaled = std::clamp(value * 32768.0, double{kLeast}, double{kMost});
        Put16(to, std::isnan(scaled) ? 0 : std::lrint(scaled));
    }
}

}  // namespace

void ConvertSamples(const SampleCoding& coding, std::span<const uint8_t> from, uint8_t* to)
{
    if (coding.is_float) return ConvertFloats(coding, from, to);
    switch (coding.Bytes()) {
        case 1:
            return ConvertIntegers<1>(coding, from, to);
        case 2:
            return ConvertIntegers<2>(coding, from, to);
        case 3:
            return ConvertIntegers<3>(coding, from, to);
        case 4:
            return ConvertIntegers<4>(coding, from, to);
    }
}

void SampleConverter::Convert(std::span<const uint8_t> piece, std::vector<uint8_t>& samples)
{
    const size_t bytes = fCoding.Bytes();
    const auto append = [&](std::span<const uint8_t> whole) {
        const size_t at = samples.size();
        samples.resize(at + whole.size() / bytes * 2);
        ConvertSamples(fCoding, whole, samples.data() + at);
    };
    if (!fWaiting.empty()) {
        const size_t missing = std::min(bytes - fWaiting.size(), piece.size());
        fWaiting.insert(fWaiting.end(), piece.begin(),
                        piece.begin() + static_cast<ptrdiff_t>(missing));
        piece = piece.subspan(missing);
        if (fWaiting.size() < bytes) return;
        append(fWaiting);
        fWaiting.clear();
    }
    const size_t whole = piece.size() / bytes * bytes;
    append(piece.first(whole));
    fWaiting.assign(piece.begin() + static_cast<ptrdiff_t>(whole), piece.end());
}

}  // namespace kelvane
