#pragma once

namespace kelvane {

// For destructors, out of which nothing may be thrown: what `work` throws, memory that is not to be
// had at most, is dropped. Whoever wants to know does the work before.
template <class Work>
void Quietly(Work work) noexcept
{
    try {
        work();
    } catch (...) {  // told by nobody
    }
}

}  // namespace kelvane
