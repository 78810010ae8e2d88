#include "engine/pictures/scene_test.h"

#include "picture/blend.h"

namespace kelvane {

namespace {

constexpr uint32_t kMostAlike = 60000000;  // difference of two pictures of one scene

}  // namespace

bool SceneTest::Alike(const uint8_t* a, const uint8_t* b)
{
    if (a == b) return true;
    for (const Comparison& done : fCompared)
        if ((done.a == a && done.b == b) || (done.a == b && done.b == a)) return done.alike;
    const bool alike = PictureDifference(a, b, fPixels, &fPool) <= kMostAlike;
    fCompared.push_back({a, b, alike});
    return alike;
}

}  // namespace kelvane
