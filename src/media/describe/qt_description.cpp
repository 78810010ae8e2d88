#include "media/describe/qt_description.h"

#include <algorithm>
#include <vector>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "media/describe/stream_words.h"
#include "media/quicktime/qt_dv_frames.h"
#include "media/quicktime/qt_file.h"

namespace kelvane {

namespace {

struct FormatName {
    uint32_t format;
    const char* name;
};
constexpr FormatName kFormatNames[] = {
    {"rle "_4cc, "Animation (RLE)"},
    {"AVRn"_4cc, "AVID 'AVRn' Codec"},
    {"jpeg"_4cc, "PJPEG"},
    {"png "_4cc, "PNG"},
    {"mjpa"_4cc, "MJPEG-A"},
    {"cvid"_4cc, "Cinepak"},
    {"svq1"_4cc, "Sorenson video"},
    {"SVQ1"_4cc, "Sorenson video"},
    {"rpza"_4cc, "Apple Video"},
    {"RPZA"_4cc, "Apple Video"},
    {"yuv2"_4cc, "Component Video (YCbCr 8-bit 4:2:2)"},
    {"yuvu"_4cc, "Component Video (YCbCr 8-bit 4:2:2)"},
    {"2vuy"_4cc, "YCbCr 8-bit 4:2:2"},
    {"yuvs"_4cc, "YCbCr 8-bit 4:2:2"},
    {"yuv4"_4cc, "YUV 4:2:0"},
    {"yv12"_4cc, "Planar YUV 4:2:0"},
    {"y411"_4cc, "Planar YUV 4:1:1"},
    {"v308"_4cc, "YUV 4:4:4"},
    {"v408"_4cc, "YUVA 4:4:4:4"},
    {"v410"_4cc, "YUV 4:4:4 10 bit"},
    {"YVU9"_4cc, "'YUV9'"},
    {"RTJ0"_4cc, "RTjpeg"},
};

// The first picture, whatever it is.
bool ReadFirst(QTFile& file, int32_t stream, Bytes& bytes)
{
    // Larger frames than PAL's are none of DV.
    bytes.resize(
        std::min<uint64_t>(file.FrameSize(stream, 0), static_cast<uint64_t>(kPAL.dv_frame_size)));
    uint32_t size = 0;
    return file.SeekFrame(stream, 0) == kOK && file.ReadFrame(stream, bytes, size) == kOK;
}

std::string DVText(QTFile& file, int32_t stream)
{
    const std::string text = file.TrackCodec(stream) == "AVdv"_4cc ? "QuickTime AVID" : "QuickTime";
    Bytes bytes = FirstDVFrame(file, stream);
    if (bytes.empty() && !ReadFirst(file, stream, bytes)) return text + " <video read error>";
    DIFFrame frame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return text + " " + DVWords(frame);
}

std::string VideoText(QTFile& file, int32_t stream)
{
    const uint32_t code = file.TrackCodec(stream);
    if (IsQTDVStream(file, stream)) return DVText(file, stream);
    if (code == "raw "_4cc)
        return "QuickTime Uncompressed RGB " + PictureWords(file.StreamFormat(stream));
    const auto* row = std::ranges::find(kFormatNames, code, &FormatName::format);
    return row == std::end(kFormatNames) ? "QuickTime unknown codec"
                                         : "QuickTime " + std::string(row->name);
}

std::string SoundText(const QTFile& file, int32_t stream)
{
    switch (file.TrackCodec(stream)) {
        case "ulaw"_4cc:
            return "QuickTime ulaw audio";
        case "ima4"_4cc:
            return "QuickTime IMA4 audio";
        case "twos"_4cc:
        case "sowt"_4cc: {
            const RawAudioFormat sound = file.StreamFormat(stream).raw_audio;
            return "QuickTime " + ChannelWords(sound.ch) + " " +
                   RateWords(static_cast<uint32_t>(sound.srate)) + " audio";
        }
        default:
            return "QuickTime unknown codec";
    }
}

// The first stream of this kind; -1 when there is none.
int32_t FirstStream(const QTFile& file, bool video)
{
    for (int32_t stream = 0; stream < file.CountStreams(); stream++)
        if (file.IsVideo(stream) == video) return stream;
    return -1;
}

}  // namespace

bool DescribeQuickTime(const char* path, std::string& text)
{
    text = "QuickTime [prg error]";
    if (!path) return false;
    QTFile file(path, kRead);
    text = "QuickTime [open error]";
    if (file.InitCheck() != kOK) return false;
    text = "QuickTime unknown (no streams)";
    if (file.CountStreams() == 0) return true;
    const int32_t video = FirstStream(file, true);
    text = video >= 0 ? VideoText(file, video) : SoundText(file, FirstStream(file, false));
    return true;
}

}  // namespace kelvane
