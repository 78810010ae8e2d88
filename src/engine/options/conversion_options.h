#pragma once

#include <cstdint>
#include <string>

#include "base/four_cc.h"
#include "codecs/external/dv_codec_entry.h"
#include "engine/options/conversion_settings.h"

namespace kelvane {

// Operations, `opselection` of the options.
inline constexpr auto kOperationToPAL = static_cast<uint32_t>(Operation::kToPAL);
inline constexpr auto kOperationToNTSC = static_cast<uint32_t>(Operation::kToNTSC);
inline constexpr auto kOperationConvert = static_cast<uint32_t>(Operation::kConvert);

// The options of a run as a person sets them, one member for each key of the settings that bears
// on a conversion, with its default. Choices are the numbers of menus, as they are kept. The
// command line and the application fill it; what becomes of it in the engine, and what a number
// means, is decided by FillConversionSettings alone.
struct ConversionOptions {
    uint32_t selection = 0;                  // code of the output format, see OutputFormats()
    uint32_t opselection = kOperationToPAL;  // operation
    int32_t mode = 0;                        // geometry mode; has no key and is never kept
    int32_t blendmode = 1;                   // time resampling
    int32_t motiondetail = 2;
    int32_t frameortime = 0;  // goes into limits_are_in_frame as it stands
    int32_t codec = -1;       // row of the codec menu for AVI
    int32_t qcodec = 0;       // row of the codec menu for QuickTime
    int32_t mcodec = 0;       // row of the codec menu for Matrox AVI
    int32_t inplace = 1;
    int32_t overwrite = 1;  // 0 never, 1 ask, 2 always
    int32_t aileave = 5;    // frames between two audio chunks
    int32_t srcmodwarning = 1;
    int32_t add_ptc = 0;
    int32_t add_idx1 = 1;
    int32_t qt_dvcp = 1;
    int32_t channeloptions = 4;
    int32_t sync = 1;      // sound follows its pictures
    int32_t sndkeep = 0;   // copies into frames keep their audio blocks
    int32_t channels = 0;  // which of a tape's four
    int32_t omfspec = 2;
    int32_t omfaudi = 1;
    int32_t srcint = 2;
    int32_t dstint = 0;
    int32_t deintPD = 1;
    int32_t wr486 = 0;
    int32_t Bafoch = 0;
    int32_t dataconv = 0;
    std::string from = "start";
    std::string to = "end";
    std::string last_output_folder = "<source folder>";
    std::string last_output_file = "<source>.avi";
    std::string DVencoder = "DV Video Encoder (DirectX)";
    std::string DVdecoder = "DV Video Decoder (DirectX)";
    std::string DVCPROencoder = "None";
    std::string DVCPROdecoder = "None";
};

// Translates the options into the record that the engine takes. The four codecs are looked up by
// name in `codecs`, which must outlive the settings; a name that is not installed gives null.
// `progress`, its cookie, the audio file and the two aspects are left as they are.
void FillConversionSettings(const ConversionOptions& options, const DVCodecLists& codecs,
                            ConversionSettings& settings);

}  // namespace kelvane
