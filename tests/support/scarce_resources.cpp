#include "support/scarce_resources.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace kelvane {

namespace {

std::atomic<int> gThreadsLeft = -1;
std::atomic<int> gThreadsRefused = 0;
std::atomic<int> gUntilFailure = 0;  // 0: none to come
std::atomic<size_t> gSmallest = 0;
std::atomic<bool> gLasting = false;
std::atomic<bool> gFailed = false;

// Counts down to 0 and stays there, as it stays below; what it was before.
int CountDown(std::atomic<int>& counter)
{
    int was = counter;
    while (was > 0 && !counter.compare_exchange_weak(was, was - 1)) {
    }
    return was;
}

bool FailsNow(size_t bytes)
{
    if (bytes < gSmallest) return false;
    const bool first = CountDown(gUntilFailure) == 1;
    if (first) gFailed = true;
    return first || (gFailed && gLasting);
}

template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void AllowThreads(int count)
{
    gThreadsRefused = 0;
    gThreadsLeft = count;
}

int ThreadsRefused()
{
    return gThreadsRefused;
}

void FailAllocation(int number, size_t bytes, bool lasting)
{
    gUntilFailure = 0;
    gFailed = false;
    gSmallest = bytes;
    gLasting = lasting;
    gUntilFailure = number;
}

bool AllocationFailed()
{
    return gFailed;
}

}  // namespace kelvane

using namespace kelvane;

void* operator new(size_t bytes, const std::nothrow_t&) noexcept
{
    return FailsNow(bytes) ? nullptr : malloc(bytes ? bytes : 1);
}

void* operator new(size_t bytes)
{
    void* const memory = operator new(bytes, std::nothrow);
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    free(memory);
}

void operator delete(void* memory, size_t) noexcept
{
    free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    free(memory);
}

extern "C" int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept
{
    static const auto real = Real<decltype(posix_memalign)>("posix_memalign");
    return FailsNow(bytes) ? ENOMEM : real(memory, alignment, bytes);
}

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) noexcept
{
    static const auto real = Real<decltype(pthread_create)>("pthread_create");
    if (CountDown(gThreadsLeft) != 0) return real(thread, attributes, body, argument);
    gThreadsRefused++;
    return EAGAIN;
}
