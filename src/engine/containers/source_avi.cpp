#include <optional>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "engine/containers/picture_rows.h"
#include "engine/containers/source.h"
#include "format/picture_layout.h"
#include "media/avi/avi_file.h"
#include "media/avi/structure/avi_codecs.h"
#include "picture/packing.h"

namespace kelvane {

namespace {

class AVIAudio : public AudioStream {
public:
    AVIAudio(AVIFile& file, int32_t stream) : fFile(file), fStream(stream) {}
    uint32_t ChunkSize() override
    {
        return static_cast<uint32_t>(fFile.StreamAt(fStream)->largest_frame);
    }
    Status ReadChunk(uint8_t* buffer, uint32_t room, uint32_t& bytes) override
    {
        return fFile.ReadFrame(fStream, {buffer, room}, bytes);
    }
    uint64_t SkipChunk() override
    {
        const int64_t next = fFile.StreamAt(fStream)->position;
        const uint32_t bytes = fFile.FrameBytes(fStream, next);
        return fFile.SeekFrame(fStream, next + 1) == kOK ? bytes : 0;
    }

private:
    AVIFile& fFile;
    int32_t fStream;
};

class AVISource : public Source {
public:
    explicit AVISource(const std::string& file) : fFile(file.c_str(), kRead) {}

    // Empty when all is well, else the reason.
    std::string Open()
    {
        if (fFile.InitCheck() == kCorrupted) return "AVI parsing error, corrupted file";
        if (fFile.InitCheck() != kOK) return "AVI open error" + fFile.InitCheck().Reason();
        // Behind the words for what is not there: why it could not be looked for.
        const std::string trouble = fFile.Trouble().Reason();
        fVideo = fFile.VideoStream();
        if (fVideo < 0) return "Source contains no video streams." + trouble;
        if (fFile.CountStreams() <= 0) return "Source contains 0 streams." + trouble;
        const AVIStream& stream = *fFile.StreamAt(fVideo);
        has_companions = true;
        is_pal = stream.IsPAL();
        handler = stream.Handler();
        if (!TakePicture(stream)) return "Source is not DV or uncompressed AVI." + trouble;
        // A file of one stream has its sound in the frames.
        if (fFile.CountStreams() > 1) TakeSound();
        return {};
    }

    FrameRead ReadFrame(int64_t number, std::span<uint8_t> buffer) override
    {
        uint32_t bytes = 0;
        if (fFile.SeekFrame(fVideo, number) != kOK) return {kEnd};
        const Status status = fFile.ReadFrame(fVideo, buffer, bytes);
        const size_t size = fRows.Pack(buffer.first(bytes));
        if (fIsTopDown && size >= BytesOfPicture(format))
            SwapVertical(buffer.data(), BytesOfPicture(format) / size_t(format.Height()),
                         format.Height());
        return {status, size};
    }

    uint64_t CountFrames() const override
    {
        return static_cast<uint64_t>(fFile.CountFrames(fVideo));
    }

    std::vector<uint8_t> StreamHeader() const override
    {
        const AVIStream& stream = *fFile.StreamAt(fVideo);
        if (format.kind != kEncodedVideo || format.IsDV() || !stream.format) return {};
        std::vector<uint8_t> header = *stream.format->data;
        if (header.size() < kBitmapInfo.Size()) return {};
        // Some writers do not count the codec's data.
        static_cast<void>(
            SetField(header, kBitmapInfo["dwSize"], header.size(), ByteOrder::kLittle));
        return header;
    }

    std::string Warning() const override
    {
        return fFile.WasWalked()
                   ? "The index of the source is missing or not whole; the frames that "
                     "it does not name were found without it."
                   : "";
    }
    uint64_t FramesSalvaged() const override { return fFile.FramesSalvaged(fVideo); }
    Status Trouble() const override { return fFile.Trouble(); }
    Status HeaderTrouble() const override { return fFile.HeaderTrouble(); }
    AudioStream* Audio() override { return fAudio.get(); }

private:
    bool TakePicture(const AVIStream& stream)
    {
        const bool is_dv = IsDVHandler(handler);
        if (is_dv || MayBeDVHandler(handler))
            if (const auto pal = SystemOfFilm(); pal || is_dv) {
                is_pal = pal.value_or(is_pal);
                if (!is_dv) handler = "dvsd"_4cc;
                format = DVFormat(is_pal);
                return true;
            }
        const bool huffyuv = handler == "HFYU"_4cc || handler == "hfyu"_4cc;
        if (!stream.IsVideo() || (!IsRawHandler(handler) && !huffyuv)) return false;
        fFile.StreamFormat(fVideo, format);
        fIsTopDown = IsTopDown(stream, format);
        fRows = PictureRows(format, kAVIRowMultiple);
        return HasPlausibleSize(format);
    }

    // The television system of a film is that of its frames, whatever the headers say; nothing when
    // the first one that has data is no whole frame of 25 Mbit/s.
    std::optional<bool> SystemOfFilm()
    {
        std::vector<uint8_t> room(LargestFrame(DVFormat(true)));
        std::optional<bool> first;
        int left = kFramesThatTell;
        for (int64_t number = 0; left > 0; number++) {
            const FrameRead read = ReadFrame(number, room);
            if (read.status != kOK) break;
            if (read.size == 0) continue;
            const auto frame = std::span(room).first(read.size);
            const auto pal = SystemOfFrame(frame);
            if (!pal) break;
            if (HasVideoAux(frame)) return pal;
            if (!first) first = pal;
            left--;
        }
        return first;
    }

    // RGB pictures have their bottom row first here as in codecs. A negative height says that a
    // file has it last.
    static bool IsTopDown(const AVIStream& stream, const MediaFormat& format)
    {
        const bool rgb =
            format.kind == kRawVideo &&
            (format.Space() == kBGR24 || format.Space() == kBGRX32 || format.Space() == kBGRA32);
        return rgb && static_cast<int32_t>(Get32(stream.format, kBitmapInfo["biHeight"])) < 0;
    }

    void TakeSound()
    {
        const int32_t stream = fFile.AudioStream();
        if (stream < 0) return;
        fFile.StreamFormat(stream, audio_format);
        if (audio_format.kind == kRawAudio) audio_coding = RIFFCoding(audio_format.raw_audio);
        fAudio = std::make_unique<AVIAudio>(fFile, stream);
    }

    AVIFile fFile;
    int32_t fVideo = -1;
    bool fIsTopDown = false;
    PictureRows fRows;
    std::unique_ptr<AVIAudio> fAudio;
};

}  // namespace

OpenedSource OpenAVISource(const std::string& path)
{
    return OpenAs<AVISource>(path);
}

}  // namespace kelvane
