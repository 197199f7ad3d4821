#include "platform/posix/kernel/thread_stack.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace kor {
namespace {

constexpr std::uintptr_t kUnlimitedStack = 8 * 1024 * 1024;  // told for a stack without a limit

bool isMainThread() { return ::syscall(SYS_gettid) == ::getpid(); }

// The lowest page that holds memory; the end of the range when none does.
std::uintptr_t lowestUsed(const PageRange& pages) {
    std::array<unsigned char, 1024> present;
    for (std::uintptr_t at = pages.begin; at < pages.end; at += present.size() * kPageSize) {
        const std::size_t size = std::min<std::size_t>(pages.end - at, present.size() * kPageSize);
        if (::mincore(reinterpret_cast<void*>(at), size, present.data()) != 0) return at;
        for (std::size_t i = 0; i < size / kPageSize; ++i)
            if ((present[i] & 1) != 0) return at + i * kPageSize;
    }
    return pages.end;
}

}  // namespace

bool callingThreadStack(StackParts& parts) {
    if (isMainThread()) return false;
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0) return false;
    void* low = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    const bool known = ::pthread_attr_getstack(&attributes, &low, &size) == 0 &&
                       ::pthread_attr_getguardsize(&attributes, &guard) == 0;
    ::pthread_attr_destroy(&attributes);
    if (!known || size == 0) return false;
    const auto begin = reinterpret_cast<std::uintptr_t>(low);
    const PageRange usable{roundUp(begin, kPageSize), roundUp(begin + size, kPageSize)};
    parts.whole = {usable.begin - roundUp(guard, kPageSize), usable.end};
    const std::uintptr_t used = lowestUsed(usable);
    parts.guard = std::max(used - kPageSize, parts.whole.begin);
    return true;
}

StackParts mainStack(const PageRange& mapped, std::uintptr_t below) {
    rlimit limit{};
    const bool limited = ::getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    const std::uintptr_t most =
        limited ? std::max<std::uintptr_t>(roundDown(limit.rlim_cur, kPageSize), 1) : kUnlimitedStack;
    // Two pages at least, however far it has grown: one of reserve and the guard page.
    std::uintptr_t low = std::min(mapped.end - std::min(most, mapped.end), mapped.begin - 2 * kPageSize);
    low = std::min(std::max(low, below), mapped.begin);
    StackParts parts;
    parts.whole = {low, mapped.end};
    parts.guard = std::max(mapped.begin - kPageSize, low);
    return parts;
}

}  // namespace kor
