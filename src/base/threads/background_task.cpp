#include "base/threads/background_task.h"

#include <utility>

namespace kelvane {

namespace {

std::exception_ptr ThrownBy(const std::function<void()>& work)
{
    try {
        work();
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

}  // namespace

BackgroundTask::BackgroundTask(int threads)
{
    if (threads < 2) return;
    try {
        fThread = std::thread([this] { Serve(); });
    } catch (const std::exception&) {
        // No thread to be had: the caller does the work.
    }
}

BackgroundTask::~BackgroundTask()
{
    if (!fThread.joinable()) return;
    {
        std::lock_guard hold(fLock);
        fQuit = true;
    }
    fChanged.notify_all();
    fThread.join();
}

void BackgroundTask::Start(std::function<void()> work)
{
    Wait();
    if (!fThread.joinable()) {
        fThrown = ThrownBy(work);
        return;
    }
    {
        std::lock_guard hold(fLock);
        fWork = std::move(work);
    }
    fChanged.notify_all();
}

std::exception_ptr BackgroundTask::Settle()
{
    std::unique_lock hold(fLock);
    fChanged.wait(hold, [this] { return !fWork; });
    return std::exchange(fThrown, nullptr);
}

void BackgroundTask::Wait()
{
    if (const std::exception_ptr thrown = Settle()) std::rethrow_exception(thrown);
}

void BackgroundTask::Serve()
{
    std::unique_lock hold(fLock);
    for (;;) {
        fChanged.wait(hold, [this] { return fQuit || fWork; });
        if (!fWork) return;
        hold.unlock();
        std::exception_ptr thrown = ThrownBy(fWork);
        hold.lock();
        fThrown = std::move(thrown);
        fWork = nullptr;
        fChanged.notify_all();
    }
}

}  // namespace kelvane
