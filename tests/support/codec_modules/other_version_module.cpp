// A codec module of a version that this program does not know.

#include "platform/codec_module.h"

extern "C" __attribute__((visibility("default"))) const kelvane::CodecModule* kelvane_codec_module()
{
    static constexpr kelvane::CodecModule kModule = {
        kelvane::kCodecModuleVersion + 1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &kModule;
}
