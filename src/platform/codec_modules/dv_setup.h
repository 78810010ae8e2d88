#pragma once

#include "format/colour_space.h"
#include "platform/codec_modules/codec_module.h"

namespace kelvane {

// What a codec of DV or DVCPRO25 is opened for, with pictures of `space` on the raw side.
CodecSetup DVSetup(bool pal, bool dvcpro, ColourSpace space);

}  // namespace kelvane
