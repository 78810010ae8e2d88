#pragma once

#include <cstdint>

#include "codecs/external/dv_codec_entry.h"
#include "engine/options/conversion_choices.h"
#include "format/media_format.h"
#include "picture/geometry.h"
#include "picture/motion_interpolate.h"

namespace kelvane {

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
    int64_t to_video_frame = 0;           // -1 is the end
    int32_t four_channel_options = 0;     // mask of the channels wanted
    uint32_t conversion_options = 0;      // ConversionOption bits
    uint32_t codec = 0;                   // output compressor as its file spells it, 0 none
    int32_t audio_interleave_factor = 0;  // frames between two chunks of a separate audio track
    CompanionSearch audio_search = CompanionSearch::kNone;
    const char* audio_file = nullptr;  // searched where audio_search is kInFile
    bool sound_follows = true;         // its pictures, where a tape's sound runs away from them
    bool sound_untouched = false;      // copies into frames keep their audio blocks bit for bit
    ChannelChoice channels = ChannelChoice::kAuto;
    DataConversion dv_data_conversion = DataConversion::kKeep;
    const DVCodecEntry* dv_encoder = nullptr;  // null: none is set
    const DVCodecEntry* dv_decoder = nullptr;
    const DVCodecEntry* dvcpro_encoder = nullptr;
    const DVCodecEntry* dvcpro_decoder = nullptr;
    Operation op{};
    GeometryMode mode = GeometryMode::kScale;
    ResamplingMethod timeresampling = ResamplingMethod::kNearest;
    FieldOrder src_interlace = FieldOrder::kProgressive;
    FieldTarget dst_interlace = FieldTarget::kAsSource;
    int32_t deinterlace_source_first = 0;
    Aspect src_aspect = Aspect::kAsSource;  // detected
    Aspect dst_aspect = Aspect::kAsSource;
    MotionDetail motiondetail = MotionDetail::kFine;
    MediaFormat destination_format;  // kind 0: DV at the destination's standard

    // True when what was DVCPRO25, or was not, is that afterwards.
    bool MakesDVCPRO25(bool was) const
    {
        return dv_data_conversion == DataConversion::kToDVCPRO25 ||
               (dv_data_conversion == DataConversion::kKeep && was);
    }
};

}  // namespace kelvane
