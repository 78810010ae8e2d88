#include "base/threads/worker_pool.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "support/scarce_resources.h"

namespace kelvane {
namespace {

using std::chrono::milliseconds;

// How often each part is run.
std::vector<int> Runs(WorkerPool& pool, size_t parts)
{
    std::vector<int> runs(parts);
    pool.ForEach(parts, [&](size_t i) { runs[i]++; });
    return runs;
}

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

TEST(WorkerPool, WhatAPartThrowsReachesTheCallerWhenAllIsQuiet)
{
    for (int threads = 1; threads <= 4; threads++) {
        WorkerPool pool(threads);
        for (size_t bad = 0; bad < 20; bad++) {
            std::vector<int> runs(20);
            std::atomic<int> under_way = 0;
            const auto work = [&](size_t i) {
                under_way++;
                runs[i]++;
                // Others are in the middle of their parts when this one fails.
                std::this_thread::sleep_for(std::chrono::microseconds(i == bad ? 100 : 300));
                under_way--;
                if (i == bad) throw std::bad_alloc();
            };
            EXPECT_THROW(pool.ForEach(runs.size(), work), std::bad_alloc);
            EXPECT_EQ(0, under_way) << "parts that go on behind the caller's back";
            EXPECT_LE(*std::max_element(runs.begin(), runs.end()), 1);
            ASSERT_EQ(std::vector<int>(30, 1), Runs(pool, 30)) << threads << " threads";
        }
    }
}

TEST(WorkerPool, OfSeveralPartsThatThrowTheFirstIsHeardAndTheRestLeftOut)
{
    WorkerPool pool(2);
    std::atomic<size_t> begun = 0;
    std::string heard;
    try {
        pool.ForEach(100, [&](size_t i) {
            begun++;
            // Both threads are at work, and the other one throws much later.
            while (begun < 2)
                std::this_thread::yield();
            if (i == 1) std::this_thread::sleep_for(milliseconds(300));
            throw std::runtime_error("part " + std::to_string(i));
        });
    } catch (const std::runtime_error& error) {
        heard = error.what();
    }
    EXPECT_EQ("part 0", heard);
    EXPECT_EQ(2u, begun);
    EXPECT_EQ(std::vector<int>(10, 1), Runs(pool, 10)) << "and nothing is left of the other";
}

TEST(WorkerPool, ThreadsThatCannotBeMadeAreDoneWithout)
{
    for (int allowed = 0; allowed <= 3; allowed++) {
        AllowThreads(allowed);
        WorkerPool pool(4);
        AllowThreads(-1);
        EXPECT_EQ(size_t(allowed) + 1, pool.Threads());
        EXPECT_EQ(std::vector<int>(100, 1), Runs(pool, 100));
    }
    // Memory runs out before, in the middle of and behind the making of threads.
    bool failed = true;
    for (int number = 1; failed; number++) {
        FailAllocation(number);
        WorkerPool pool(4);
        failed = AllocationFailed();
        FailAllocation(0);
        EXPECT_EQ(failed, pool.Threads() < 4);
        EXPECT_EQ(std::vector<int>(100, 1), Runs(pool, 100));
    }
}

}  // namespace
}  // namespace kelvane
