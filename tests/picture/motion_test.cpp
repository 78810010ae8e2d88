#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <functional>
#include <map>

#include "picture/motion_interpolate.h"
#include "picture/random_picture.h"

namespace kelvane {
namespace {

// x, y, width, height and the way of a block.
using Vector = std::array<int32_t, 6>;

// A grey picture whose values are a function of the place.
Bytes Drawn(int32_t width, int32_t height, const std::function<double(int32_t, int32_t)>& value)
{
    Bytes picture;
    for (int32_t y = 0; y < height; y++)
        for (int32_t x = 0; x < width; x++)
            picture.insert(picture.end(), 4, static_cast<uint8_t>(value(x, y)));
    return picture;
}

// Soft hills without an edge, so that a walk downhill finds its way.
double Hills(double x, double y)
{
    return 128 + 60 * std::sin(x / 9) + 50 * std::sin(y / 11 + x / 40);
}

FieldView View(const Bytes& picture, int32_t width)
{
    const auto height = static_cast<int32_t>(picture.size() / 4) / width;
    return {picture.data(), picture.data() + picture.size(), width, width, height};
}

Bytes MovedHills(int32_t width, int32_t height, double dx, double dy)
{
    return Drawn(width, height, [=](int32_t x, int32_t y) { return Hills(x - dx, y - dy); });
}

// From a start that lies elsewhere, or at the block itself.
Vector Match(const Bytes& searched, const Bytes& reference, int32_t width, int32_t x, int32_t y,
             int32_t size, std::pair<int32_t, int32_t> away = {0, 0})
{
    static TriedPlaces tried;  // kept from search to search, as its users do
    const BlockVector v = BlockMatch(View(searched, width), View(reference, width), x, y, size,
                                     x + away.first, y + away.second, tried);
    return {v.x, v.y, v.width, v.height, v.dx, v.dy};
}

TEST(BlockCost, GivesUpAfterARowAboveTheBound)
{
    const Bytes a(2 * 8, 0), b = {1, 1, 1, 1, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 4};
    const BlockPair pair{a.data(), 8, b.data(), 8, 2, 2};  // rows of 8 and 25
    for (const BlockCostFunction cost : {BlockCost, plain::BlockCost}) {
        EXPECT_EQ(33u, cost(pair, kNoBound));
        EXPECT_EQ(33u, cost(pair, 33)) << "not above";
        EXPECT_EQ(kEarlyExitMark, cost(pair, 32));
        EXPECT_EQ(kEarlyExitMark, cost(pair, 0));
    }
}

TEST(BlockCost, FastFormGivesThePlainSum)
{
    std::mt19937 random(70);
    for (int round = 0; round < 2000; round++) {
        const auto size = static_cast<int32_t>(8u << random() % 3);
        const auto width = random() % 2 ? size : static_cast<int32_t>(1 + random() % 32);
        const auto height = static_cast<int32_t>(1 + random() % 32);
        const auto bytes = static_cast<size_t>(4 * width * height);
        const ExactBytes a = RandomBytes(bytes, random, random() % 4);
        const ExactBytes b = RandomBytes(bytes, random, random() % 4);
        const BlockPair pair{a.data(), 4 * width, b.data(), 4 * width, width, height};
        const auto bound = round % 2 ? kNoBound : static_cast<uint32_t>(random() % 100000000);
        ASSERT_EQ(plain::BlockCost(pair, bound), BlockCost(pair, bound));
    }
}

TEST(BlockMatch, FollowsAMovedPictureDownhill)
{
    const Bytes reference = MovedHills(128, 96, 0, 0), searched = MovedHills(128, 96, 7, -5);
    // The steps that the penalty is worth are taken: a block comes from 7 to the right, 5 above.
    EXPECT_EQ((Vector{32, 32, 32, 32, 7, -5}), Match(searched, reference, 128, 32, 32, 32));
    EXPECT_EQ((Vector{32, 32, 32, 32, 0, 0}), Match(reference, reference, 128, 32, 32, 32));
    const Bytes flat(reference.size(), 9), brighter(reference.size(), 10);
    EXPECT_EQ((Vector{32, 32, 32, 32, 0, 0}), Match(brighter, flat, 128, 32, 32, 32));
}

TEST(BlockMatch, CutsBlocksAtTheEdgeAndRejectsBadMatches)
{
    const Bytes dark(40 * 40 * 4, 0), light(dark.size(), 255);
    EXPECT_EQ((Vector{32, 32, 8, 8, 0, 0}), Match(dark, dark, 40, 32, 32, 32));
    // A bad match at any place: the block stays where it is, whole.
    EXPECT_EQ((Vector{8, 8, 32, 32, 0, 0}), Match(dark, light, 40, 8, 8, 32));
    EXPECT_EQ((Vector{32, 0, 8, 8, 0, 0}), Match(dark, light, 40, 32, 0, 8));
}

TEST(BlockMatch, SlidesOverTheLeftAndUpperEdgeWithoutPenalty)
{
    // Columns only; the searched picture lies one pixel to the left. The place (-1, -1) is the
    // first that leaves no difference, and as clipped it has not moved.
    const Bytes reference = Drawn(16, 16, [](int32_t x, int32_t) { return 10 * x; });
    const Bytes searched = Drawn(16, 16, [](int32_t x, int32_t) { return 10 * x + 10; });
    EXPECT_EQ((Vector{1, 1, 7, 7, -1, -1}), Match(searched, reference, 16, 0, 0, 8));
}

// The walk once more, straight from its rules: a map of places, no early end of a loop but the
// bound.
struct SlowWalk {
    struct Place {
        int x, y, cx, cy, bx, by, w, h;
        int64_t raw, cost;
    };

