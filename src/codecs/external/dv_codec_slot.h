#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "base/status.h"
#include "codecs/external/dv_codec_entry.h"
#include "format/media_format.h"
#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

enum DVCodecRole { kDVEncoder = 0, kDVDecoder = 1, kDVCPROEncoder = 2, kDVCPRODecoder = 3 };

// One open external codec: an encoder or a decoder of DV or DVCPRO25. Opening is slow, so a slot
// stays open from file to file as long as the same codec is wanted for the same height. For one
// thread at a time.
class DVCodecSlot {
public:
    // `threads`: how many the codec may use.
    explicit DVCodecSlot(DVCodecRole role, uint32_t threads = 1) : fRole(role), fThreads(threads) {}

    // Opens the chosen codec for the television system, or keeps it open; with null the slot is
    // closed, which is no error. Pictures of 32 bits are tried first and then of 24, for some
    // codecs the other way round. kError when neither is taken; the slot is empty then.
    Status Bind(const DVCodecEntry* chosen, bool pal);
    void Close();

    bool IsOpen() const { return fCodec.IsOpen(); }
    // kBGRX32 or kBGR24.
    ColourSpace PictureSpace() const { return fSpace; }

    // Codes one picture, top row first, to one frame. A Video for Windows codec wants the bottom
    // row first: the picture's rows are then exchanged in place. kError when the codec fails.
    Status Encode(std::span<uint8_t> picture, std::span<uint8_t> frame);
    // Decodes one frame to one picture, top row first. `picture` is of exactly the right size.
    Status Decode(std::span<const uint8_t> frame, std::span<uint8_t> picture);

    // Words for the user when the last Bind, or the last call, failed.
    std::string OpenError() const;
    std::string CodingError() const;

private:
    bool IsDecoder() const { return fRole == kDVDecoder || fRole == kDVCPRODecoder; }
    bool IsDVCPRO() const { return fRole == kDVCPROEncoder || fRole == kDVCPRODecoder; }
    Status Open(const DVCodecEntry& entry, bool pal, ColourSpace space);
    const char* InterfaceNumber() const { return fIsDirectShow ? "#1" : "#2"; }

    DVCodecRole fRole;
    uint32_t fThreads;
    OpenedCodec fCodec;
    std::string fName;  // long name of the open codec
    bool fIsDirectShow = false;
    bool fTurnsRows = false;  // bottom row first around each call
    int32_t fHeight = 0;      // of its pictures
    size_t fRowBytes = 0;
    ColourSpace fSpace = kBGRX32;
};

// The four slots of a run. Closed in the order of the roles.
class DVCodecSlots {
public:
    explicit DVCodecSlots(uint32_t threads = 1);
    ~DVCodecSlots();
    DVCodecSlot& operator[](DVCodecRole role) { return fSlots[role]; }
    std::array<DVCodecSlot, 4>& All() { return fSlots; }

private:
    std::array<DVCodecSlot, 4> fSlots;
};

}  // namespace kelvane
