#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "moving_picture.h"

namespace kelvane {

// The two picture sizes that are measured; the argument of a benchmark is the height.
inline constexpr int32_t kBenchWidth = 720;

inline size_t BenchBytes(const benchmark::State& state)
{
    return 4 * static_cast<size_t>(kBenchWidth) * static_cast<size_t>(state.range(0));
}

// Counts pictures a second, and bytes a second of the 32-bit picture that is read.
inline void CountPictures(benchmark::State& state, int64_t pictures_each = 1)
{
    const int64_t pictures = state.iterations() * pictures_each;
    state.SetItemsProcessed(pictures);
    state.SetBytesProcessed(pictures * static_cast<int64_t>(BenchBytes(state)));
}

// The interlaced test picture of frame `number`, upper field first, 720 by 576; benchmarks of a
// lower height use its upper lines.
inline std::vector<uint8_t> BenchPicture(int number)
{
    return DrawMovingPicture(kBenchWidth, 576, number, number + 0.5);
}

}  // namespace kelvane
