#include "tests/support/failing_allocator.h"

#include <cerrno>
#include <cstddef>
#include <new>

#define INTERPOSED extern "C" __attribute__((visibility("default")))

// The allocator behind ours: a sanitizer's when the program is built with one, else the runtime's.
extern "C" {
void* __libc_malloc(std::size_t) noexcept;
void* __libc_calloc(std::size_t, std::size_t) noexcept;
void* __libc_realloc(void*, std::size_t) noexcept;
__attribute__((weak)) void* __interceptor_malloc(std::size_t) noexcept;
__attribute__((weak)) void* __interceptor_calloc(std::size_t, std::size_t) noexcept;
__attribute__((weak)) void* __interceptor_realloc(void*, std::size_t) noexcept;
void free(void*) noexcept;
}

namespace {

struct State {
    int left = 0;  // allocations until the one that fails; 0: none is to fail
    bool thenAll = false;
    bool happened = false;
};
constinit thread_local State state;

bool failsNow() {
    if (state.left == 0) return false;
    if (state.left > 1) {
        --state.left;
        return false;
    }
    if (!state.thenAll) state.left = 0;
    state.happened = true;
    errno = ENOMEM;
    return true;
}

}  // namespace

INTERPOSED void* malloc(std::size_t size) noexcept {
    if (failsNow()) return nullptr;
    return __interceptor_malloc ? __interceptor_malloc(size) : __libc_malloc(size);
}

INTERPOSED void* calloc(std::size_t count, std::size_t size) noexcept {
    if (failsNow()) return nullptr;
    return __interceptor_calloc ? __interceptor_calloc(count, size) : __libc_calloc(count, size);
}

INTERPOSED void* realloc(void* block, std::size_t size) noexcept {
    if (failsNow()) return nullptr;
    return __interceptor_realloc ? __interceptor_realloc(block, size) : __libc_realloc(block, size);
}

// A sanitizer brings operators of its own, which would pass by the functions above.
__attribute__((visibility("default"))) void* operator new(std::size_t size) {
    if (void* block = malloc(size != 0 ? size : 1)) return block;
    throw std::bad_alloc();
}
__attribute__((visibility("default"))) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return malloc(size != 0 ? size : 1);
}
__attribute__((visibility("default"))) void* operator new[](std::size_t size) { return operator new(size); }
__attribute__((visibility("default"))) void* operator new[](std::size_t size,
                                                            const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
__attribute__((visibility("default"))) void operator delete(void* block) noexcept { free(block); }
__attribute__((visibility("default"))) void operator delete(void* block, std::size_t) noexcept {
    free(block);
}
__attribute__((visibility("default"))) void operator delete[](void* block) noexcept { free(block); }
__attribute__((visibility("default"))) void operator delete[](void* block, std::size_t) noexcept {
    free(block);
}

// The dynamic loader's own memory: the leak check knows it only behind an allocator of its own.
INTERPOSED const char* __lsan_default_suppressions() { return "leak:ld-linux-x86-64"; }

namespace kor::test {

FailingAllocation::FailingAllocation(int nth, After after) { state = {nth, after == After::fails, false}; }

FailingAllocation::~FailingAllocation() { state = {}; }

bool FailingAllocation::happened() const { return state.happened; }

void FailingAllocation::stop() { state.left = 0; }

}  // namespace kor::test
