#include "fault_plan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kelvane::faults {

namespace {

constexpr const char* kNames[kCalls] = {"open", "create", "read",   "write",  "seek",  "truncate",
                                        "sync", "close",  "rename", "memory", "thread"};
constexpr struct {
    const char* name;
    int error;
} kErrors[] = {{"EIO", EIO},     {"ENOSPC", ENOSPC}, {"EDQUOT", EDQUOT},
               {"EINTR", EINTR}, {"EAGAIN", EAGAIN}, {"ENOMEM", ENOMEM}};

const char* Text(const char* name)
{
    const char* text = getenv(name);
    return text ? text : "";
}

struct Plan {
    const char* call = Text("KELVANE_FAULT_CALL");
    const char* path = Text("KELVANE_FAULT_PATH");
    const char* how = Text("KELVANE_FAULT_HOW");
    const char* counts = Text("KELVANE_FAULT_COUNTS");
    long at = strtol(Text("KELVANE_FAULT_AT"), nullptr, 10);
    bool on = *Text("KELVANE_FAULT_ON") != 0;

    bool Is(const char* way) const { return strcmp(how, way) == 0; }
};

// Read at the first call, which may be an allocation: nothing here allocates.
const Plan& ThePlan()
{
    static const Plan plan;
    return plan;
}

std::atomic<long> gCounts[kCalls];

class KeepErrno {
public:
    ~KeepErrno() { errno = fErrno; }

private:
    int fErrno = errno;
};

bool PathOf(int file, char (&path)[4096])
{
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    if (length < 0) return false;
    path[length] = 0;
    return true;
}

__attribute__((destructor)) void TellCounts()
{
    FILE* file = *ThePlan().counts ? fopen(ThePlan().counts, "w") : nullptr;
    if (!file) return;
    for (int call = 0; call < kCalls; call++)
        fprintf(file, "%s %ld\n", kNames[call], gCounts[call].load());
    fclose(file);
}

}  // namespace

Fate FateOf(Call call)
{
    const Plan& plan = ThePlan();
    const long number = ++gCounts[call];
    if (plan.at <= 0 || strcmp(plan.call, kNames[call]) != 0 || number < plan.at)
        return Fate::kPass;
    const bool first = number == plan.at;
    if (plan.Is("short")) {
        if (first) return Fate::kHalf;
        return number == plan.at + 1 || plan.on ? Fate::kFail : Fate::kPass;
    }
    if (!first && !plan.on) return Fate::kPass;
    if (plan.Is("half")) return Fate::kHalf;
    if (plan.Is("bad")) return Fate::kBad;
    return plan.Is("shrink") ? Fate::kShrink : Fate::kFail;
}

Fate FateOf(Call call, const char* path)
{
    const char* text = ThePlan().path;
    return *text && strstr(path, text) ? FateOf(call) : Fate::kPass;
}

Fate FateOf(Call call, int file)
{
    const KeepErrno keep;
    char path[4096];
    return PathOf(file, path) ? FateOf(call, path) : Fate::kPass;
}

int Error(Call call)
{
    for (const auto& row : kErrors)
        if (ThePlan().Is(row.name)) return row.error;
    return call == kWrite ? ENOSPC : EIO;
}

void Shrink(int file)
{
    const KeepErrno keep;
    char path[4096];
    struct stat status;
    if (fstat(file, &status) != 0 || !PathOf(file, path)) return;
    if (truncate(path, status.st_size / 20 * 9) != 0) perror("kelvane-faults: shrink");
}

}  // namespace kelvane::faults