    Vector Run(int x, int y)
    {
        Place now = At(x, y, 0x7FFFFFFF);
        for (;;) {
            bool found = false;
            Place best = now;
            for (const auto& [dx, dy] :
                 {std::pair{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}}) {
                const Place next = At(now.x + dx, now.y + dy, best.raw);
                if (next.w < 1 || next.h < 1) continue;
                if (!found || next.cost < best.cost) best = next;
                found = true;
            }
            if (!found || now.cost <= best.cost) break;
            now = best;
        }
        if (now.cost > 3000000) now = {fX, fY, fX, fY, fX, fY, fSize, fSize, 0, 0};
        return {now.bx,
                now.by,
                std::min(now.w, fWidth - now.bx),
                std::min(now.h, fHeight - now.by),
                now.cx - now.bx,
                now.cy - now.by};
    }
    Place At(int x, int y, int64_t bound)
    {
        if (const auto seen = fSeen.find({x, y}); seen != fSeen.end()) return seen->second;
        Place p{x, y, x, y, fX, fY, fSize, fSize, 0, 0};
        if (p.cx < 0) p.w += p.cx, p.bx -= p.cx, p.cx = 0;
        if (p.cy < 0) p.h += p.cy, p.by -= p.cy, p.cy = 0;
        if (p.cx > fWidth - fSize) p.w -= p.cx - (fWidth - fSize);
        if (p.cy > fHeight - fSize) p.h -= p.cy - (fHeight - fSize);
        if (p.w < 1 || p.h < 1) return p;
        const auto byte = [](const Bytes& picture, int at) {
            return static_cast<size_t>(at) < picture.size() ? picture[static_cast<size_t>(at)] : 0;
        };
        for (int row = 0; row < p.h && p.raw <= bound; row++)
            for (int i = 0; i < 4 * p.w; i++) {
                const int difference = byte(fA, 4 * ((p.cy + row) * fWidth + p.cx) + i) -
                                       byte(fB, 4 * ((p.by + row) * fWidth + p.bx) + i);
                p.raw += difference * difference;
            }
        const bool given_up = p.raw > bound;
        if (given_up) p.raw = 0x30000000;
        p.cost = given_up ? p.raw : p.raw * fSize * fSize / (p.w * p.h);
        p.cost += 1500 * (std::abs(p.cx - fX) + std::abs(p.cy - fY));
        return fSeen[{x, y}] = p;
    }

