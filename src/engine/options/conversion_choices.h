#pragma once

#include <cstdint>

#include "base/four_cc.h"
#include "base/television.h"

namespace kelvane {

// What can be chosen for a conversion. The numbers are those of the menus, and of the record that
// is kept. One that has no name here is carried on as it is: an `else` or a `default` takes it.

enum class Operation : uint32_t {
    kToPAL = "2PAL"_4cc,
    kToNTSC = "2NTS"_4cc,
    kConvert = "CONV"_4cc,  // the source's standard stays
};

// The fields of the pictures made. The order of a source's is a FieldOrder.
enum class FieldTarget : int32_t {
    kAsSource = 0,
    kUpperFirst = 1,
    kLowerFirst = 2,
    kAdaptive = 3,   // deinterlaced where something moves
    kBlur = 4,       // deinterlaced with a blur
    kFixedBlur = 5,  // the same, always of one field; in no menu
};

constexpr bool IsDeinterlaced(FieldTarget target)
{
    return target >= FieldTarget::kAdaptive;
}

// True when the fields of the target follow each other as those of the source do.
constexpr bool IsSameOrder(FieldOrder source, FieldTarget target)
{
    return static_cast<int32_t>(source) == static_cast<int32_t>(target);
}

// True when source and target have opposite field orders.
constexpr bool FieldsSwap(FieldOrder source, FieldTarget target)
{
    return (source == FieldOrder::kUpperFirst && target == FieldTarget::kLowerFirst) ||
           (source == FieldOrder::kLowerFirst && target == FieldTarget::kUpperFirst);
}

enum class ResamplingMethod : int32_t { kNearest = 0, kBlend = 1, kMotion = 2, kPulldown = 3 };

// The kind of data of a DV destination.
enum class DataConversion : int32_t { kKeep = 0, kToDV = 1, kToDVCPRO25 = 2 };

// Where sound that goes with a source is looked for.
enum class CompanionSearch : int32_t { kNone = 0, kByName = 1, kInFile = 2 };

// Which of a tape's four channels (12 bits at 32 kHz) go on; tapes of two have no choice.
enum class ChannelChoice : int32_t {
    kAuto = 0,  // all where frames go to frames of the same standard, else 1 and 2
    k1And2 = 1,
    k3And4 = 2,
    kMix = 3,  // the mean of 1 and 3, and of 2 and 4
    kAll = 4,
};

// The shape of a picture.
enum class Aspect : int32_t { kAsSource = 0, k4x3 = 1, k16x9 = 2 };

}  // namespace kelvane
