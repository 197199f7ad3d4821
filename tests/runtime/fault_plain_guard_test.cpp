// A guard in a file that is compiled without the options for fault translation: what faults lies in another.
#include <gtest/gtest.h>

#include "korutil/error.h"
#include "korutil/fault_guard.h"
#include "platform/win32.h"
#include "tests/runtime/faulting_module.h"

namespace {

int* volatile nowhere = nullptr;

struct Count {
    int& destroyed;
    ~Count() { ++destroyed; }
};

}  // namespace

TEST(FaultGuardPlain, AFaultInAnotherFileIsTranslatedAndCleansUp) {
    int destroyed = 0;
    for (int round = 1; round <= 3; ++round) {
        DWORD code = 0;
        try {
            const CKorWinToCException guard;
            const Count local{destroyed};
            korReadInt(nowhere);
        } catch (CKorException* e) {
            code = e->GetErrorCode();
            e->Delete();
        }
        EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(destroyed, round);
    }
}