    const Bytes &fA, &fB;
    const int fWidth, fHeight, fX, fY, fSize;
    std::map<std::pair<int, int>, Place> fSeen = {};
};

TEST(BlockMatch, WalksAsTheRulesSay)
{
    constexpr int32_t kWidth = 70, kHeight = 45;
    std::mt19937 random(73);
    const auto any = [&](int32_t count) { return static_cast<int32_t>(random() % count); };
    int moved = 0;
    for (int round = 0; round < 300; round++) {
        const int32_t size = 8 << round % 3;
        const double dx = any(31) - 15, wave = 1 + any(3);
        const Bytes a = Drawn(kWidth, kHeight, [&](int32_t x, int32_t y) {
            return Hills(wave * (x + dx), wave * y) + any(8);
        });
        const Bytes b = Drawn(
            kWidth, kHeight, [&](int32_t x, int32_t y) { return Hills(wave * x, wave * (y + 4)); });
        const int32_t at_x = any(kWidth) / size * size, at_y = any(kHeight) / size * size;
        const int32_t start_x = any(kWidth), start_y = any(kHeight);
        SlowWalk slow{a, b, kWidth, kHeight, at_x, at_y, size};
        const Vector found =
            Match(a, b, kWidth, at_x, at_y, size, {start_x - at_x, start_y - at_y});
        EXPECT_EQ(slow.Run(start_x, start_y), found);
        moved += found[4] != 0 || found[5] != 0;
    }
    EXPECT_LT(100, moved);
}

Bytes Interpolated(const Bytes& a, const Bytes& b, int32_t width, float t,
                   MotionDetail detail = MotionDetail::kCoarse, bool interlaced = false)
{
    MotionState state;
    Bytes out(a.size(), 0xAA);
    MotionInterpolate(state, a.data(), b.data(), width, View(a, width).height, interlaced,
                      out.data(), t, detail);
    return out;
}

// The middle of the rows of pictures of 128 by 128 pixels, as many rows left out as said.
void ExpectMiddle(const Bytes& expected, const Bytes& found, int tolerance, size_t rows)
{
    for (size_t y = rows; y < 128 - rows; y++)
        for (size_t i = 4 * (128 * y + 40); i < 4 * (128 * y + 88); i++)
            ASSERT_NEAR(expected[i], found[i], tolerance) << i / 4 % 128 << ", " << y;
}

TEST(MotionInterpolate, CopiesOnlyCloseToEitherPicture)
{
    const Bytes a(40 * 34 * 4, 0), b(a.size(), 255);
    EXPECT_EQ(a, Interpolated(a, b, 40, 0.0499f));
    EXPECT_EQ(b, Interpolated(a, b, 40, 0.9501f));
    // Blocks that don't match stay, and all pixels come from the forward pass: 255 + (-255 v >> 8)
    // with v = 243 and 12.
    EXPECT_EQ(Bytes(a.size(), 12), Interpolated(a, b, 40, 0.05f));
    EXPECT_EQ(Bytes(a.size(), 243), Interpolated(a, b, 40, 0.95f));
}

TEST(MotionInterpolate, MovesThePictureHalfWay)
{
    const Bytes a = MovedHills(128, 128, 0, 0), b = MovedHills(128, 128, 8, -4);
    const Bytes half = MovedHills(128, 128, 4, -2);
    for (const MotionDetail detail :
         {MotionDetail::kFine, MotionDetail::kMedium, MotionDetail::kCoarse}) {
        EXPECT_EQ(a, Interpolated(a, a, 128, 0.1f, detail)) << "the same picture stays as it is";
        // Small blocks weigh less against the penalty: a step may fall short.
        ExpectMiddle(half, Interpolated(a, b, 128, 0.5f, detail),
                     detail == MotionDetail::kCoarse ? 0 : 8, 40);
    }
}

TEST(MotionInterpolate, FieldsMoveApart)
{
    const auto drawn = [](double shift) {
        return Drawn(128, 128,
                     [=](int32_t x, int32_t y) { return Hills(y % 2 ? x : x - shift, y / 2 * 2); });
    };
    ExpectMiddle(drawn(4), Interpolated(drawn(0), drawn(8), 128, 0.5f, MotionDetail::kCoarse, true),
                 0, 0);
}

TEST(MotionInterpolate, FillsWhatNoPixelReachesWithAPlainMix)
{
    // The halves move apart. Holes get a + ((b - a) * v >> 8) with v = 128.
    MotionState state;
    const Bytes a = MovedHills(128, 96, 0, 0);
    const Bytes b =
        Drawn(128, 96, [](int32_t x, int32_t y) { return Hills(x < 64 ? x - 14 : x + 14, y); });
    Bytes out(a.size());
    MotionInterpolate(state, a.data(), b.data(), 128, 96, false, out.data(), 0.5f,
                      MotionDetail::kCoarse);
    size_t holes = 0;
    for (size_t i = 0; i < state.written.size(); i++) {
        if (state.written[i]) continue;
        holes++;
        ASSERT_EQ(a[4 * i] + ((b[4 * i] - a[4 * i]) * 128 >> 8), out[4 * i]) << i;
    }
    EXPECT_LT(0u, holes) << "the example has lost its holes";
}

TEST(MotionInterpolate, FastFormGivesThePlainBytesOnAnyNumberOfThreads)
{
    std::mt19937 random(72);
    MotionState fast_state, slow_state;
    for (const Size& size : {Size{1, 1}, {5, 3}, {33, 17}, {40, 70}, {97, 66}, {80, 64}, {31, 150}})
        for (int round = 0; round < 16; round++) {
            const double dx = static_cast<double>(random() % 21) - 10;
            const double dy = static_cast<double>(random() % 21) - 10;
            const Bytes hills = MovedHills(size.width, size.height, 0, 0);
            const Bytes moved = Drawn(size.width, size.height, [=](int32_t x, int32_t y) {
                return x > 40 ? Hills(x - dx, y - dy) : Hills(x + dy, y);
            });
            ExactBytes a = RandomBytes(hills.size(), random, random() % 4);
            ExactBytes b(hills.size(), random() % 4);
            if (round > 0) std::copy(hills.begin(), hills.end(), a.data());
            std::copy(moved.begin(), moved.end(), b.data());
            for (size_t noise = 0; noise < hills.size() / 50; noise++)
                b.data()[random() % b.size()] = static_cast<uint8_t>(random());
            const bool interlaced = round % 2;
            const float t = 0.05f + 0.9f * static_cast<float>(random() % 1000) / 1000;
            ExactBytes slow(a.size()), fast(a.size(), random() % 4);
            plain::MotionInterpolate(slow_state, a.data(), b.data(), size.width, size.height,
                                     interlaced, slow.data(), t, MotionDetail(round % 3));
            WorkerPool pool(1 + round % 8);
            MotionInterpolate(fast_state, a.data(), b.data(), size.width, size.height, interlaced,
                              fast.data(), t, MotionDetail(round % 3), &pool);
            ASSERT_EQ(slow, fast) << size.width << " by " << size.height << ", round " << round;
        }
}

}  // namespace
}  // namespace kelvane
