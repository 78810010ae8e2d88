// Allocations of more than a megabyte and new threads that fail on demand.
#include <pthread.h>

#include <cerrno>
#include <cstdlib>

#include "fault_plan.h"

using namespace kelvane::faults;

// The C library's own names: looking a name up allocates, so these may not be looked up.
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" void* __libc_memalign(size_t, size_t);

namespace {

bool Refused(size_t bytes)
{
    constexpr size_t kLarge = 1 << 20;
    return bytes > kLarge && FateOf(kMemory) != Fate::kPass;
}

void* NoMemory()
{
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {

void* malloc(size_t bytes) noexcept
{
    return Refused(bytes) ? NoMemory() : __libc_malloc(bytes);
}

void* calloc(size_t count, size_t bytes) noexcept
{
    size_t product = 0;
    const bool fits = !__builtin_mul_overflow(count, bytes, &product);
    return fits && Refused(product) ? NoMemory() : __libc_calloc(count, bytes);
}

void* realloc(void* memory, size_t bytes) noexcept
{
    return Refused(bytes) ? NoMemory() : __libc_realloc(memory, bytes);
}

void* aligned_alloc(size_t alignment, size_t bytes) noexcept
{
    return Refused(bytes) ? NoMemory() : __libc_memalign(alignment, bytes);
}

void* memalign(size_t alignment, size_t bytes) noexcept
{
    return aligned_alloc(alignment, bytes);
}

int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept
{
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
    void* const got = aligned_alloc(alignment, bytes);
    if (!got) return ENOMEM;
    *memory = got;
    return 0;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept
{
    static const auto real = Real<decltype(pthread_create)>("pthread_create");
    return FateOf(kThread) == Fate::kPass ? real(thread, attributes, body, argument) : EAGAIN;
}

}  // extern "C"
