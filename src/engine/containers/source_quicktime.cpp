#include <algorithm>
#include <limits>

#include "base/four_cc.h"
#include "base/status.h"
#include "engine/containers/picture_rows.h"
#include "engine/containers/source.h"
#include "format/picture_layout.h"
#include "media/quicktime/qt_dv_frames.h"
#include "media/quicktime/qt_file.h"

namespace kelvane {

namespace {

// Pictures that stand for longer than this in all are no film.
constexpr double kMostHoursHeld = 24;

class QTAudio : public AudioStream {
public:
    QTAudio(QTFile& file, int32_t stream, uint64_t silence)
        : fFile(file), fStream(stream), fSilence(silence)
    {
    }
    uint64_t LeadingSilence() const override { return fSilence; }
    uint32_t ChunkSize() override
    {
        const uint64_t size = fFile.FrameSize(fStream, fFile.FramePosition(fStream));
        return static_cast<uint32_t>(
            std::min<uint64_t>(size, std::numeric_limits<uint32_t>::max()));
    }
    Status ReadChunk(uint8_t* buffer, uint32_t room, uint32_t& bytes) override
    {
        return fFile.ReadFrame(fStream, {buffer, room}, bytes);
    }
    uint64_t SkipChunk() override
    {
        const int64_t next = fFile.FramePosition(fStream);
        const uint64_t bytes = fFile.FrameSize(fStream, next);
        return fFile.SeekFrame(fStream, next + 1) == kOK ? bytes : 0;
    }

private:
    QTFile& fFile;
    int32_t fStream;
    uint64_t fSilence;  // samples
};

class QuickTimeSource : public Source {
public:
    explicit QuickTimeSource(const std::string& file) : fFile(file.c_str(), kRead) {}

    // Empty when all is well, else the reason.
    std::string Open()
    {
        if (fFile.InitCheck() != kOK) return "Quicktime open error" + fFile.InitCheck().Reason();
        handler = "dvsd"_4cc;
        for (int32_t stream = 0; stream < fFile.CountStreams(); stream++)
            TakeTrack(stream);
        if (fVideo < 0) return "Cannot find video stream in QuickTime movie.";
        if (!IsConvertible()) return "Source is not a DV QuickTime.";
        is_pal = format.FrameRate() == 25.0f;
        if (fFile.TrackCodec(fVideo) == "raw "_4cc) fRows = PictureRows(format, kQTRowMultiple);
        // Sound that will not be heard begins nowhere.
        fStart = fFile.Start(fVideo, format, audio_coding.IsSupported() ? fSound : -1);
        fTimes = fFile.PictureTimes(fVideo, format, fStart.held);
        const double seconds = double(fTimes.Held()) / std::max(format.FrameRate(), 1.0f);
        const RawAudioFormat& sound = audio_format.raw_audio;
        const double silence = double(fStart.silence) / std::max(sound.srate, 1);
        if (std::max(seconds, silence) > kMostHoursHeld * 3600)
            return "Quicktime parsing error, corrupted file";
        if (fSound >= 0)
            fAudio = std::make_unique<QTAudio>(fFile, fSound, fStart.silence * sound.ch);
        return "";
    }

    FrameRead ReadFrame(int64_t number, std::span<uint8_t> buffer) override
    {
        uint32_t bytes = 0;
        if (number < 0 || uint64_t(number) >= fTimes.Count()) return {kEnd};
        const auto [picture, held] = fTimes.At(uint64_t(number));
        if (held) return {kOK};
        if (fFile.SeekFrame(fVideo, int64_t(picture)) != kOK) return {kEnd};
        const Status status = fFile.ReadFrame(fVideo, buffer, bytes);
        return {status, fRows.Pack(buffer.first(bytes))};
    }

    uint64_t CountFrames() const override { return fTimes.Count(); }
    uint64_t LeftOut() const override { return fTimes.LeftOut(); }

    uint64_t FramesSalvaged() const override { return fFile.Salvaged().frames; }
    std::string Warning() const override
    {
        if (fStart.has_other_edits)
            return "The edit list of the source is not followed: all of its pictures and sound are "
                   "converted.";
        const QTSalvage salvage = fFile.Salvaged();
        if (salvage.frames == 0) return {};
        std::string text =
            "The source has no whole header, as a capture that broke off; its frames were found "
            "without it.";
        if (salvage.left_out > 0)
            text += " " + std::to_string(salvage.left_out) +
                    " bytes between them are no sound of their length and were left out.";
        if (salvage.silent > 0)
            text += " The sound of " + std::to_string(salvage.silent) +
                    (salvage.silent == 1 ? " frame is silence." : " frames is silence.");
        return text;
    }
    AudioStream* Audio() override { return fAudio.get(); }

private:
    // The first track of either kind counts.
    void TakeTrack(int32_t stream)
    {
        const MediaFormat track = PictureFormat(stream);
        if (track.IsVideo() && fVideo < 0) {
            fVideo = stream;
            format = track;
        } else if (track.IsAudio() && fSound < 0) {
            audio_format = track;
            audio_coding = fFile.SoundCoding(stream);
            fSound = stream;
        }
    }

    // DV goes by its first whole frame, else by its description.
    MediaFormat PictureFormat(int32_t stream)
    {
        if (!fFile.IsVideo(stream) || !IsQTDVStream(fFile, stream))
            return fFile.StreamFormat(stream);
        const auto pal = IsPALStream(fFile, stream);
        return pal ? DVFormat(*pal) : fFile.StreamFormat(stream);
    }

    bool IsConvertible() const
    {
        if (!HasPlausibleSize(format)) return false;
        if (format.kind == kRawVideo || format.encoded_video.encoding == kEncodingQTRLE)
            return true;
        return format.IsDV() && format.Width() == 720 &&
               (format.Height() == 576 || format.Height() == 480);
    }

    QTFile fFile;
    int32_t fVideo = -1, fSound = -1;
    QTStart fStart;
    QTPictureTimes fTimes;
    PictureRows fRows;
    std::unique_ptr<QTAudio> fAudio;
};

}  // namespace

OpenedSource OpenQuickTimeSource(const std::string& path)
{
    return OpenAs<QuickTimeSource>(path);
}

}  // namespace kelvane
