// The table of the codec module that ships with Kelvane.

#include <memory>
#include <variant>

#include "base/four_cc.h"
#include "base/status.h"
#include "platform/codec_modules/codec_module.h"
#include "platform/codec_modules/libav/libav_dv_codec.h"

namespace kelvane {

namespace {

// Pictures of this codec are coded by Kelvane itself; that a codec of this handler can be opened
// is how HuffYUV counts as installed.
struct HuffYUVPresence {
    ContextPtr context;
};

using Instance = std::variant<LibavDVEncoder, LibavDVDecoder, HuffYUVPresence>;

constexpr ModuleCodec kCodecs[] = {
    {"DV Video Encoder", "DV Encoder", kDirectShow, 0, "vidc"_4cc, "dvsd"_4cc, 0, 0},
    {"DV Video Decoder", "DV Decoder", kDirectShow, 1, "vidc"_4cc, "dvsd"_4cc, 0, 0},
    {"HuffYUV", "HuffYUV", kVideoForWindows, 0, "vidc"_4cc, "HFYU"_4cc, 0, 0},
    {"HuffYUV", "HuffYUV", kVideoForWindows, 1, "vidc"_4cc, "HFYU"_4cc, 0, 0},
};
constexpr uint32_t kDVCodecs = 2;

const AVCodec* HuffYUVCodec(bool decoder)
{
    return decoder ? avcodec_find_decoder(AV_CODEC_ID_HUFFYUV)
                   : avcodec_find_encoder(AV_CODEC_ID_HUFFYUV);
}

uint32_t Count()
{
    return HuffYUVCodec(false) && HuffYUVCodec(true) ? std::size(kCodecs) : kDVCodecs;
}

int32_t Describe(uint32_t index, ModuleCodec* codec)
{
    if (index >= Count()) return kError;
    *codec = kCodecs[index];
    return kOK;
}

// Callers may be of another language: what is thrown here, as for want of memory, is a failure.
template <class Work>
int32_t WithoutThrowing(Work work)
{
    try {
        return work();
    } catch (...) {
        return kError;
    }
}

std::unique_ptr<Instance> OpenInstance(uint32_t index, const CodecSetup& setup)
{
    const bool decoder = kCodecs[index].is_decoder;
    if (kCodecs[index].handler == "HFYU"_4cc) {
        ContextPtr context(avcodec_alloc_context3(HuffYUVCodec(decoder)));
        if (!context) return nullptr;
        return std::make_unique<Instance>(HuffYUVPresence{std::move(context)});
    }
    if (decoder) {
        auto instance = std::make_unique<Instance>(std::in_place_type<LibavDVDecoder>);
        return std::get<LibavDVDecoder>(*instance).Open(setup) == kOK ? std::move(instance)
                                                                      : nullptr;
    }
    auto instance = std::make_unique<Instance>(std::in_place_type<LibavDVEncoder>);
    return std::get<LibavDVEncoder>(*instance).Open(setup) == kOK ? std::move(instance) : nullptr;
}

int32_t Open(uint32_t index, const CodecSetup* setup, void** instance)
{
    *instance = nullptr;
    return WithoutThrowing([&] {
        if (index < Count()) *instance = OpenInstance(index, *setup).release();
        return *instance ? kOK : kError;
    });
}

int32_t Encode(void* instance, const uint8_t* picture, uint8_t* frame, uint32_t* bytes)
{
    return WithoutThrowing([&] {
        auto* encoder = std::get_if<LibavDVEncoder>(static_cast<Instance*>(instance));
        return encoder ? encoder->Encode(picture, frame, bytes) : kError;
    });
}

int32_t Decode(void* instance, const uint8_t* frame, uint32_t frameBytes, uint8_t* picture,
               uint32_t pictureBytes)
{
    return WithoutThrowing([&] {
        auto* decoder = std::get_if<LibavDVDecoder>(static_cast<Instance*>(instance));
        return decoder ? decoder->Decode(frame, frameBytes, picture, pictureBytes) : kError;
    });
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
