#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace kelvane {

// Threads that stay, for work that falls into independent parts. The caller of ForEach works too,
// so a pool of one has no thread of its own and runs everything in place. Work must not depend on
// which thread takes a part nor in what order; then its results don't depend on the size of the
// pool. One caller at a time; calls don't nest.
class WorkerPool {
public:
    // `threads` counts the caller; below 1 it is 1. Where so many can't be made, there are fewer.
    explicit WorkerPool(int threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    size_t Threads() const { return fThreads.size() + 1; }

    // Calls work(part) once for each part from 0 to parts - 1 and returns when all are done. When
    // one throws, parts that nobody has begun are left out, and what was thrown first reaches the
    // caller once no part is under way.
    template <class Work>
    void ForEach(size_t parts, Work&& work)
    {
        using Body = std::remove_reference_t<Work>;
        Run(
            parts, [](void* body, size_t part) { (*static_cast<Body*>(body))(part); },
            const_cast<void*>(static_cast<const void*>(&work)));
    }

private:
    using Call = void (*)(void*, size_t);

    void Run(size_t parts, Call call, void* body);
    void Serve();
    // Takes the next part and runs it, with the lock free meanwhile. False when none is left.
    bool RunOne(std::unique_lock<std::mutex>& hold);

    std::mutex fLock;  // guards the job
    std::condition_variable fOffered;
    std::condition_variable fFinished;
    Call fCall = nullptr;
    void* fBody = nullptr;
    size_t fParts = 0;
    size_t fNext = 0;            // part to be taken
    std::exception_ptr fThrown;  // by a part of this job, before any other
    bool fQuit = false;
    // Looked at without the lock by threads that wait a moment before they sleep.
    std::atomic<size_t> fJobs = 0;
    std::atomic<size_t> fLeft = 0;  // parts not yet done
    std::vector<std::thread> fThreads;
};

// Parts into which `rows` rows are best split; 1 without a pool, 0 without rows.
inline size_t BandCount(const WorkerPool* pool, size_t rows)
{
    constexpr size_t kBandsPerThread = 3;  // a thread that is held up leaves less behind
    const size_t threads = pool ? pool->Threads() : 1;
    return std::min(rows, threads == 1 ? 1 : kBandsPerThread * threads);
}

// WorkerPool::ForEach, in place without a pool.
template <class Work>
void ForEachPart(WorkerPool* pool, size_t parts, Work&& work)
{
    if (pool) return pool->ForEach(parts, work);
    for (size_t part = 0; part < parts; part++)
        work(part);
}

// Splits `rows` rows into bands and calls work(first, end) for each.
template <class Work>
void ForBands(WorkerPool* pool, size_t rows, Work&& work)
{
    const size_t bands = BandCount(pool, rows);
    ForEachPart(pool, bands, [&](size_t i) { work(rows * i / bands, rows * (i + 1) / bands); });
}

}  // namespace kelvane
