#include "media/describe/avi_description.h"

#include <cstring>

#include "base/status.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "media/avi/avi_file.h"
#include "media/avi/structure/avi_codecs.h"
#include "media/avi/structure/avi_stream_format.h"
#include "media/describe/stream_words.h"
#include "media/riff/wave_format.h"

namespace kelvane {

namespace {

std::string AudioText(const AVIStream& stream)
{
    return std::string("AVI ") + NameOfAudioHandler(stream.Handler()) + " " +
           ChannelWords(Get32(stream.format, kWaveFormat["nChannels"])) + " " +
           RateWords(Get32(stream.format, kWaveFormat["nSamplesPerSec"]));
}

std::string HuffYUVText(const MediaFormat& format, const std::string& picture)
{
    switch (format.Space()) {
        case kBGR24:
            return "RGB 24-bit " + picture;
        case kBGRX32:
            return "RGB 32-bit " + picture;
        default:
            return "YUV 4:2:2 " + picture;
    }
}

// What only the first frame tells.
std::string FrameText(std::span<const uint8_t> captured)
{
    const auto size = static_cast<int32_t>(captured.size());
    if (size != kPAL.dv_frame_size && size != kNTSC.dv_frame_size) return {};
    Bytes bytes(captured.begin(), captured.end());
    DIFFrame frame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return " " + SamplingWords(frame);
}

std::string VideoText(const AVIFile& file, int32_t index)
{
    MediaFormat format;
    file.StreamFormat(index, format);
    // A depth that no codec reads has a size all the same.
    if (format.kind == kUnknownFormat && file.StreamAt(index)->IsVideo())
        format = SizeOfStream(*file.StreamAt(index));
    const uint32_t handler = file.StreamHandler(index);
    const bool found_dv = MayBeDVHandler(handler) && SystemOfFrame(file.FirstFrame());
    const VideoCodecName codec =
        found_dv ? VideoCodecName{"DV", true} : NameOfVideoHandler(handler);
    const std::string picture = PictureWords(format);
    if (codec.is_dv)
        return std::string("AVI Type-") + (file.CountStreams() == 1 ? "1 " : "2 ") + codec.text +
               " " + picture + FrameText(file.FirstFrame());
    const bool huffyuv = !strcmp(codec.text, "Huffyuv");
    return std::string("AVI ") + codec.text + " " +
           (huffyuv ? HuffYUVText(format, picture) : picture);
}

}  // namespace

bool IsAVIFile(const char* path)
{
    char head[100];
    if (!path || FileReadHead(path, head, sizeof head) < 12) return false;
    return !memcmp(head, "RIFF", 4) && !memcmp(head + 8, "AVI ", 4);
}

bool DescribeAVI(const char* path, std::string& text)
{
    text = "AVI [prg error]";
    if (!path) return false;
    const AVIFile file(path, kDescribe);
    text = "AVI [open error]";
    if (file.InitCheck() != kOK) return false;
    if (file.CountStreams() == 0) {
        text = "AVI unknown (no streams)";
    } else if (const int32_t video = file.VideoStream(); video >= 0) {
        text = VideoText(file, video);
    } else if (const int32_t audio = file.AudioStream(); audio >= 0) {
        text = AudioText(*file.StreamAt(audio));
    } else {
        text = "AVI unknown content";
    }
    return true;
}

}  // namespace kelvane
