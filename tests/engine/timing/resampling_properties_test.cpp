// What holds for the pictures of every film, whatever the rules of time resampling are in detail:
// time does not run backwards, what is wanted is shown, and scenes stay apart.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <span>

#include "engine/timing/resampling_plan.h"
#include "engine/timing/time_position.h"

namespace kelvane {
namespace {

enum Method { kNearest, kBlend, kMotion, kPulldown };
enum Pace { kSameSystem, kUp, kDown };  // 25 to 29.97 frames a second is up
enum Fields { kNoFields, kUpper, kLower, kAdaptive };

struct Way {
    int direction, method, from, to;
    bool allow_field_order_change = false;

    bool Swaps() const { return FieldsSwap(FieldOrder(from), FieldTarget(to)); }
    bool HasFields() const { return from != kNoFields; }
    bool Deinterlaces() const { return HasFields() && to >= kAdaptive; }
    // Source fields become output fields at another rate.
    bool ResamplesFields() const
    {
        return direction != kSameSystem && HasFields() && !Deinterlaces();
    }
};

std::ostream& operator<<(std::ostream& out, const Way& way)
{
    constexpr const char* kMethods[] = {"nearest", "blend", "motion", "pulldown"};
    return out << (way.direction == kSameSystem ? "same system, "
                   : way.direction == kUp       ? "to NTSC, "
                                                : "to PAL, ")
               << kMethods[way.method] << ", fields " << way.from << " to " << way.to
               << (way.allow_field_order_change ? ", order may change" : "");
}

std::vector<Way> AllWays()
{
    std::vector<Way> ways;
    for (const int direction : {kSameSystem, kUp, kDown})
        for (const int method : {kNearest, kBlend, kMotion, kPulldown})
            for (const int from : {kNoFields, kUpper, kLower})
                for (const int to : {0, 1, 2, 3}) {
                    if (direction == kSameSystem && method == kPulldown) continue;
                    ways.push_back({direction, method, from, to});
                    if (method == kBlend) ways.push_back({direction, method, from, to, true});
                }
    return ways;
}

// One output picture, with source frames by their numbers.
struct Picture {
    int64_t index;
    double position;  // of the output frame in the source, frames
    double step;
    ResamplingPlan plan;
    std::array<int64_t, 4> number;  // of each neighbour
    FieldOrder order;

