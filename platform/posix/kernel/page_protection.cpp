#include "platform/posix/kernel/page_protection.h"

#include <sys/mman.h>

namespace kor {
namespace {

constexpr DWORD kModifiers = PAGE_GUARD | PAGE_NOCACHE;

}  // namespace

bool isPageProtection(DWORD protect) {
    switch (protect & ~kModifiers) {
        case PAGE_NOACCESS:
            return (protect & kModifiers) == 0;
        case PAGE_READONLY:
        case PAGE_READWRITE:
        case PAGE_EXECUTE:
        case PAGE_EXECUTE_READ:
        case PAGE_EXECUTE_READWRITE:
            return true;
        default:
            return false;
    }
}

int nativeProtection(DWORD protect) {
    if ((protect & PAGE_GUARD) != 0) return PROT_NONE;
    switch (protect & ~kModifiers) {
        case PAGE_READONLY:
            return PROT_READ;
        case PAGE_READWRITE:
            return PROT_READ | PROT_WRITE;
        case PAGE_EXECUTE:
            return PROT_EXEC;
        case PAGE_EXECUTE_READ:
            return PROT_READ | PROT_EXEC;
        case PAGE_EXECUTE_READWRITE:
            return PROT_READ | PROT_WRITE | PROT_EXEC;
        default:
            return PROT_NONE;
    }
}

DWORD pageProtection(bool read, bool write, bool execute) {
    if (execute) return write ? PAGE_EXECUTE_READWRITE : read ? PAGE_EXECUTE_READ : PAGE_EXECUTE;
    return write ? PAGE_READWRITE : read ? PAGE_READONLY : PAGE_NOACCESS;
}

}  // namespace kor
