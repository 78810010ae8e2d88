#include "media/describe/stream_words.h"

#include "base/television.h"

namespace kelvane {

std::string ChannelWords(uint32_t channels)
{
    switch (channels) {
        case 1:
            return "mono";
        case 2:
            return "stereo";
        default:
            return Words("%lu-ch", static_cast<unsigned long>(channels));
    }
}

std::string RateWords(uint32_t rate)
{
    switch (rate) {
        case 48000:
            return "48kHz";
        case 44100:
            return "44.1kHz";
        case 32000:
            return "32kHz";
        default:
            return Words("%ld Hz", static_cast<long>(rate));
    }
}

std::string PictureWords(const MediaFormat& format)
{
    const long width = format.Width(), height = format.Height();
    const double rate = format.FrameRate();
    if (width == kNTSC.width && height == kNTSC.height && rate >= 29.96 && rate < 29.98)
        return "NTSC";
    if (width == kPAL.width && height == kPAL.height && rate >= 25.0 && rate < 25.01) return "PAL";
    return Words("%ldx%ld @ %.2f fps", width, height, rate);
}

std::string SamplingWords(DIFFrame& frame)
{
    return std::string(frame.Is420() ? "4:2:0" : "4:1:1") +
           (frame.IsWidescreen() ? " (16:9 format)" : " (4:3 format)");
}

std::string DVWords(DIFFrame& frame)
{
    return std::string(frame.IsDVCPRO() ? "DVCPRO" : "DV") + (frame.IsPAL() ? " PAL " : " NTSC ") +
           SamplingWords(frame);
}

}  // namespace kelvane
