#include "base/threads/worker_pool.h"

#include <utility>

namespace kelvane {

namespace {

// Kernels of one frame follow each other within microseconds, while waking a thread takes tens of
// them: look that often before sleeping.
constexpr int kLooks = 200;

template <class Condition>
void LookFor(Condition condition)
{
    for (int i = 0; i < kLooks && !condition(); i++)
        std::this_thread::yield();
}

}  // namespace

WorkerPool::WorkerPool(int threads)
{
    try {
        for (int i = 1; i < threads; i++)
            fThreads.emplace_back([this] { Serve(); });
    } catch (const std::exception&) {
        // No more threads, or no more memory for them: the ones there are do the work.
    }
}

WorkerPool::~WorkerPool()
{
    {
        std::lock_guard hold(fLock);
        fQuit = true;
        fJobs++;
    }
    fOffered.notify_all();
    for (std::thread& thread : fThreads)
        thread.join();
}

bool WorkerPool::RunOne(std::unique_lock<std::mutex>& hold)
{
    if (fNext == fParts) return false;
    const size_t part = fNext++;
    const Call call = fCall;
    void* const body = fBody;
    hold.unlock();
    std::exception_ptr thrown;
    try {
        call(body, part);
    } catch (...) {
        thrown = std::current_exception();
    }
    hold.lock();
    if (thrown) {
        if (!fThrown) fThrown = std::move(thrown);
        fLeft -= fParts - fNext;
        fNext = fParts;
    }
    if (--fLeft == 0) fFinished.notify_one();
    return true;
}

void WorkerPool::Run(size_t parts, Call call, void* body)
{
    if (fThreads.empty() || parts < 2) {
        for (size_t part = 0; part < parts; part++)
            call(body, part);
        return;
    }
    std::unique_lock hold(fLock);
    fCall = call;
    fBody = body;
    fParts = parts;
    fNext = 0;
    fLeft = parts;
    fJobs++;
    fOffered.notify_all();
    while (RunOne(hold)) {
    }
    hold.unlock();
    LookFor([this] { return fLeft == 0; });
    hold.lock();
    fFinished.wait(hold, [this] { return fLeft == 0; });
    if (fThrown) std::rethrow_exception(std::exchange(fThrown, nullptr));
}

void WorkerPool::Serve()
{
    std::unique_lock hold(fLock);
    while (!fQuit) {
        while (RunOne(hold)) {
        }
        const size_t seen = fJobs;
        if (fQuit) return;
        hold.unlock();
        LookFor([&] { return fJobs != seen; });
        hold.lock();
        fOffered.wait(hold, [this] { return fQuit || fNext < fParts; });
    }
}

}  // namespace kelvane
