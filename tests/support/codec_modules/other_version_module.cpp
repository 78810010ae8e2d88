// A codec module of a version that this program does not know.

#include "platform/codec_modules/codec_module.h"

namespace kelvane {
namespace {

// Complete but for its version: the version alone must keep it out.
constexpr CodecModule kModule = {
    kCodecModuleVersion + 1,
    [] { return 0u; },
    [](uint32_t, ModuleCodec*) { return -1; },
    [](uint32_t, const CodecSetup*, void**) { return -1; },
    [](void*, const uint8_t*, uint8_t*, uint32_t*) { return -1; },
    [](void*, const uint8_t*, uint32_t, uint8_t*, uint32_t) { return -1; },
    [](void*) {}};

}  // namespace
}  // namespace kelvane

extern "C" __attribute__((visibility("default"))) const kelvane::CodecModule* kelvane_codec_module()
{
    return &kelvane::kModule;
}
