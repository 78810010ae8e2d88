#include "platform/codec_modules/dv_setup.h"

#include "format/media_format.h"

namespace kelvane {

CodecSetup DVSetup(bool pal, bool dvcpro, ColourSpace space)
{
    const MediaFormat coded = DVFormat(pal, dvcpro ? kEncodingDVCPRO25 : kEncodingDV);
    CodecSetup setup{};
    ToBitmapHeaderEncoded(coded, setup.coded);
    ToBitmapHeaderRaw(
        MediaFormat(RawVideoFormat{space, coded.Width(), coded.Height(), coded.FrameRate(), 1, 0}),
        setup.raw);
    return setup;
}

}  // namespace kelvane
