#include "engine/pictures/conversion_state.h"

#include <algorithm>
#include <thread>

#include "base/status.h"
#include "codecs/built_in_codecs.h"
#include "codecs/external/dv_codec_entry.h"

namespace kelvane {

namespace {

int ThreadCount(int asked)
{
    return asked > 0 ? asked : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

// Both directions must open.
bool CanOpen(const CodecDrivers& drivers, uint32_t handler)
{
    for (const bool decoder : {false, true}) {
        DVCodecEntry entry;
        OpenedCodec codec;
        if (!FindVfW(drivers, entry, handler, decoder)) return false;
        if (codec.Open(entry.driver, CodecSetup{}) != kOK) return false;
    }
    return true;
}

}  // namespace

ConversionState::ConversionState(const CodecRegistry& registry, int threads)
    : slots(static_cast<uint32_t>(ThreadCount(threads))),
      pool(ThreadCount(threads)),
      beside(ThreadCount(threads)),
      fRegistry(registry)
{
}

CodecRegistry MakeCodecRegistry(const CodecDrivers& drivers)
{
    CodecRegistry registry;
    RegisterBuiltInCodecs(registry, [&](uint32_t handler) { return CanOpen(drivers, handler); });
    return registry;
}

}  // namespace kelvane
