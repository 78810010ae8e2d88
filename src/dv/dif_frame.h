#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "base/television.h"
#include "dv/dif_layout.h"

namespace kelvane {

struct Timecode {
    int32_t hours = 0;
    int32_t minutes = 0;
    int32_t seconds = 0;
    int32_t frames = 0;
};

// What the audio source pack of a frame says.
struct AudioInfo {
    uint32_t system = 0;       // 50 or 60
    uint32_t sample_rate = 0;  // hertz
    uint32_t samples = 0;      // a channel in this frame; 0 when the pack's rate is unknown
    uint32_t channels = 0;     // 2 or 4
};

// True for bytes that begin with a DIF block of the header section, the first of a frame (IEC
// 61834-2, SMPTE 314M).
bool BeginsWithHeaderBlock(std::span<const uint8_t> bytes);
// Of exactly one whole frame, by its header block and its size: true for 625/50, false for 525/60.
// Nothing of any other bytes.
std::optional<bool> SystemOfFrame(std::span<const uint8_t> bytes);

// Tapes begin with blank frames, which may be of another system and kind than the film. The first
// of so many frames that has video auxiliary data tells what a film is, else the first one.
inline constexpr int kFramesThatTell = 3;
bool HasVideoAux(std::span<uint8_t> frame);

using Pack = std::array<uint8_t, kPackSize>;

// Looks inside one DV frame in memory, whole (120000 or 144000 bytes) and of any content: it does
// not check a frame, but answers from the bytes that stand at the fixed places of IEC 61834 and
// SMPTE 314M, and never touches video blocks. What lies beyond the end of a short buffer reads as
// zero. Construct once, attach one frame after the other. For one thread at a time.
class DIFFrame {
public:
    explicit DIFFrame(uint8_t* frame = nullptr, uint32_t size = 0, bool copy = false)
    {
        AttachFrame(frame, size, copy);
    }

    // Points the object at a frame, which stays the caller's, or at a copy of it. With null it owns
    // 144000 zero bytes, and Size() is 0 all the same.
    void AttachFrame(uint8_t* frame, uint32_t size, bool copy = false);

    // 625/50 by the DSF bit of the header or the 50/60 flag of the VS pack; else 525/60.
    bool IsPAL();
    // DVCPRO of either rate by the APT field of the header; else DV.
    bool IsDVCPRO() const;
    // True for PAL DV; everything else is 4:1:1.
    bool Is420() { return IsPAL() && !IsDVCPRO(); }
    // 1 for 16:9, 0 for 4:3, -1 when the frame has no VSC pack. Callers test against zero, so that
    // a frame without the pack counts as 16:9; this is deliberate.
    int IsWidescreen();
    // Sets or clears the display select field of the first sequence's VSC pack, where it has one at
    // its usual place or behind a VS pack. The answers of the object do not change before the frame
    // is attached again.
    void SetWidescreen(bool wide);

    // As the VSC pack has it; none without the pack, nor where it has one field shown twice.
    std::optional<FieldOrder> GetFieldOrder();
    // Writes the field order into the VSC packs of all sequences, both fields shown. The answers
    // of the object do not change before the frame is attached again.
    void SetFieldOrder(FieldOrder order);

    // Copy the first pack of this id found in the subcode or audio blocks. False when there is
    // none.
    bool FindSubcodePack(uint8_t id, Pack& pack);
    bool FindAudioPack(uint8_t id, Pack& pack);
    // Digits are taken as they stand, beyond 9 too. False without a time code pack.
    bool GetTimecode(Timecode& timecode);
    // False without an audio source pack.
    bool GetAudioInfo(AudioInfo& info);

    // Copy the samples of the channels in `channelMask` (bit 0 is channel 1), 16-bit little-endian
    // and interleaved in channel order. Channels 3 and 4 are there at 32 kHz with four channels
    // only. Returns the bytes written, whole groups as far as `samples` has room; 0 for a frame
    // without sound. Samples of 12 bits that were lost on tape are concealed, those of 16 bits not.
    size_t ExtractAudio(std::span<uint8_t> samples, uint32_t channelMask);
    // Writes sound of 16-bit little-endian interleaved samples over the frame's audio blocks, with
    // their AAUX packs, and returns the bytes used. Two channels; one, which both channels get; or
    // four at 32000 hertz, coded in 12 bits. More than 1944 (PAL) or 1620 (NTSC) samples are cut;
    // with fewer, the places behind them keep their bytes. A rate other than 32000, 44100 or 48000
    // ends the process with a line on standard output.
    size_t EmbedAudio(std::span<const uint8_t> samples, uint32_t rate, uint32_t channels);
    // Writes channels 1 and 2 of a whole frame of four channels, coded in 12 bits, with their AAUX
    // packs. The audio blocks of the other two channels stay as they are.
    void EmbedFirstPair(std::span<const uint8_t> samples);

    uint8_t* Frame() const { return fBytes.data(); }
    uint32_t Size() const { return fSize; }

private:
    static constexpr size_t kMaxPacks = std::size(kVideoAuxBlocks) * kVideoAuxPacks;

    uint8_t At(size_t offset) const { return offset < fBytes.size() ? fBytes[offset] : 0; }
    // Copies the pack at `offset` when it has this id.
    bool PackAt(size_t offset, uint8_t id, Pack& pack) const;
    // Sequences of the frame's television system that the buffer really holds.
    size_t Sequences();
    void ParseVideoAux();
    // PC1 to PC4 of a VAUX pack; null when the first sequence has none of this id.
    const std::array<uint8_t, 4>* VideoAuxPack(uint8_t id);

    std::span<uint8_t> fBytes;  // what may be read and written
    uint32_t fSize = 0;         // as the caller gave it
    std::unique_ptr<uint8_t[]> fOwned;
    uint8_t fPackCount = 0;
    std::array<uint8_t, 256> fPackIndex{};  // place in fPackData, kNoPack when not seen
    std::array<std::array<uint8_t, 4>, kMaxPacks> fPackData{};
    bool fIndexValid = false;  // since the last AttachFrame
};

}  // namespace kelvane
