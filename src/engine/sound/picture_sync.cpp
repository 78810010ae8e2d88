#include "engine/sound/picture_sync.h"

#include <algorithm>
#include <cmath>

namespace kelvane {

namespace {

constexpr double kQuarter = 0.25;          // of a source frame
constexpr double kMostSamples = 8;         // more or less than its own in a frame
constexpr double kMostCorrection = 0.001;  // of the speed, 1 ms in a second
constexpr double kMostChange = 0.005;      // of the speed, in a second
constexpr double kSmoothing = 1.0;         // seconds, of each low pass
constexpr double kApproach = 4.0;          // seconds in which a small distance falls to a third

}  // namespace

void PictureSync::Smooth::Take(double value, double share)
{
    first += (value - first) * share;
    second += (first - second) * share;
}

PictureSync::PictureSync(const PicturePace& pace)
    : fPace(pace), fFollows(pace.speed != 1), fMeasured{pace.speed, pace.speed}, fSpeed(pace.speed)
{
}

// The source frame that an output frame shows.
double PictureSync::Shown(uint64_t frame) const
{
    return fPace.begin + static_cast<double>(frame) * fPace.step;
}

bool PictureSync::Follows(uint64_t given)
{
    const double apart = fMap.FrameAt(static_cast<double>(given)) - Shown(fFrame);
    fFollows = fFollows || std::fabs(apart) >= kQuarter;
    return fFollows;
}

uint32_t PictureSync::Samples(uint64_t given, size_t group, SampleRange range) const
{
    const auto samples = [group](double bytes) {
        return std::floor(bytes / static_cast<double>(group));
    };
    const double begin = samples(At(fFrame)), end = samples(At(fFrame + 1));
    const double own = end - begin;
    const double wanted = end - samples(static_cast<double>(given));
    const double taken = std::clamp(wanted, own - kMostSamples, own + kMostSamples);
    return static_cast<uint32_t>(std::clamp<double>(taken, range.least, range.most));
}

double PictureSync::Speed(double given, double bytes_a_second, double seconds)
{
    const double share = std::min(1.0, seconds / kSmoothing);
    const double own = At(fFrame + 1) - At(fFrame);
    fMeasured.Take(own / (bytes_a_second * seconds), share);
    fLead.Take((given - At(fFrame)) / bytes_a_second, share);
    if (!fFollows) return fSpeed;
    const double correction =
        std::clamp(-fLead.second / kApproach, -kMostCorrection, kMostCorrection);
    const double wanted = fMeasured.second + correction;
    const double most = kMostChange * seconds;
    fSpeed += std::clamp(wanted - fSpeed, -most, most);
    return fSpeed;
}

void PictureSync::Advance()
{
    fFrame++;
    fMap.Forget(Shown(fFrame) - 1);
}

}  // namespace kelvane
