#pragma once
// What a thread needs before its faults can be handled: a stack for the handler, and the bounds of its own.

#include <cstdint>

namespace kor {

/// Prepares the calling thread, once, for the rest of its life.
void prepareFaultThread();

/// Whether an access to an address is the calling, prepared thread's stack overflowing: the address lies
/// where that stack ends or below, and so does, nearly, the stack pointer of the access. For the signal
/// handler.
bool hasStackOverflowed(std::uintptr_t address, std::uintptr_t stackPointer);

}  // namespace kor
