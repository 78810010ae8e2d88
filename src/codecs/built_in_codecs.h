#pragma once

#include <cstdint>
#include <functional>

#include "codecs/interface/codec_registry.h"

namespace kelvane {

// True when the system has a codec of this handler that can be opened.
using HandlerProbe = std::function<bool(uint32_t handler)>;

// Registers the built-in codecs in their order. HuffYUV counts as installed only when `canOpen`,
// which is asked once, says so for the handler HFYU, although the coding is done here.
void RegisterBuiltInCodecs(CodecRegistry& registry, const HandlerProbe& canOpen);

}  // namespace kelvane
