#include "codecs/external/dv_codec_slot.h"

#include <cstring>

#include "base/status.h"
#include "base/television.h"
#include "picture/packing.h"
#include "platform/codec_modules/dv_setup.h"

namespace kelvane {

namespace {

// Names of codecs that want 24 bits tried first. `compared` characters count: in one case one more
// than the name has, so that only the whole name matches; deliberate.
struct OppositeName {
    const char* name;
    size_t compared;
    bool encoders, vfwDecoders, directShowDecoders;
};
constexpr OppositeName kOppositeNames[] = {
    {"DV Master", 9, true, true, true},   {"Pinnacle DV", 12, true, true, true},
    {"CANOPUS DV", 10, true, true, true}, {"miroVIDEO", 9, true, false, false},
    {"SONY DV", 7, false, false, true},
};

bool WantsOppositeOrder(const DVCodecEntry& entry, DVCodecRole role)
{
    if (role == kDVCPRODecoder) return false;
    for (const OppositeName& row : kOppositeNames) {
        const bool concerned = role != kDVDecoder    ? row.encoders
                               : entry.is_directshow ? row.directShowDecoders
                                                     : row.vfwDecoders;
        if (concerned && strncmp(entry.long_name.c_str(), row.name, row.compared) == 0) return true;
    }
    return false;
}

}  // namespace

Status DVCodecSlot::Bind(const DVCodecEntry* chosen, bool pal)
{
    const int32_t height = SystemFor(pal).height;
    if (chosen && IsOpen() && fName == chosen->long_name && fHeight == height) return kOK;
    Close();
    if (!chosen) return kOK;
    fIsDirectShow = chosen->is_directshow;
    const bool opposite = WantsOppositeOrder(*chosen, fRole);
    if (Open(*chosen, pal, opposite ? kBGR24 : kBGRX32) == kOK) return kOK;
    return Open(*chosen, pal, opposite ? kBGRX32 : kBGR24);
}

Status DVCodecSlot::Open(const DVCodecEntry& entry, bool pal, ColourSpace space)
{
    CodecSetup setup = DVSetup(pal, IsDVCPRO(), space);
    setup.threads = fThreads;
    if (entry.flags & kCodecHasQuality) setup.quality = entry.driver.codec.default_quality;
    Status status = fCodec.Open(entry.driver, setup);
    if (status != kOK && !entry.is_directshow && !IsDecoder()) {
        // Some encoders look at the bit count of the coded side: once more with another.
        setup.coded.bit_count = setup.raw.bit_count == 32 ? 24 : 32;
        status = fCodec.Open(entry.driver, setup);
    }
    if (status != kOK) return kError;
    fName = entry.long_name;
    fTurnsRows = !entry.is_directshow;
    fHeight = setup.raw.height;
    fRowBytes = static_cast<size_t>(setup.raw.width) * setup.raw.bit_count / 8;
    fSpace = space;
    return kOK;
}

void DVCodecSlot::Close()
{
    fCodec.Close();
    fName.clear();
}

Status DVCodecSlot::Encode(std::span<uint8_t> picture, std::span<uint8_t> frame)
{
    if (!IsOpen() || picture.size() < fRowBytes * static_cast<size_t>(fHeight)) return kError;
    if (fTurnsRows) SwapVertical(picture.data(), fRowBytes, fHeight);
    uint32_t bytes = 0;
    const Status status = fCodec.Encode(picture.data(), frame, bytes);
    return status == kOK && bytes == frame.size() ? kOK : kError;
}

Status DVCodecSlot::Decode(std::span<const uint8_t> frame, std::span<uint8_t> picture)
{
    if (fCodec.Decode(frame, picture) != kOK) return kError;
    if (fTurnsRows) SwapVertical(picture.data(), fRowBytes, fHeight);
    return kOK;
}

std::string DVCodecSlot::OpenError() const
{
    return std::string(IsDVCPRO() ? "DVCPRO25" : "DV") + (IsDecoder() ? " Decoder" : " Encoder") +
           " initialization error " + InterfaceNumber() + ".";
}

std::string DVCodecSlot::CodingError() const
{
    return std::string(IsDVCPRO() ? "DVCPRO25" : "DV") + (IsDecoder() ? " Decode" : " Encode") +
           " Error " + InterfaceNumber() + "!";
}

DVCodecSlots::DVCodecSlots(uint32_t threads)
    : fSlots{DVCodecSlot(kDVEncoder, threads), DVCodecSlot(kDVDecoder, threads),
             DVCodecSlot(kDVCPROEncoder, threads), DVCodecSlot(kDVCPRODecoder, threads)}
{
}

DVCodecSlots::~DVCodecSlots()
{
    for (DVCodecSlot& slot : fSlots)
        slot.Close();
}

}  // namespace kelvane
