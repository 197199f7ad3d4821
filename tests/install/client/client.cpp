// A program that knows nothing but the installed package: an exception of the library reaches it by type.
#include <cstdio>

#include "korutil/error.h"

int main() {
    try {
        appThrowArgumentError(4711);
    } catch (CKorException* exception) {
        std::printf("error 0x%x at %u\n", exception->GetErrorCode(), exception->GetErrorLocation());
        exception->Delete();
        return 0;
    }
    return 1;
}
