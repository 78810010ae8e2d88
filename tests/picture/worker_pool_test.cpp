#include "picture/worker_pool.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(WorkerPool, RunsEachPartOnceHoweverOftenItIsUsed)
{
    for (int threads = 0; threads <= 8; threads++) {
        WorkerPool pool(threads);
        for (size_t parts = 0; parts < 40; parts++) {
            std::vector<int> runs(parts);
            pool.ForEach(parts, [&](size_t i) {
                if (parts % 8 == 0) std::this_thread::sleep_for(std::chrono::microseconds(300));
                runs[i]++;
            });
            ASSERT_EQ(std::vector<int>(parts, 1), runs) << threads << " threads";
        }
    }
}

}  // namespace
}  // namespace kelvane
