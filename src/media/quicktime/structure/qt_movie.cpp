#include "media/quicktime/structure/qt_movie.h"

namespace kelvane {

const QTSampleDescription* QTTrack::Description() const
{
    return samples.descriptions.empty() ? nullptr : &samples.descriptions.front();
}

QTSampleDescription* QTTrack::Description()
{
    return samples.descriptions.empty() ? nullptr : &samples.descriptions.front();
}

uint32_t QTTrack::Format() const
{
    return static_cast<uint32_t>(Described(kDescriptionHead["data format"]));
}

uint64_t QTTrack::Described(const HeaderField& field) const
{
    const QTSampleDescription* description = Description();
    return description ? description->fields.Get(field) : 0;
}

uint32_t QTTrack::TimeScale() const
{
    return static_cast<uint32_t>(media_header.Get(kMediaHeader["time scale"]));
}

uint32_t QTTrack::SampleRate() const
{
    return static_cast<uint32_t>(Described(kSoundDescription["sample rate"]) >> 16);
}

void QTMovie::AddStreams(size_t track)
{
    if (tracks[track].video_header) streams.push_back({QTStream::kVideo, track});
    if (tracks[track].sound_header) streams.push_back({QTStream::kSound, track});
}

}  // namespace kelvane
