// A guard on a thread that has no memory left. A program of its own: its allocator fails on demand.
#include <gtest/gtest.h>

#include <thread>

#include "korutil/error.h"
#include "korutil/fault_guard.h"
#include "platform/win32.h"
#include "tests/runtime/faulting_module.h"
#include "tests/support/failing_allocator.h"

using kor::test::FailingAllocation;

namespace {

int* volatile nowhere = nullptr;

// The memory is there again when the fault is translated: the exception needs some.
DWORD guardedRead(int nth, FailingAllocation::After after, bool& happened) {
    DWORD code = 0;
    FailingAllocation failing(nth, after);
    try {
        const CKorWinToCException guard;
        happened = failing.happened();
        failing.stop();
        korReadInt(nowhere);
    } catch (CKorException* e) {
        code = e->GetErrorCode();
        e->Delete();
    }
    return code;
}

}  // namespace

TEST(FaultGuardShortage, AThreadsFirstGuardNeedsNoMemory) {
    for (const auto after : {FailingAllocation::After::succeeds, FailingAllocation::After::fails}) {
        bool happened = true;
        for (int nth = 1; happened && nth < 100; ++nth) {
            DWORD code = 0;
            std::thread([&] { code = guardedRead(nth, after, happened); }).join();
            EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION) << "allocation " << nth;
        }
        EXPECT_FALSE(happened);
    }
}
