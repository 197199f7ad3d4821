// What only the native target translates, and its signals.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <thread>

#include "korutil/error.h"
#include "korutil/fault_guard.h"
#include "tests/runtime/fault_outcome.h"
#include "tests/runtime/faulting_module.h"

using namespace kor::test;

namespace {

int* volatile nowhere = nullptr;
const char* volatile noText = nullptr;

template <class Action>
DWORD guarded(Action action) {
    try {
        const CKorWinToCException guard;
        action();
    } catch (CKorException* e) {
        const DWORD code = e->GetErrorCode();
        e->Delete();
        return code;
    }
    return 0;
}

volatile sig_atomic_t seen = 0;
void countSignal(int) { seen = seen + 1; }

// Sets a signal's handler for a test's duration.
class Handler {
  public:
    Handler(int signal, void (*function)(int)) : signal_(signal) {
        struct sigaction action {};
        action.sa_handler = function;
        action.sa_flags = SA_ONSTACK;
        sigaction(signal, &action, &former_);
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    ~Handler() { sigaction(signal_, &former_, nullptr); }

  private:
    int signal_;
    struct sigaction former_ {};
};

sigjmp_buf afterFault;
void leaveFault(int) { siglongjmp(afterFault, 1); }

struct sigaction underneath {};
void handOn(int signal, siginfo_t* info, void* context) { underneath.sa_sigaction(signal, info, context); }

}  // namespace

TEST(FaultGuardNative, AStackOverflowIsTranslatedOnEveryThread) {
    for (const Faulting* code : {korFaulting(), faultingModule()}) {
        EXPECT_EQ(guarded([&] { code->recurse(0); }), EXCEPTION_STACK_OVERFLOW);
        DWORD onThread = 0;
        std::thread([&] {
            for (int round = 0; round < 2; ++round)
                onThread = guarded([&] { code->recurse(0); });
        }).join();
        EXPECT_EQ(onThread, EXCEPTION_STACK_OVERFLOW);
    }
}

TEST(FaultGuardNative, AnAccessBelowTheStackIsNoOverflow) {
    // A stack of our own, with what a thread may reach by a wild pointer right below it.
    constexpr std::size_t kPage = 4096;
    constexpr std::size_t kHalf = 512 * 1024;
    auto* memory = static_cast<char*>(VirtualAlloc(nullptr, 2 * kHalf, MEM_COMMIT, PAGE_READWRITE));
    ASSERT_NE(memory, nullptr);
    DWORD former = 0;
    ASSERT_TRUE(VirtualProtect(memory, kHalf, PAGE_NOACCESS, &former));
    ASSERT_TRUE(VirtualProtect(memory + kHalf - 2 * kPage, kPage, PAGE_READWRITE | PAGE_GUARD, &former));
    struct Told {
        const char* stack;
        DWORD beside, far, guard, again;
    } told{memory + kHalf, 0, 0, 0, 0};
    const auto body = [](void* argument) -> void* {
        auto* at = static_cast<Told*>(argument);
        const auto readBelow = [at](std::size_t distance) {
            const auto* from = reinterpret_cast<const int*>(at->stack - distance);
            return guarded([from] { korFaulting()->read(from); });
        };
        at->beside = readBelow(sizeof(int));
        at->far = readBelow(kHalf / 2);
        at->guard = readBelow(kPage + sizeof(int));
        at->again = readBelow(kPage + sizeof(int));
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstack(&attributes, memory + kHalf, kHalf), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, body, &told), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(told.beside, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(told.far, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(told.guard, STATUS_GUARD_PAGE_VIOLATION);
    EXPECT_EQ(told.again, 0u);
    EXPECT_TRUE(VirtualFree(memory, 0, MEM_RELEASE));
}

TEST(FaultGuardNative, AFaultInsideAPlainLibraryIsTranslated) {
    EXPECT_EQ(guarded([] { korFaulting()->measure(noText); }), EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(guarded([] { faultingModule()->measure(noText); }), EXCEPTION_ACCESS_VIOLATION);
    const auto compare = [](const void*, const void*) { return korFaulting()->read(nowhere); };
    EXPECT_EQ(guarded([&] { faultingModule()->compareAll(compare); }), EXCEPTION_ACCESS_VIOLATION);
}

TEST(FaultGuardNative, AFileThatShrankBelowItsMapIsAnInPageError) {
    char name[] = "/tmp/korutil-fault-XXXXXX";
    const int file = mkstemp(name);
    ASSERT_GE(file, 0);
    unlink(name);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    ASSERT_EQ(ftruncate(file, static_cast<off_t>(page)), 0);
    void* view = mmap(nullptr, page, PROT_READ, MAP_SHARED, file, 0);
    ASSERT_NE(view, MAP_FAILED);
    ASSERT_EQ(ftruncate(file, 0), 0);
    EXPECT_EQ(guarded([&] { korFaulting()->read(static_cast<const int*>(view)); }), EXCEPTION_IN_PAGE_ERROR);
    munmap(view, page);
    close(file);
}

TEST(FaultGuardNative, ASignalThatWasSentGoesToTheFormerHandler) {
    const Handler handler(SIGFPE, countSignal);
    seen = 0;
    EXPECT_EQ(guarded([] {
                  kill(getpid(), SIGFPE);
                  raise(SIGFPE);
              }),
              0u);
    EXPECT_EQ(seen, 2);
}

TEST(FaultGuardNative, AnUnguardedFaultGoesToTheFormerHandlerWhichMayLeaveIt) {
    const Handler handler(SIGSEGV, leaveFault);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(guarded([] { korFaulting()->read(nowhere); }), EXCEPTION_ACCESS_VIOLATION);
        if (sigsetjmp(afterFault, 1) == 0) {
            korFaulting()->read(nowhere);
            ADD_FAILURE() << "no fault";
        }
    }
}

TEST(FaultGuardNativeDeathTest, AHandlerPutOverOursMayHandOnToIt) {
    EXPECT_EXIT(
        {
            guarded([] { korFaulting()->read(nowhere); });
            struct sigaction over {};
            over.sa_sigaction = handOn;
            over.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
            sigaction(SIGSEGV, &over, &underneath);
            if (guarded([] { korFaulting()->read(nowhere); }) == EXCEPTION_ACCESS_VIOLATION) {
                korFaulting()->read(nowhere);
            }
        },
        DiedFrom(EXCEPTION_ACCESS_VIOLATION), "");
}
