// A program that knows nothing but the installed package: an exception of the library reaches it by type, and
// so does a fault next to the guard.
#include <cstdio>

#include "korutil/error.h"
#include "korutil/fault_guard.h"

static int* volatile nowhere = nullptr;

__attribute__((noinline)) static int readInt(const int* from) { return *from; }

static bool translatesFaults() {
    try {
        const CKorWinToCException guard;
        std::printf("no fault: %d\n", readInt(nowhere));
    } catch (CKorException* exception) {
        exception->Delete();
        return true;
    }
    return false;
}

int main() {
    if (!translatesFaults()) return 2;
    try {
        appThrowArgumentError(4711);
    } catch (CKorException* exception) {
        std::printf("error 0x%x at %u\n", exception->GetErrorCode(), exception->GetErrorLocation());
        exception->Delete();
        return 0;
    }
    return 1;
}
