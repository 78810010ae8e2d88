#include "base/threads/background_task.h"

#include <gtest/gtest.h>

#include <future>
#include <new>
#include <numeric>
#include <vector>

#include "support/scarce_resources.h"

namespace kelvane {
namespace {

TEST(BackgroundTask, WithOneThreadTheCallerDoesTheWork)
{
    BackgroundTask task(1);
    std::thread::id worker;
    task.Start([&] { worker = std::this_thread::get_id(); });
    EXPECT_EQ(std::this_thread::get_id(), worker);
    task.Wait();
}

TEST(BackgroundTask, WithTwoThreadsWorkGoesOnBesideTheCallerOneAfterTheOther)
{
    std::vector<int> order, expected(101);  // written by one side at a time
    std::iota(expected.begin(), expected.end(), 0);
    std::thread::id worker;
    {
        BackgroundTask task(2);
        task.Wait();  // nothing is under way
        std::promise<void> go;
        task.Start([&] {
            go.get_future().wait();
            worker = std::this_thread::get_id();
            order.push_back(0);
        });
        go.set_value();  // reached only when Start does not wait for its own work
        for (int i = 1; i < 100; i++)
            task.Start([&order, i] { order.push_back(i); });
        task.Wait();
        ASSERT_EQ(100u, order.size());
        task.Start([&] { order.push_back(100); });
    }
    EXPECT_NE(std::this_thread::get_id(), worker);
    EXPECT_EQ(expected, order) << "work under way is finished by the destructor";
}

TEST(BackgroundTask, WorkThatWasNotYetBegunIsDoneByTheDestructorToo)
{
    int done = 0;
    for (int i = 0; i < 200; i++) {
        BackgroundTask task(2);
        task.Start([&] { done++; });
    }
    EXPECT_EQ(200, done);
}

// Nothing is left of what was thrown: good work goes on as ever.
void ExpectUsable(BackgroundTask& task)
{
    bool done = false;
    task.Start([&] { done = true; });
    task.Wait();
    EXPECT_TRUE(done);
}

TEST(BackgroundTask, WhatTheWorkThrowsReachesWhoeverWaits)
{
    const auto fail = [] { throw std::bad_alloc(); };
    for (const int threads : {1, 2}) {
        SCOPED_TRACE(threads);
        BackgroundTask task(threads);
        task.Start(fail);
        EXPECT_THROW(task.Wait(), std::bad_alloc);
        task.Wait();
        ExpectUsable(task);
        task.Start(fail);
        bool begun = false;
        EXPECT_THROW(task.Start([&] { begun = true; }), std::bad_alloc) << "Start waits too";
        task.Wait();
        EXPECT_FALSE(begun);
        ExpectUsable(task);
        task.Start(fail);
        EXPECT_TRUE(task.Settle());
        EXPECT_FALSE(task.Settle());
        ExpectUsable(task);
        task.Start(fail);  // nobody waits: the destructor keeps quiet about it
    }
}

TEST(BackgroundTask, WithoutAThreadToBeHadTheCallerDoesTheWork)
{
    for (const bool memory : {false, true}) {
        if (memory)
            FailAllocation(1);
        else
            AllowThreads(0);
        BackgroundTask task(2);
        EXPECT_TRUE(memory ? AllocationFailed() : ThreadsRefused() == 1);
        FailAllocation(0);
        AllowThreads(-1);
        std::thread::id worker;
        task.Start([&] { worker = std::this_thread::get_id(); });
        EXPECT_EQ(std::this_thread::get_id(), worker);
        ExpectUsable(task);
    }
}

}  // namespace
}  // namespace kelvane
