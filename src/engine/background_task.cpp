#include "engine/background_task.h"

#include <utility>

namespace kelvane {

BackgroundTask::BackgroundTask(int threads)
{
    if (threads > 1) fThread = std::thread([this] { Serve(); });
}

BackgroundTask::~BackgroundTask()
{
    if (!fThread.joinable()) return;
    Wait();
    {
        std::lock_guard hold(fLock);
        fQuit = true;
    }
    fChanged.notify_all();
    fThread.join();
}

void BackgroundTask::Start(std::function<void()> work)
{
    if (!fThread.joinable()) return work();
    Wait();
    {
        std::lock_guard hold(fLock);
        fWork = std::move(work);
    }
    fChanged.notify_all();
}

void BackgroundTask::Wait()
{
    std::unique_lock hold(fLock);
    fChanged.wait(hold, [this] { return !fWork; });
}

void BackgroundTask::Serve()
{
    std::unique_lock hold(fLock);
    for (;;) {
        fChanged.wait(hold, [this] { return fQuit || fWork; });
        if (fQuit) return;
        hold.unlock();
        fWork();
        hold.lock();
        fWork = nullptr;
        fChanged.notify_all();
    }
}

}  // namespace kelvane
