#include "engine/containers/container.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "media/describe/avi_description.h"
#include "media/describe/qt_description.h"
#include "media/describe/raw_dv_description.h"
#include "media/quicktime/qt_file.h"
#include "media/raw_dv/raw_dv_file.h"
#include "media/samples/aiff_file.h"
#include "media/samples/wav_file.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

using Head = std::array<uint8_t, kRawDVHeadSize>;

template <bool (*kCheck)(const char*)>
bool Is(const std::string& path)
{
    return kCheck(path.c_str());
}

template <bool (*kCheck)(const Head&)>
bool HeadIs(const std::string& path)
{
    Head head;
    return FileReadHead(path.c_str(), head.data(), head.size()) == int64_t{head.size()} &&
           kCheck(head);
}

template <bool (*kDescribe)(const char*, std::string&)>
bool Describe(const std::string& path, std::string& text)
{
    return kDescribe(path.c_str(), text);
}

// A QuickTime file whose head its own class did not accept.
bool HasQuickTimeAtom(const Head& head)
{
    return std::ranges::any_of(std::array{"moov", "wide", "mdat"}, [&](const char* type) {
        return memcmp(head.data() + 4, type, 4) == 0;
    });
}

bool HasDVHead(const Head& head)
{
    return IsRawDV(head.data(), head.size());
}

bool DescribeRaw(const std::string& path, std::string& text)
{
    text = DescribeRawDV(path.c_str());
    return !text.empty();
}

constexpr DestinationType kAVITypes[] = {
    kDestinationCanopus1,    kDestinationCanopus2,      kDestinationMatrox,
    kDestinationAVI1,        kDestinationAVI1OpenDML,   kDestinationAVI2,
    kDestinationAVI2OpenDML, kDestinationAVI1Reference, kDestinationAVI2Reference,
};
constexpr DestinationType kQuickTimeTypes[] = {kDestinationQuickTime};
constexpr DestinationType kRawDVTypes[] = {kDestinationRawDV};

// In the order of asking. A kind can have a second row with a weaker sign.
constexpr Container kContainers[] = {
    {kAVISource, Is<IsAVIFile>, Describe<DescribeAVI>, OpenAVISource, kAVITypes,
     CreateAVIDestination, AVIMediaFiles},
    {kQuickTimeSource, Is<IsQuickTimeFile>, Describe<DescribeQuickTime>, OpenQuickTimeSource,
     kQuickTimeTypes, CreateQuickTimeDestination, nullptr},
    {kWAVSource, Is<IsWAVFile>, Describe<DescribeWAV>, nullptr, {}, nullptr, nullptr},
    {kAIFFSource, Is<IsAIFFFile>, Describe<DescribeAIFF>, nullptr, {}, nullptr, nullptr},
    {kQuickTimeSource,
     HeadIs<HasQuickTimeAtom>,
     Describe<DescribeQuickTime>,
     OpenQuickTimeSource,
     {},
     nullptr,
     nullptr},
    {kRawDVSource, HeadIs<HasDVHead>, DescribeRaw, OpenRawDVSource, kRawDVTypes,
     CreateRawDVDestination, nullptr},
};

}  // namespace

const Container* ContainerOf(const std::string& path)
{
    const auto* row =
        std::ranges::find_if(kContainers, [&](const Container& known) { return known.is(path); });
    return row == std::end(kContainers) ? nullptr : row;
}

const Container* ContainerFor(int32_t type)
{
    const auto* row = std::ranges::find_if(kContainers, [&](const Container& known) {
        return std::ranges::find(known.types, type) != known.types.end();
    });
    return row == std::end(kContainers) ? nullptr : row;
}

}  // namespace kelvane
