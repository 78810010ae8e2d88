#pragma once

#include "base/threads/background_task.h"
#include "base/threads/worker_pool.h"
#include "codecs/external/dv_codec_slot.h"
#include "codecs/interface/codec_registry.h"
#include "picture/adaptive_deinterlace.h"
#include "picture/motion_interpolate.h"
#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// What is kept from file to file by whoever converts several: one for each conversion that runs at
// the same time.
class ConversionState {
public:
    // `registry` outlives this object. `threads` is how many work at once; 0 is one for each core.
    explicit ConversionState(const CodecRegistry& registry, int threads = 0);

    const CodecRegistry& Registry() const { return fRegistry; }
    DVCodecSlots slots;
    DeinterlaceState deinterlace;  // one for source and target
    MotionState motion;
    WorkerPool pool;
    BackgroundTask beside;

private:
    const CodecRegistry& fRegistry;
};

// The built-in codecs; HuffYUV among them when a module says that the system has it.
CodecRegistry MakeCodecRegistry(const CodecDrivers& drivers);

}  // namespace kelvane
