// A codec module for tests that plays the Video for Windows kind, and bad codecs of the other. Its
// codecs are the DV codec of the module that ships, behind the manners that such codecs had: bottom
// row first, and each entry with a whim of its own.

#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "base/four_cc.h"
#include "base/status.h"
#include "platform/codec_modules/libav/libav_dv_codec.h"

namespace kelvane {

namespace {

enum class Whim {
    kNone,
    kOnly24Bits,    // pictures of 24 bits only
    kSecondTry,     // takes the coded side's header only with 32 bits
    kRefuses,       // cannot be opened
    kFails,         // opens, then fails each time
    kWrongQuality,  // opens only with its own default quality
};

struct Row {
    const char* name;
    Whim whim;
    bool decoder;
    uint32_t handler;
    uint32_t codec_interface = kVideoForWindows;
};
constexpr Row kRows[] = {
    {"Test DV", Whim::kNone, false, "dvsd"_4cc},
    {"Test DV", Whim::kNone, true, "dvsd"_4cc},
    {"DV Master Test", Whim::kOnly24Bits, false, "DVSD"_4cc},
    {"DV Master Test", Whim::kOnly24Bits, true, "DVSD"_4cc},
    {"Second Try", Whim::kSecondTry, false, "dvsd"_4cc},
    {"Refusing", Whim::kRefuses, false, "dvsd"_4cc},
    {"Refusing", Whim::kRefuses, true, "dvsd"_4cc},
    {"Failing", Whim::kFails, false, "dvsd"_4cc},
    {"Failing", Whim::kFails, true, "dvsd"_4cc},
    {"With Quality", Whim::kWrongQuality, false, "dvsd"_4cc},
    {"Refusing", Whim::kRefuses, false, "dvsd"_4cc, kDirectShow},
    {"Refusing", Whim::kRefuses, true, "dvsd"_4cc, kDirectShow},
    {"Failing", Whim::kFails, false, "dvsd"_4cc, kDirectShow},
    {"Failing", Whim::kFails, true, "dvsd"_4cc, kDirectShow},
    {"Not DV", Whim::kNone, false, "mjpg"_4cc},
};
constexpr uint32_t kDefaultQuality = 7500;

struct Instance {
    Whim whim;
    size_t rowBytes;
    std::vector<uint8_t> turned;
    LibavDVEncoder encoder;
    LibavDVDecoder decoder;

    void Turn(const uint8_t* from, uint8_t* to) const
    {
        const size_t rows = turned.size() / rowBytes;
        for (size_t row = 0; row < rows; row++)
            memcpy(to + row * rowBytes, from + (rows - 1 - row) * rowBytes, rowBytes);
    }
};

bool Accepts(Whim whim, const CodecSetup& setup)
{
    if (whim == Whim::kOnly24Bits) return setup.raw.bit_count == 24;
    if (whim == Whim::kSecondTry) return setup.coded.bit_count == 32;
    if (whim == Whim::kWrongQuality) return setup.quality == kDefaultQuality;
    return whim != Whim::kRefuses;
}

uint32_t Count()
{
    return std::size(kRows);
}

int32_t Describe(uint32_t index, ModuleCodec* codec)
{
    const Row& row = kRows[index];
    *codec = {row.name,
              row.name,
              row.codec_interface,
              row.decoder,
              "vidc"_4cc,
              row.handler,
              row.whim == Whim::kWrongQuality ? kCodecHasQuality : 0,
              kDefaultQuality};
    return kOK;
}

int32_t Open(uint32_t index, const CodecSetup* setup, void** instance)
{
    const Row& row = kRows[index];
    if (!Accepts(row.whim, *setup)) return kError;
    auto opened = std::make_unique<Instance>();
    opened->whim = row.whim;
    opened->rowBytes = size_t(setup->raw.width) * setup->raw.bit_count / 8;
    opened->turned.resize(opened->rowBytes * size_t(setup->raw.height));
    const int status = row.decoder ? opened->decoder.Open(*setup) : opened->encoder.Open(*setup);
    if (status == kOK) *instance = opened.release();
    return status;
}

int32_t Encode(void* instance, const uint8_t* picture, uint8_t* frame, uint32_t* bytes)
{
    auto& opened = *static_cast<Instance*>(instance);
    if (opened.whim == Whim::kFails) return kError;
    opened.Turn(picture, opened.turned.data());
    return opened.encoder.Encode(opened.turned.data(), frame, bytes);
}

int32_t Decode(void* instance, const uint8_t* frame, uint32_t frameBytes, uint8_t* picture,
               uint32_t pictureBytes)
{
    auto& opened = *static_cast<Instance*>(instance);
    if (opened.whim == Whim::kFails || pictureBytes != opened.turned.size()) return kError;
    const int status = opened.decoder.Decode(frame, frameBytes, opened.turned.data(), pictureBytes);
    opened.Turn(opened.turned.data(), picture);
    return status;
}

void Close(void* instance)
{
    const std::unique_ptr<Instance> closed(static_cast<Instance*>(instance));
}

constexpr CodecModule kModule = {kCodecModuleVersion, Count, Describe, Open, Encode, Decode, Close};

}  // namespace

}  // namespace kelvane

extern "C" __attribute__((visibility("default"))) const kelvane::CodecModule* kelvane_codec_module()
{
    return &kelvane::kModule;
}
