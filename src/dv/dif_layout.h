#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane {

// Layout of a 25 Mbit/s DV frame (IEC 61834-2, SMPTE 314M). All offsets are bytes.

inline constexpr size_t kDIFBlockSize = 80;        // 3 bytes of id, 77 of payload
inline constexpr size_t kDIFSequenceSize = 12000;  // 150 blocks
inline constexpr size_t kSequencesPAL = 12;
inline constexpr size_t kSequencesNTSC = 10;
inline constexpr size_t kMaxDIFFrameSize = kSequencesPAL * kDIFSequenceSize;

// Places of the blocks within a sequence.
inline constexpr size_t kSubcodeBlocks[] = {80, 160};
inline constexpr size_t kVideoAuxBlocks[] = {240, 320, 400};
inline constexpr size_t kFirstAudioBlock = 480;
inline constexpr size_t kAudioBlockStep = 1280;  // an audio block, then fifteen video blocks
inline constexpr size_t kAudioBlocks = 9;        // in a sequence

constexpr size_t AudioBlockAt(size_t sequence, size_t block)
{
    return sequence * kDIFSequenceSize + kFirstAudioBlock + block * kAudioBlockStep;
}

// Packs: an id byte and four data bytes, PC1 to PC4.
inline constexpr size_t kPackSize = 5;
inline constexpr uint8_t kNoPack = 0xFF;
inline constexpr size_t kSubcodePacks = 6;     // in a subcode block
inline constexpr size_t kSubcodePackAt = 6;    // within the block
inline constexpr size_t kSubcodePackStep = 8;  // a sync block: 3 bytes of id, then the pack
inline constexpr size_t kVideoAuxPacks = 15;   // in a VAUX block
inline constexpr size_t kVideoAuxPackAt = 3;
inline constexpr size_t kAudioPackAt = 3;     // one pack in each audio block
inline constexpr size_t kAudioSamplesAt = 8;  // samples follow the pack

enum PackId : uint8_t {
    kPackTimecode = 0x13,            // subcode
    kPackAudioSource = 0x50,         // AAUX AS
    kPackAudioSourceControl = 0x51,  // AAUX ASC
    kPackAudioRecDate = 0x52,
    kPackAudioRecTime = 0x53,
    kPackVideoSource = 0x60,         // VAUX VS
    kPackVideoSourceControl = 0x61,  // VAUX VSC
    kPackVideoRecDate = 0x62,
    kPackVideoRecTime = 0x63,
};

}  // namespace kelvane
