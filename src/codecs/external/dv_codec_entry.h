#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// One external codec as the user sees and chooses it.
struct DVCodecEntry {
    std::string long_name;  // with " (VfW)" or " (DirectX)" behind it; the name that is chosen
    std::string short_name;
    bool can_configure = true;  // both are taken as given, whatever the codec answers
    bool can_show_about = true;
    bool is_directshow = false;  // else Video for Windows
    bool is_decoder = false;
    uint32_t type = 0;  // the codes by which the codec is opened
    uint32_t handler = 0;
    uint32_t flags = 0;  // of the codec's information
    CodecDriver driver;
};

using DVCodecList = std::vector<DVCodecEntry>;

// All external codecs for DV, built once at start: Video for Windows first, then DirectShow.
struct DVCodecLists {
    DVCodecList encoders;
    DVCodecList decoders;
};

// Add what the loaded modules offer to `list`; both answer the number of entries added. With
// `onlyDV` a codec whose handler is not one of DV is passed over.
int EnumerateVfW(const CodecDrivers& drivers, DVCodecList& list, bool decoders, bool onlyDV);
int EnumerateDirectShow(const CodecDrivers& drivers, DVCodecList& list, bool decoders);
// The first Video for Windows codec of this handler. False when there is none.
bool FindVfW(const CodecDrivers& drivers, DVCodecEntry& entry, uint32_t handler, bool decoder);

DVCodecLists ListDVCodecs(const CodecDrivers& drivers);

// The entry of this long name; null when there is none.
const DVCodecEntry* FindByName(const DVCodecList& list, const std::string& longName);

// True for the handlers of DV and their byte-reversed forms, which drivers and files both use.
bool IsDVDriver(uint32_t handler);

}  // namespace kelvane
