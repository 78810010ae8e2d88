#include "codecs/external/dv_codec_entry.h"

#include <algorithm>

#include "base/four_cc.h"

namespace kelvane {

namespace {

// Names are kept to what the settings and dialogs have room for.
constexpr size_t kLongestName = 127;

DVCodecEntry MakeEntry(const CodecDriver& driver)
{
    const ModuleCodec& codec = driver.codec;
    DVCodecEntry entry;
    entry.is_directshow = codec.codec_interface == kDirectShow;
    const std::string suffix = entry.is_directshow ? " (DirectX)" : " (VfW)";
    const auto named = [&](const char* name) {
        return std::string(name).substr(0, kLongestName - suffix.size()) + suffix;
    };
    entry.long_name = named(codec.long_name);
    entry.short_name = named(codec.short_name);
    entry.is_decoder = codec.is_decoder != 0;
    entry.type = codec.type;
    entry.handler = codec.handler;
    entry.flags = codec.flags;
    entry.driver = driver;
    return entry;
}

template <class Wanted>
int AddEntries(const CodecDrivers& drivers, DVCodecList& list, const Wanted& wanted)
{
    int added = 0;
    for (const CodecDriver& driver : drivers.codecs) {
        if (!wanted(driver.codec)) continue;
        list.push_back(MakeEntry(driver));
        added++;
    }
    return added;
}

bool IsVfW(const ModuleCodec& codec, bool decoder)
{
    return codec.codec_interface == kVideoForWindows && (codec.is_decoder != 0) == decoder;
}

}  // namespace

int EnumerateVfW(const CodecDrivers& drivers, DVCodecList& list, bool decoders, bool onlyDV)
{
    return AddEntries(drivers, list, [&](const ModuleCodec& codec) {
        return IsVfW(codec, decoders) &&
               (!onlyDV || (codec.type == "vidc"_4cc && IsDVDriver(codec.handler)));
    });
}

int EnumerateDirectShow(const CodecDrivers& drivers, DVCodecList& list, bool decoders)
{
    return AddEntries(drivers, list, [&](const ModuleCodec& codec) {
        return codec.codec_interface == kDirectShow && (codec.is_decoder != 0) == decoders;
    });
}

bool FindVfW(const CodecDrivers& drivers, DVCodecEntry& entry, uint32_t handler, bool decoder)
{
    for (const CodecDriver& driver : drivers.codecs) {
        if (!IsVfW(driver.codec, decoder) || driver.codec.handler != handler) continue;
        entry = MakeEntry(driver);
        return true;
    }
    return false;
}

DVCodecLists ListDVCodecs(const CodecDrivers& drivers)
{
    DVCodecLists lists;
    EnumerateVfW(drivers, lists.decoders, true, true);
    EnumerateVfW(drivers, lists.encoders, false, true);
    EnumerateDirectShow(drivers, lists.decoders, true);
    EnumerateDirectShow(drivers, lists.encoders, false);
    return lists;
}

const DVCodecEntry* FindByName(const DVCodecList& list, const std::string& longName)
{
    const auto at = std::ranges::find(list, longName, &DVCodecEntry::long_name);
    return at == list.end() ? nullptr : &*at;
}

bool IsDVDriver(uint32_t handler)
{
    static constexpr uint32_t kHandlers[] = {"dvsd"_4cc, "DVSD"_4cc, "CDVC"_4cc, "dvc "_4cc,
                                             "dvcp"_4cc, "dv25"_4cc, "DV25"_4cc, "AVdv"_4cc,
                                             "MDVF"_4cc, "DVCS"_4cc};
    return std::ranges::any_of(kHandlers, [&](uint32_t known) {
        return handler == known || handler == __builtin_bswap32(known);
    });
}

}  // namespace kelvane
