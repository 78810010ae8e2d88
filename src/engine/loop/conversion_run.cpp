#include "engine/loop/conversion_run.h"

#include "format/picture_layout.h"

namespace kelvane {

ConversionRun::ConversionRun(const ConversionSettings& options, Source& from, Destination& to,
                             AudioTransfer& sound, ConversionHost* told, ConversionState& kept)
    : settings(options),
      source(from),
      destination(to),
      audio(sound),
      host(told),
      state(kept),
      reader(from, losses),
      ring(LargestFrame(from.format)),
      time(options, from.is_pal, to.is_pal),
      decoder(from.format, kept),
      encoder(to.format, to.is_pal, kept),
      resampler(to.format.Width(), to.format.Height(), options.motiondetail, kept)
{
}

}  // namespace kelvane
