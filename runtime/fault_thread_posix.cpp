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
constexpr std::uintptr_t kNear = 64 * 1024;          // of the stack pointer

struct StackBounds {
    std::uintptr_t low;    // of the thread's stack, guard pages included; 0 while not known
    std::uintptr_t guard;  // size of the guard pages
};
[[gnu::tls_model("initial-exec")]] thread_local StackBounds stackBounds{};

// The stacks that handlers run on, one a thread, for the rest of the thread's life. One that is there already
// and large enough is used as it is, and where memory is short a thread goes without. A key of the system
// ends them: a thread_local with a destructor ends the process when there is no memory to register it.
class HandlerStacks {
  public:
    HandlerStacks() : usable_(pthread_key_create(&key_, release) == 0) {}
    HandlerStacks(const HandlerStacks&) = delete;
    HandlerStacks& operator=(const HandlerStacks&) = delete;

    // The library may be unloaded. Other threads' stacks stay: only they themselves can put them away.
    ~HandlerStacks() {
        if (!usable_) return;
        usable_ = false;
        void* own = pthread_getspecific(key_);
        pthread_key_delete(key_);
        if (own) release(own);
    }

    void prepareThread() const {
        stack_t former{};
        if (!usable_ || pthread_getspecific(key_)) return;
        if (sigaltstack(nullptr, &former) != 0 || isLargeEnough(former)) return;
        void* memory =
            mmap(nullptr, kHandlerStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) return;
        *formerOf(memory) = former;
        stack_t ours{};
        ours.ss_sp = memory;
        ours.ss_size = kHandlerStackSize - kFormerSize;
        if (pthread_setspecific(key_, memory) == 0) {
            if (sigaltstack(&ours, nullptr) == 0) return;
            pthread_setspecific(key_, nullptr);
        }
        munmap(memory, kHandlerStackSize);
    }

  private:
    static constexpr std::size_t kFormerSize = 64;  // a multiple of what a stack is aligned to
    static_assert(sizeof(stack_t) <= kFormerSize);

    static bool isLargeEnough(const stack_t& stack) {
        return !(stack.ss_flags & SS_DISABLE) && stack.ss_size >= kLeastHandlerStackSize;
    }

    // What the thread had before stands above its stack.
    static stack_t* formerOf(void* memory) {
        return reinterpret_cast<stack_t*>(static_cast<char*>(memory) + kHandlerStackSize - kFormerSize);
    }

    static void release(void* memory) {
        stack_t current{};
        sigaltstack(nullptr, &current);
        if (current.ss_sp == memory && sigaltstack(formerOf(memory), nullptr) != 0) return;  // still on it
        munmap(memory, kHandlerStackSize);
    }

    pthread_key_t key_{};
    bool usable_;
};
HandlerStacks handlerStacks;

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
    handlerStacks.prepareThread();
    if (stackBounds.low == 0) findStackBounds();
}

bool hasStackOverflowed(std::uintptr_t address, std::uintptr_t stackPointer) {
    const StackBounds& stack = stackBounds;
    if (stack.low == 0 || address + kNear < stackPointer) return false;
    const std::uintptr_t least = stack.low - kBelowStack;
    const std::uintptr_t end = stack.low + stack.guard;
    return address >= least && address < end && stackPointer >= least && stackPointer < end + kNear;
}

}  // namespace kor
