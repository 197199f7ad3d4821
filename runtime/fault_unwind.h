#pragma once
// What the compiler's unwinder knows about an address.

#include <cstdint>

namespace kor {

/// Whether an exception that is thrown at an instruction can find its way out.
bool canUnwindFrom(std::uintptr_t instruction);

}  // namespace kor
