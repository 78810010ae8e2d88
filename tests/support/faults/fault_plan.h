#pragma once

#include <dlfcn.h>

namespace kelvane::faults {

// Which call is to go wrong, and how, comes from the environment:
//
//   KELVANE_FAULT_CALL    open create read write seek truncate sync close rename memory thread
//   KELVANE_FAULT_PATH    file calls count on files whose path contains this text only
//   KELVANE_FAULT_AT      number of the call, from 1; without it nothing fails
//   KELVANE_FAULT_HOW     EIO ENOSPC EDQUOT EINTR EAGAIN ENOMEM: fails so;
//                         short: half of the bytes, the next call fails; half: half of the bytes,
//                         no more; bad: a page in the middle of what is read cannot be read from
//                         now on; shrink: the file is made shorter before the call
//   KELVANE_FAULT_ON      when set, all later calls go wrong too
//   KELVANE_FAULT_COUNTS  file that gets the numbers of calls at the end, "read 33" a line
enum Call {
    kOpen,
    kCreate,
    kRead,
    kWrite,
    kSeek,
    kTruncate,
    kSync,
    kClose,
    kRename,
    kMemory,
    kThread,
    kCalls,
};

enum class Fate { kPass, kFail, kHalf, kBad, kShrink };

// What is to become of this call; counts it. Where the fate is kFail, Error() tells errno's value.
Fate FateOf(Call call);
Fate FateOf(Call call, const char* path);
Fate FateOf(Call call, int file);
int Error(Call call);

// Cuts the file off after nine twentieths of its length, in the middle of a frame.
void Shrink(int file);

// The function of this name behind ours.
template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace kelvane::faults
