#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace kelvane {

// One piece of work done beside the caller's own. With `threads` below 2, or where no thread can be
// made, it is done at once by the caller, with the same result. For one caller.
class BackgroundTask {
public:
    explicit BackgroundTask(int threads);
    // Finishes what is under way.
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask&) = delete;
    BackgroundTask& operator=(const BackgroundTask&) = delete;

    // Waits for the work before, then starts this. What it uses must stay alone until Wait().
    void Start(std::function<void()> work);
    // Returns when nothing is under way. Throws what the work threw, once.
    void Wait();
    // Like Wait(), but hands over what the work threw instead: for destructors.
    std::exception_ptr Settle();

private:
    void Serve();

    std::mutex fLock;  // guards what follows
    std::condition_variable fChanged;
    std::function<void()> fWork;  // empty when nothing is under way
    std::exception_ptr fThrown;   // by the work before
    bool fQuit = false;
    std::thread fThread;  // not joinable: work is done by the caller
};

}  // namespace kelvane
