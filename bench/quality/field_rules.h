#pragma once

#include <cstdint>

namespace kelvane {

// A way of resampling in time.
struct Method {
    const char* name;
    int32_t resampling;  // 0 nearest, 1 blend, 2 motion interpolation
    int32_t detail;      // 0 fine, 1 medium, 2 coarse
};

// What one field of an output frame shows: the source's field of this parity at the time `main`,
// mixed with `weight` 255ths of the one at `partner`. Times are in source frames; between whole
// numbers is what motion interpolation draws.
struct FieldByRule {
    double main, partner;
    int32_t weight;
};

// The best that a method can give with its rule for the choice of fields, for sources and targets
// with the lower field first. `field` is 0 for the first in time. Written from the rules and apart
// from the engine, so that the engine can be held against it.
FieldByRule ByRule(const Method& method, double position, double step, int field);

}  // namespace kelvane
