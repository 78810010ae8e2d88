#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/threads/worker_pool.h"

namespace kelvane {

// Tells whether two pictures show the same scene: less than 60000001 of difference over all pixels.
class SceneTest {
public:
    SceneTest(size_t pixels, WorkerPool& pool) : fPixels(pixels), fPool(pool) {}

    // Begins a turn: forgets which pictures were found alike.
    void BeginTurn() { fCompared.clear(); }
    // Of 32-bit pictures.
    bool Alike(const uint8_t* a, const uint8_t* b);

private:
    struct Comparison {
        const uint8_t *a, *b;
        bool alike;
    };

    size_t fPixels;
    WorkerPool& fPool;
    std::vector<Comparison> fCompared;  // this turn
};

}  // namespace kelvane
