#pragma once

#include <cstddef>

// Threads and memory that are not to be had, in all of a test program that links this.

namespace kelvane {

// From now on so many threads can be made and then no more; below 0 there is no limit.
void AllowThreads(int count);

// Threads that could not be made since then.
int ThreadsRefused();

// From now on the `number`th allocation of at least so many bytes fails, and all later ones with
// `lasting`; none with 0. Counted are those of C++ and the aligned ones of the codec libraries.
void FailAllocation(int number, size_t bytes = 1, bool lasting = false);

// True when it has come to that since then.
bool AllocationFailed();

}  // namespace kelvane
