#include "engine/background_task.h"

#include <gtest/gtest.h>

#include <future>
#include <numeric>
#include <vector>

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

}  // namespace
}  // namespace kelvane
