#pragma once

#include <cstdint>

#include "base/four_cc.h"
#include "codecs/external/dv_codec_entry.h"
#include "format/media_format.h"

namespace kelvane {

// Operations, `op` of the settings.
inline constexpr uint32_t kOperationToPAL = "2PAL"_4cc;
inline constexpr uint32_t kOperationToNTSC = "2NTS"_4cc;
inline constexpr uint32_t kOperationConvert = "CONV"_4cc;

// Bits of `conversion_options`.
enum ConversionOption : uint32_t {
    kOptionInPlace = 0x1,
    kOptionIdx1 = 0x2,          // AVI destinations get an "idx1"
    kOptionNoPTC = 0x100,       // printed only
    kOptionOffsets64 = 0x200,   // QuickTime with 64-bit offsets
    kOptionAudioTrack = 0x400,  // QuickTime with a separate audio track
    kOptionDVCP = 0x800,        // QuickTime: "dvcp" in place of "dvc "
    kOptionOMF2 = 0x40000,      // OMF revision 2.0
    kOptionOMFEmbedAudio = 0x100000,
    kOptionOMFAudioFile = 0x200000,
    kOptionSoftDV = 0x400000,  // QuickTime: the SoftDV row was chosen
    kOptionLines486 = 0x800000,
    kOptionFieldOrderChange = 0x1000000,
};

// `dv_data_conversion`.
enum DataConversion : int32_t { kKeepDataKind = 0, kConvertToDV = 1, kConvertToDVCPRO25 = 2 };

// `type_of_destination` of ConvertFile.
enum DestinationType : int32_t {
    kDestinationNone = 0,
    kDestinationCanopus1 = 1,
    kDestinationAVI1 = 2,
    kDestinationAVI1OpenDML = 3,
    kDestinationAVI2 = 4,
    kDestinationAVI2OpenDML = 5,
    kDestinationAVI1Reference = 6,
    kDestinationAVI2Reference = 7,
    kDestinationRawDV = 8,
    kDestinationES3 = 9,
    kDestinationQuickTime = 10,
    kDestinationCanopus2 = 100,
    kDestinationMatrox = 101,
    kDestinationDU1 = 102,
    kDestinationOMF = 103,
};

// Every option of one conversion. Filled once for a run over a list of files. The engine always
// converts whole files with both stereo pairs: the limits and the channel mask are carried only.
struct ConversionSettings {
    bool limits_are_in_frame = true;  // else in seconds
    int64_t from_video_frame = 0;
    int64_t to_video_frame = 0;        // -1 is the end
    int32_t four_channel_options = 0;  // mask of the channels wanted
    uint32_t conversion_options = 0;   // ConversionOption bits
    uint32_t codec = 0;  // output compressor, 0 none: a RIFF code for AVI, a QuickTime type else
    int32_t audio_interleave_factor = 0;  // frames between two chunks of a separate audio track
    int32_t audio_search = 0;             // companion audio: 0 none, 1 by name, other: audio_file
    const char* audio_file = nullptr;
    int32_t dv_data_conversion = 0;            // DataConversion
    const DVCodecEntry* dv_encoder = nullptr;  // null: none is set
    const DVCodecEntry* dv_decoder = nullptr;
    const DVCodecEntry* dvcpro_encoder = nullptr;
    const DVCodecEntry* dvcpro_decoder = nullptr;
    uint32_t op = 0;             // kOperationToPAL, kOperationToNTSC or kOperationConvert
    int32_t mode = 0;            // geometry mode, by operation
    int32_t timeresampling = 0;  // 0 nearest, 1 blend, 2 motion interpolation, 3 pulldown
    int32_t src_interlace = 0;   // 0 progressive, 1 upper field first, 2 lower field first
    int32_t dst_interlace = 0;   // 0 as source, 1, 2 as above, 3 adaptive, 4 blur deinterlace
    int32_t deinterlace_source_first = 0;
    int32_t src_aspect = 0;          // 0 detect, 1 is 4:3, 2 is 16:9
    int32_t dst_aspect = 0;          // 0 as source
    int32_t motiondetail = 0;        // 0 fine, 1 medium, 2 coarse
    MediaFormat destination_format;  // kind 0: DV at the destination's standard

    // True when what was DVCPRO25, or was not, is that afterwards.
    bool MakesDVCPRO25(bool was) const
    {
        return dv_data_conversion == kConvertToDVCPRO25 ||
               (dv_data_conversion == kKeepDataKind && was);
    }
};

}  // namespace kelvane
