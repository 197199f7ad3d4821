#include "runtime/fault_thread_posix.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>

namespace kor {
namespace {

constexpr std::size_t kHandlerStackSize = 256 * 1024;
constexpr std::size_t kLeastHandlerStackSize = 64 * 1024;
constexpr std::uintptr_t kBelowStack = 1024 * 1024;  // how far below its end a large frame may reach

struct StackBounds {
    std::uintptr_t low;    // of the thread's stack, guard pages included; 0 while not known
    std::uintptr_t guard;  // size of the guard pages
};
[[gnu::tls_model("initial-exec")]] thread_local StackBounds stackBounds{};

// The stack that a thread's handler runs on, for the rest of the thread's life. One that is there already and
// large enough is used as it is.
class HandlerStack {
  public:
    HandlerStack() {
        stack_t ours{};
        if (sigaltstack(nullptr, &former_) != 0 || isLargeEnough(former_)) return;
        void* memory =
            mmap(nullptr, kHandlerStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) return;
        ours.ss_sp = memory;
        ours.ss_size = kHandlerStackSize;
        if (sigaltstack(&ours, nullptr) == 0) {
            memory_ = memory;
        } else {
            munmap(memory, kHandlerStackSize);
        }
    }
    HandlerStack(const HandlerStack&) = delete;
    HandlerStack& operator=(const HandlerStack&) = delete;
    ~HandlerStack() {
        if (!memory_) return;
        stack_t current{};
        sigaltstack(nullptr, &current);
        if (current.ss_sp == memory_ && sigaltstack(&former_, nullptr) != 0) return;  // still running on it
        munmap(memory_, kHandlerStackSize);
    }

  private:
    static bool isLargeEnough(const stack_t& stack) {
        return !(stack.ss_flags & SS_DISABLE) && stack.ss_size >= kLeastHandlerStackSize;
    }

    stack_t former_{};
    void* memory_ = nullptr;
};

void findStackBounds() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
    void* low = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    if (pthread_attr_getstack(&attributes, &low, &size) == 0 &&
        pthread_attr_getguardsize(&attributes, &guard) == 0) {
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        stackBounds = {reinterpret_cast<std::uintptr_t>(low), guard + page};
    }
    pthread_attr_destroy(&attributes);
}

}  // namespace

void prepareFaultThread() {
    thread_local const HandlerStack handlerStack;
    if (stackBounds.low == 0) findStackBounds();
}

bool isBesideThreadStack(const void* address) {
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    const StackBounds& stack = stackBounds;
    return stack.low != 0 && at >= stack.low - kBelowStack && at < stack.low + stack.guard;
}

}  // namespace kor
