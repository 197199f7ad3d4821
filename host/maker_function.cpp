#include "host/maker_function.h"

#include <new>

#include "platform/win32.h"

namespace kor {

void (*findMakerFunction(const char* library, const char* name))() {
    const DWORD lastError = GetLastError();
    FARPROC found = nullptr;
    try {
        const HMODULE module = GetModuleHandleA(library);
        found = module ? GetProcAddress(module, name) : nullptr;
    } catch (const std::bad_alloc&) {
        // Natively a look-up takes memory. While it is short the embedded host does the work.
    }
    SetLastError(lastError);
    return reinterpret_cast<void (*)()>(found);
}

}  // namespace kor
