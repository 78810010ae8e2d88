#include "engine/options/output_formats.h"

#include <algorithm>
#include <iterator>

#include "base/four_cc.h"

namespace kelvane {

namespace {

constexpr OutputFormat kFormats[] = {
    {"mov-audio-64", "cqa6"_4cc, "QuickTime With Audio Track (64-bit Offsets)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov-audio", "cqa_"_4cc, "QuickTime With Audio Track (4 GB Limit)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov-64", "cq64"_4cc, "QuickTime Without Audio Track (64-bit Offsets)", ".mov",
     kDestinationQuickTime, CodecMenu::kQuickTime},
    {"mov", "cqt_"_4cc, "QuickTime Without Audio Track (4 GB Limit)", ".mov", kDestinationQuickTime,
     CodecMenu::kQuickTime},
    {"avi1", "ct1_"_4cc, "AVI Type1 (4 GB Limit)", ".avi", kDestinationAVI1, CodecMenu::kAVI},
    {"avi1-odml", "ct1o"_4cc, "AVI Type1/OpenDML", ".avi", kDestinationAVI1OpenDML,
     CodecMenu::kAVI},
    {"avi2", "ct2_"_4cc, "AVI Type2 (4 GB Limit)", ".avi", kDestinationAVI2, CodecMenu::kAVI},
    {"avi2-odml", "ct2o"_4cc, "AVI Type2/OpenDML", ".avi", kDestinationAVI2OpenDML,
     CodecMenu::kAVI},
    {"avi1-ref", "ct1r"_4cc, "Reference AVI Type1", ".avi", kDestinationAVI1Reference,
     CodecMenu::kAVI},
    {"avi2-ref", "ct2r"_4cc, "Reference AVI Type2", ".avi", kDestinationAVI2Reference,
     CodecMenu::kAVI},
    {"canopus1", "cbeo"_4cc, "Canopus AVI Type 1 (4 GB Limit)", ".avi", kDestinationCanopus1,
     CodecMenu::kNone},
    {"canopus2", "cbe2"_4cc, "Canopus AVI Type 2 (4 GB Limit)", ".avi", kDestinationCanopus2,
     CodecMenu::kNone},
    {"matrox", "cmat"_4cc, "Matrox DigiSuite/RT2500 AVI", ".avi", kDestinationMatrox,
     CodecMenu::kMatrox},
    {"dv", "crdv"_4cc, "Raw DV (.dv/.dif/.dvsd)", ".dv", kDestinationRawDV, CodecMenu::kNone},
    {"es3", "ces3"_4cc, "Sony ES-3 DV clip (.dv)", ".dv", kDestinationES3, CodecMenu::kNone},
    {"du1", "cmxf"_4cc, "Sony DSR-DU1/DR1000P file (.dvd)", ".dvd", kDestinationDU1,
     CodecMenu::kNone},
    {"omf", "comf"_4cc, "OMF (.omf)", ".omf", kDestinationOMF, CodecMenu::kNone},
};

}  // namespace

std::span<const OutputFormat> OutputFormats()
{
    return kFormats;
}

const OutputFormat* FindOutputFormat(uint32_t selection)
{
    const auto* row = std::ranges::find(kFormats, selection, &OutputFormat::selection);
    return row == std::end(kFormats) ? nullptr : row;
}

int32_t TypeOfDestination(uint32_t selection)
{
    const OutputFormat* row = FindOutputFormat(selection);
    return row ? row->type : kDestinationNone;
}

}  // namespace kelvane