    int64_t Number(Neighbour neighbour) const { return number[size_t(neighbour)]; }
    const ResamplingPlan::Blend& BlendOf(int parity) const
    {
        if (plan.base == ResamplingPlan::kMix) return plan.blend_all;
        return parity == 0 ? plan.blend_even : plan.blend_odd;
    }
    Neighbour MainOf(int parity) const
    {
        return parity == 0 || plan.base == ResamplingPlan::kMix ? plan.even : plan.odd;
    }
    // Every source frame that has a part in it.
    std::set<int64_t> Parts() const
    {
        std::set<int64_t> parts;
        if (plan.base == ResamplingPlan::kInterpolate) {
            parts = {Number(Neighbour::kCurrent), Number(Neighbour::kNext)};
            if (plan.shift_field) parts.insert(Number(Neighbour::kPrevious));
            return parts;
        }
        for (const int parity : {0, 1}) {
            parts.insert(Number(MainOf(parity)));
            if (BlendOf(parity).weight > 0) parts.insert(Number(BlendOf(parity).partner));
        }
        return parts;
    }
    // When the lines of a parity were seen, in source frames.
    double SeenAt(int parity, int source_order) const
    {
        const bool second = source_order != kNoFields && (source_order == kUpper) == (parity == 1);
        const double offset = second ? 0.5 : 0;
        if (plan.base == ResamplingPlan::kInterpolate) {
            const bool earlier = plan.shift_field && plan.shifted_parity == parity;
            return double(Number(Neighbour::kCurrent)) + offset + double(plan.time) - earlier;
        }
        const auto main = double(Number(MainOf(parity)));
        const double way = double(Number(BlendOf(parity).partner)) - main;
        return main + offset + way * BlendOf(parity).weight / 256;
    }
    // The parity that is shown first, and of a deinterlaced picture the one that is kept.
    int First() const { return order == FieldOrder::kUpperFirst ? 0 : 1; }
    int Kept() const { return plan.sel != 0 ? 0 : 1; }
};

// The pictures of a film; the engine's ring begins and ends as here. `scene` numbers the scenes.
template <class Scene>
std::vector<Picture> PicturesOf(const Way& way, int64_t frames, Scene scene)
{
    ConversionSettings settings;
    settings.op = way.direction == kUp     ? Operation::kToNTSC
                  : way.direction == kDown ? Operation::kToPAL
                                           : Operation::kConvert;
    settings.timeresampling = ResamplingMethod(way.method);
    settings.src_interlace = FieldOrder(way.from);
    settings.dst_interlace = FieldTarget(way.to);
    TimePosition time(settings, way.direction != kDown, way.direction != kUp);
    ResamplingInput in;
    in.step = time.Step();
    in.method = settings.timeresampling, in.direction = Direction(way.direction);
    in.source_interlace = settings.src_interlace, in.target_interlace = settings.dst_interlace;
    in.allow_field_order_change = way.allow_field_order_change;
    std::vector<Picture> pictures;
    int64_t current = way.Swaps() ? 1 : 0;
    for (int64_t index = 0;; index++) {
        current += time.FramesToRead();
        if (current >= frames) return pictures;
        Picture picture;
        const int64_t last = frames - 1;
        picture.number = {std::max<int64_t>(current - 1, 0), current, std::min(current + 1, last),
                          std::min(current + 2, last)};
        in.position = time.Position();
        in.output_index = index;
        in.current_frame_number = current;
        picture.plan = DecideResampling(in, [&](Neighbour a, Neighbour b) {
            return scene(picture.Number(a)) == scene(picture.Number(b));
        });
        picture.index = index;
        picture.position = double(current) + in.position - std::floor(in.position + 0.00001);
        picture.step = in.step;
        picture.order = OutputFieldOrder(in);
        time.Advance(index, uint64_t(current) + 3);
        if (picture.plan.base != ResamplingPlan::kDrop) pictures.push_back(picture);
    }
}

int64_t OneScene(int64_t)
{
    return 0;
}

// Two films: the beginning of a long one, and one of which the end is seen.
constexpr int64_t kLong = 1300, kShort = 40;

TEST(ResamplingProperties, NoLinesGoBackInTime)
{
    for (const Way& way : AllWays())
        for (const int64_t frames : {kLong, kShort}) {
            SCOPED_TRACE(testing::Message() << way << ", frames " << frames);
            double seen[2] = {-1, -1};
            for (const Picture& picture : PicturesOf(way, frames, OneScene)) {
                for (const int parity : {0, 1}) {
                    ASSERT_LE(seen[parity], picture.SeenAt(parity, way.from) + 1e-9)
                        << "picture " << picture.index;
                    seen[parity] = picture.SeenAt(parity, way.from);
                }
            }
        }
}

// True where the fields are shown in the order in which they were seen. It is not so where the
// nearest field of a parity, or the one blended to it, lies on the far side of its moment; in
// pulldown, which shows three fields of a frame in a row as if nothing moved between them; and
// where its reverse weaves frames that have no fields, always with the lower one first.
bool ShowsFieldsInOrder(const Way& way)
{
    if (!way.HasFields()) return way.direction != kDown || way.method != kPulldown || way.to != 1;
    if (way.direction == kSameSystem || way.method == kMotion) return true;
    return way.direction == kDown && !way.allow_field_order_change;
}

TEST(ResamplingProperties, NoFieldIsShownBeforeOneThatWasSeenEarlier)
{
    for (const Way& way : AllWays())
        for (const int64_t frames : {kLong, kShort}) {
            if (way.Deinterlaces() || !ShowsFieldsInOrder(way)) continue;
            SCOPED_TRACE(testing::Message() << way << ", frames " << frames);
            double seen = -1;
            for (const Picture& picture : PicturesOf(way, frames, OneScene)) {
                // The last frame may be shown again, for want of another.
                if (picture.Number(Neighbour::kCurrent) == frames - 1) break;
                for (const int parity : {picture.First(), 1 - picture.First()}) {
                    ASSERT_LE(seen, picture.SeenAt(parity, way.from) + 1e-9)
                        << "picture " << picture.index;
                    seen = picture.SeenAt(parity, way.from);
                }
            }
        }
}

// Of a deinterlaced picture one field is kept, the nearest of all that the source has; of a whole
// frame it is the field of the even lines.
TEST(ResamplingProperties, ADeinterlacedPictureKeepsTheNearestField)
{
    for (const Way& way : AllWays()) {
        if (!way.Deinterlaces() || way.method == kPulldown) continue;
        SCOPED_TRACE(testing::Message() << way);
        for (const Picture& picture : PicturesOf(way, kShort, OneScene)) {
            if (picture.position > kShort - 2) break;
            const double seen = picture.SeenAt(picture.Kept(), way.from);
            ASSERT_LE(std::abs(seen - picture.position),
                      way.direction == kSameSystem ? 0.501 : 0.251)
                << "picture " << picture.index;
        }
    }
}

// How far what is seen may lie from what is wanted, in source frames.
double MostOff(const Way& way)
{
    if (way.direction == kSameSystem) return 0.001;
    switch (way.method) {
        case kNearest:
            return 0.501;  // of one parity there is a field in each frame
        case kBlend:
            // Of two fields one is not blended.
            return way.HasFields() ? 0.56 : 2 / 256.0;
        case kMotion:
            return 0.101;  // both fields are moved by the time of the first
        default:
            return 0.501;  // the half frame by which a step of 1.2 is rounded
    }
}

TEST(ResamplingProperties, WhatIsSeenIsNearWhatIsWanted)
{
    for (const Way& way : AllWays()) {
        // Pulldown keeps frames whole and drifts against the position; see below. Fields that may
        // change places are further off.
        if (way.Deinterlaces() || way.allow_field_order_change) continue;
        if (way.method == kPulldown && (way.direction == kUp || !way.HasFields())) continue;
        SCOPED_TRACE(testing::Message() << way);
        // A change of field order costs the time of a field.
        const double late = way.Swaps() ? 0.5 : 0;
        for (const Picture& picture : PicturesOf(way, kLong, OneScene)) {
            if (picture.position > kLong - 3) break;
            for (const int parity : {0, 1}) {
                const bool second =
                    picture.order != FieldOrder::kProgressive && parity != picture.First();
                const double wanted = picture.position + (second ? picture.step / 2 : 0) - late;
                ASSERT_NEAR(wanted, picture.SeenAt(parity, way.from), MostOff(way))
                    << "picture " << picture.index << " parity " << parity;
            }
        }
    }
}

// Six frames are made of five, of which each is wanted in its turn; over ninety minutes each
// picture that is wanted is there, and the film is as long as it was.
TEST(ResamplingProperties, PulldownShowsThePictureThatItWants)
{
    constexpr int64_t kNinetyMinutes = 90 * 60 * 25, kWanted[6] = {0, 1, -1, 2, 3, 4};
    for (const int from : {kNoFields, kUpper, kLower})
        for (const int to : {0, 1, 2, 3}) {
            const Way way = {kUp, kPulldown, from, to};
            SCOPED_TRACE(testing::Message() << way);
            const auto pictures = PicturesOf(way, kNinetyMinutes, OneScene);
            // With a change of field order the first frame is not shown.
            EXPECT_NEAR(161839, double(pictures.size()), way.Swaps() ? 1 : 0);
            for (const Picture& picture : pictures) {
                const int64_t wanted = kWanted[picture.index % 6];
                if (wanted < 0) continue;
                const auto shows = [&](Neighbour neighbour) {
                    return picture.Number(neighbour) % 5 == wanted;
                };
                ASSERT_TRUE(shows(picture.plan.even) || shows(picture.plan.odd))
                    << "picture " << picture.index;
                if (!way.Swaps()) {
                    ASSERT_EQ(picture.plan.even, picture.plan.odd);
                }
            }
        }
}

// True where all parts of a picture are compared. The rule of reverse pulldown for a change of
// field order does not.
bool KeepsScenesApart(const Way& way)
{
    return way.method != kPulldown || way.direction != kDown || !way.Swaps();
}

// One cut, wherever it falls against the pace: what is seen goes from one scene to the other once,
// and no picture holds both.
TEST(ResamplingProperties, ACutIsCrossedOnceAndNoPictureHoldsTwoScenes)
{
    for (const Way& way : AllWays()) {
        if (!KeepsScenesApart(way)) continue;
        SCOPED_TRACE(testing::Message() << way);
        const int64_t cuts = way.method == kBlend ? 500 : 60;
        for (int64_t cut = 1; cut <= cuts; cut++) {
            const auto scene = [=](int64_t frame) { return int64_t{frame >= cut}; };
            int64_t last = 0;
            for (const Picture& picture : PicturesOf(way, cut + 3, scene)) {
                const std::set<int64_t> parts = picture.Parts();
                ASSERT_EQ(scene(*parts.begin()), scene(*parts.rbegin()))
                    << "picture " << picture.index << ", cut at " << cut;
                ASSERT_LE(last, scene(*parts.begin())) << picture.index << ", cut at " << cut;
                last = scene(*parts.begin());
            }
            ASSERT_EQ(1, last) << cut;
        }
    }
}

}  // namespace
}  // namespace kelvane
