// A codec module of the right version that makes no sense, each time in the way that
// $KELVANE_TEST_NONSENSE says.

#include <cstdlib>
#include <string_view>

#include "base/status.h"
#include "platform/codec_modules/codec_module.h"

namespace kelvane {

namespace {

// The first and the last have sense.
constexpr ModuleCodec kCodecs[] = {
    {"First", "First", kVideoForWindows, 0, 0, 0, 0, 0},
    {nullptr, "No name", kVideoForWindows, 0, 0, 0, 0, 0},
    {"No short name", nullptr, kVideoForWindows, 0, 0, 0, 0, 0},
    {"Of no interface", "", kDirectShow + 1, 0, 0, 0, 0, 0},
    {"Of no direction", "", kDirectShow, 2, 0, 0, 0, 0},
    {"Last", "Last", kDirectShow, 1, 0, 0, 0, 0},
};

CodecModule gModule;

}  // namespace

const CodecModule* Table()
{
    const std::string_view kind = getenv("KELVANE_TEST_NONSENSE");
    gModule = {
        kCodecModuleVersion,
        [] { return uint32_t{std::size(kCodecs)}; },
        [](uint32_t index, ModuleCodec* codec) -> int32_t {
            *codec = kCodecs[index];
            return kOK;
        },
        [](uint32_t, const CodecSetup*, void**) -> int32_t { return kError; },
        [](void*, const uint8_t*, uint8_t*, uint32_t*) -> int32_t { return kError; },
        [](void*, const uint8_t*, uint32_t, uint8_t*, uint32_t) -> int32_t { return kError; },
        [](void*) {}};
    if (kind == "gap") gModule.decode = nullptr;
    if (kind == "many") gModule.count = [] { return ~uint32_t{0}; };
    return kind == "nothing" ? nullptr : &gModule;
}

}  // namespace kelvane

extern "C" __attribute__((visibility("default"))) const kelvane::CodecModule* kelvane_codec_module()
{
    return kelvane::Table();
}
