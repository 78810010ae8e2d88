#include "dv/dif_frame.h"

#include <algorithm>

#include "dv/audio_rates.h"

namespace kelvane {

namespace {

constexpr uint8_t kDisplaySelect = 0x07;  // in PC2 of the VSC pack; 0 is 4:3
constexpr size_t kUsualVSC = 453;         // third VAUX block, pack 10
// In PC3 of the VSC pack. Field 1 is that of the lower lines in both systems.
constexpr uint8_t kBothFields = 0x80;       // FF; else one field is shown twice
constexpr uint8_t kLowerFieldFirst = 0x40;  // FS
constexpr uint8_t kInterlaced = 0x10;       // IL

int32_t Decimal(uint8_t packed, uint8_t tensMask)
{
    return (packed & 0x0F) + 10 * ((packed & tensMask) >> 4);
}

}  // namespace

void DIFFrame::AttachFrame(uint8_t* frame, uint32_t size, bool copy)
{
    fIndexValid = false;
    fSize = frame ? size : 0;
    const size_t room = frame ? size : kMaxDIFFrameSize;
    if (frame && !copy) {
        fOwned.reset();
        fBytes = {frame, room};
        return;
    }
    auto owned = std::make_unique<uint8_t[]>(room);
    if (frame) std::copy_n(frame, room, owned.get());
    fOwned = std::move(owned);
    fBytes = {fOwned.get(), room};
}

bool BeginsWithHeaderBlock(std::span<const uint8_t> bytes)
{
    return bytes.size() >= 3 && (bytes[0] & 0xE0) == 0 && (bytes[1] & 0xF7) == 0x07 &&
           bytes[2] == 0;
}

std::optional<bool> SystemOfFrame(std::span<const uint8_t> bytes)
{
    if (bytes.size() < kDIFBlockSize || !BeginsWithHeaderBlock(bytes)) return std::nullopt;
    const bool pal = (bytes[3] & 0x80) != 0;  // DSF
    const auto whole = static_cast<size_t>(SystemFor(pal).dv_frame_size);
    return bytes.size() == whole ? std::optional(pal) : std::nullopt;
}

bool HasVideoAux(std::span<uint8_t> frame)
{
    return DIFFrame(frame.data(), static_cast<uint32_t>(frame.size())).IsWidescreen() >= 0;
}

void DIFFrame::ParseVideoAux()
{
    fPackCount = 0;
    fPackIndex.fill(kNoPack);
    for (const size_t block : kVideoAuxBlocks) {
        for (size_t i = 0; i < kVideoAuxPacks; i++) {
            const size_t at = block + kVideoAuxPackAt + i * kPackSize;
            const uint8_t id = At(at);
            if (id == kNoPack || fPackCount == kMaxPacks) continue;
            fPackIndex[id] = fPackCount;
            for (size_t j = 0; j < 4; j++)
                fPackData[fPackCount][j] = At(at + 1 + j);
            fPackCount++;
        }
    }
    fIndexValid = true;
}

const std::array<uint8_t, 4>* DIFFrame::VideoAuxPack(uint8_t id)
{
    if (!fIndexValid) ParseVideoAux();
    return fPackIndex[id] == kNoPack ? nullptr : &fPackData[fPackIndex[id]];
}

bool DIFFrame::IsPAL()
{
    if (At(3) & 0x80) return true;  // DSF
    const auto* source = VideoAuxPack(kPackVideoSource);
    return source && (*source)[2] & 0x20;
}

bool DIFFrame::IsDVCPRO() const
{
    return At(4) & 0x07;  // APT
}

int DIFFrame::IsWidescreen()
{
    const auto* control = VideoAuxPack(kPackVideoSourceControl);
    if (!control) return -1;
    return (*control)[1] & kDisplaySelect ? 1 : 0;
}

void DIFFrame::SetWidescreen(bool wide)
{
    size_t change = 0;
    if (At(kUsualVSC) == kPackVideoSourceControl) {
        change = kUsualVSC + 2;
    } else {
        // Byte by byte, without regard to pack boundaries; the last pair wins. Both deliberate.
        for (size_t at = 240; at <= 481; at++)
            if (At(at) == kPackVideoSourceControl && At(at - kPackSize) == kPackVideoSource)
                change = at + 2;
    }
    if (change == 0 || change >= fBytes.size()) return;
    const auto others = static_cast<uint8_t>(fBytes[change] & ~kDisplaySelect);
    fBytes[change] = wide ? static_cast<uint8_t>(others | kDisplaySelect) : others;
}

std::optional<FieldOrder> DIFFrame::GetFieldOrder()
{
    const auto* control = VideoAuxPack(kPackVideoSourceControl);
    if (!control) return std::nullopt;
    const uint8_t flags = (*control)[2];
    if (!(flags & kInterlaced)) return FieldOrder::kProgressive;
    if (!(flags & kBothFields)) return std::nullopt;
    return flags & kLowerFieldFirst ? FieldOrder::kLowerFirst : FieldOrder::kUpperFirst;
}

// A progressive frame is shown as DV usually is, the lower field first.
void DIFFrame::SetFieldOrder(FieldOrder order)
{
    uint8_t flags = kBothFields;
    if (order != FieldOrder::kUpperFirst) flags |= kLowerFieldFirst;
    if (order != FieldOrder::kProgressive) flags |= kInterlaced;
    constexpr uint8_t kFlags = kBothFields | kLowerFieldFirst | kInterlaced;
    for (size_t sequence = 0; sequence < Sequences(); sequence++)
        for (const size_t block : kVideoAuxBlocks)
            for (size_t i = 0; i < kVideoAuxPacks; i++) {
                const size_t pack =
                    sequence * kDIFSequenceSize + block + kVideoAuxPackAt + i * kPackSize;
                if (fBytes[pack] != kPackVideoSourceControl) continue;
                uint8_t& control = fBytes[pack + 3];
                control = static_cast<uint8_t>((control & ~kFlags) | flags);
            }
}

size_t DIFFrame::Sequences()
{
    return std::min(IsPAL() ? kSequencesPAL : kSequencesNTSC, fBytes.size() / kDIFSequenceSize);
}

bool DIFFrame::PackAt(size_t offset, uint8_t id, Pack& pack) const
{
    if (At(offset) != id || offset + kPackSize > fBytes.size()) return false;
    std::copy_n(fBytes.begin() + static_cast<ptrdiff_t>(offset), kPackSize, pack.begin());
    return true;
}

bool DIFFrame::FindSubcodePack(uint8_t id, Pack& pack)
{
    for (size_t sequence = 0; sequence < Sequences(); sequence++)
        for (const size_t block : kSubcodeBlocks)
            for (size_t i = 0; i < kSubcodePacks; i++)
                if (PackAt(
                        sequence * kDIFSequenceSize + block + kSubcodePackAt + i * kSubcodePackStep,
                        id, pack))
                    return true;
    return false;
}

bool DIFFrame::FindAudioPack(uint8_t id, Pack& pack)
{
    for (size_t sequence = 0; sequence < Sequences(); sequence++)
        for (size_t block = 0; block < kAudioBlocks; block++)
            if (PackAt(AudioBlockAt(sequence, block) + kAudioPackAt, id, pack)) return true;
    return false;
}

bool DIFFrame::GetTimecode(Timecode& timecode)
{
    Pack pack;
    if (!FindSubcodePack(kPackTimecode, pack)) return false;
    timecode.frames = Decimal(pack[1], 0x30);
    timecode.seconds = Decimal(pack[2], 0x70);
    timecode.minutes = Decimal(pack[3], 0x70);
    timecode.hours = Decimal(pack[4], 0x30);
    return true;
}

bool DIFFrame::GetAudioInfo(AudioInfo& info)
{
    Pack pack;
    if (!FindAudioPack(kPackAudioSource, pack)) return false;
    const uint32_t size = pack[1] & 0x3F;
    const size_t rate = pack[4] >> 3 & 0x07;
    info.channels = pack[2] & 0x20 ? 4 : 2;
    info.system = pack[3] & 0x20 ? 50 : 60;
    info.sample_rate = 48000;
    info.samples = 0;  // an unknown rate is a success without samples
    if (rate < std::size(kAudioRates)) {
        info.sample_rate = kAudioRates[rate].rate;
        info.samples = size + kAudioRates[rate].For(info.system == 50).least;
    }
    return true;
}

}  // namespace kelvane
