#include "media/riff/wave_format.h"

namespace kelvane {

namespace {

// WAVEFORMATEXTENSIBLE
constexpr uint16_t kExtensible = 0xFFFE;
constexpr HeaderField kSubFormat = {"SubFormat", 24, 2};

}  // namespace

RawAudioFormat LoadWaveFormat(std::span<const uint8_t> body)
{
    const auto get = [body](const HeaderField& field) {
        return GetField(body, field, ByteOrder::kLittle);
    };
    auto tag = static_cast<uint16_t>(get(kWaveFormat["Format"]));
    if (tag == kExtensible) tag = static_cast<uint16_t>(get(kSubFormat));
    return {.format = SampleFormatOfTag(tag),
            .ch = static_cast<uint16_t>(get(kWaveFormat["nChannels"])),
            .bitspersample = static_cast<uint16_t>(get(kWaveFormat["wBitsPerSample"])),
            .srate = static_cast<int32_t>(get(kWaveFormat["nSamplesPerSec"]))};
}

void StoreWaveFormat(const RawAudioFormat& format, uint32_t frame, std::span<uint8_t> body)
{
    const auto rate = static_cast<uint32_t>(format.srate);
    const auto set = [body](const HeaderField& field, uint32_t value) {
        StoreBytes(body.subspan(field.at, field.bytes), value, ByteOrder::kLittle);
    };
    set(kWaveFormat["Format"], TagOfSampleFormat(format.format));
    set(kWaveFormat["nChannels"], format.ch);
    set(kWaveFormat["nSamplesPerSec"], rate);
    set(kWaveFormat["nAvgBytesPerSec"], rate * frame);
    set(kWaveFormat["nBlockAlign"], frame);
    set(kWaveFormat["wBitsPerSample"], format.bitspersample);
}

}  // namespace kelvane
