#include "sample/sample_clip.h"

#include <algorithm>

#include "base/four_cc.h"
#include "base/status.h"
#include "dv/dif_frame.h"
#include "media/raw_dv/raw_dv_file.h"
#include "platform/codec_modules/dv_setup.h"

namespace kelvane {

namespace {

OpenedCodec OpenEncoder(const CodecDrivers& codecs, const SampleOptions& options)
{
    const CodecSetup setup = DVSetup(options.pal, options.dvcpro, kBGRX32);
    OpenedCodec encoder;
    for (const CodecDriver& driver : codecs.codecs)
        if (!driver.codec.is_decoder && driver.codec.handler == "dvsd"_4cc &&
            encoder.Open(driver, setup) == kOK)
            break;
    return encoder;
}

uint8_t PackedDecimal(int64_t value)
{
    return static_cast<uint8_t>(value / 10 << 4 | value % 10);
}

// The time code pack of IEC 61834-4 in every subcode sync block of the frame.
void SetTimecode(std::span<uint8_t> frame, int64_t number, int64_t base)
{
    const int64_t seconds = number / base;
    const Pack pack = {kPackTimecode, PackedDecimal(number % base), PackedDecimal(seconds % 60),
                       PackedDecimal(seconds / 60 % 60), PackedDecimal(seconds / 3600 % 24)};
    for (size_t sequence = 0; sequence < frame.size(); sequence += kDIFSequenceSize)
        for (const size_t block : kSubcodeBlocks)
            for (size_t i = 0; i < kSubcodePacks; i++)
                std::ranges::copy(
                    pack, frame.begin() + static_cast<ptrdiff_t>(sequence + block + kSubcodePackAt +
                                                                 i * kSubcodePackStep));
}

}  // namespace

SampleClip::SampleClip(const CodecDrivers& codecs, const SampleOptions& options)
    : fOptions(options),
      fScene(System().width, System().height, options.scene),
      fSound(options.rate, options.channels),
      fEncoder(OpenEncoder(codecs, options)),
      fInitCheck(fEncoder.IsOpen() ? kOK : kError),
      fPicture(size_t(System().width) * size_t(System().height) * 4),
      fFrame(size_t(System().dv_frame_size))
{
}

std::span<const uint8_t> SampleClip::Frame(int64_t number)
{
    fScene.DrawFrame(fPicture.data(), number, double(System().rate), fOptions.order);
    uint32_t bytes = 0;
    if (fEncoder.Encode(fPicture.data(), fFrame, bytes) != kOK || bytes != fFrame.size()) return {};
    SetTimecode(fFrame, number, fOptions.pal ? 25 : 30);
    DIFFrame frame(fFrame.data(), bytes);
    frame.SetWidescreen(fOptions.wide);
    frame.SetFieldOrder(fOptions.order);
    fSound.EmbedInto(fFrame, static_cast<uint64_t>(number));
    return fFrame;
}

Status WriteSampleFile(const std::string& path, SampleClip& clip, int64_t frames)
{
    if (clip.InitCheck() != kOK) return kError;
    RawDVFile file(path.c_str(), kCreate);
    if (file.InitCheck() != kOK) return file.InitCheck();
    file.SetRecordSize(clip.System().dv_frame_size);
    for (int64_t number = 0; number < frames; number++) {
        const auto frame = clip.Frame(number);
        if (frame.empty()) return kError;
        if (const Status status = file.Write(frame.data(), 1); status != kOK) return status;
    }
    return file.Finish();
}

}  // namespace kelvane
