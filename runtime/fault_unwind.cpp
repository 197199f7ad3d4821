#include "runtime/fault_unwind.h"

// The look-up that libgcc's unwinder itself uses; no header of the compiler declares it.
struct dwarf_eh_bases {
    void* text;
    void* data;
    void* function;
};
extern "C" const void* _Unwind_Find_FDE(void* address, dwarf_eh_bases* bases);

namespace kor {

bool canUnwindFrom(std::uintptr_t instruction) {
    dwarf_eh_bases bases{};
    return _Unwind_Find_FDE(reinterpret_cast<void*>(instruction), &bases) != nullptr;
}

}  // namespace kor
