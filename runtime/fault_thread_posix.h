#pragma once
// What a thread needs before its faults can be handled: a stack for the handler, and the bounds of its own.

namespace kor {

/// Prepares the calling thread, once, for the rest of its life.
void prepareFaultThread();

/// Whether an address lies where the calling, prepared thread's stack has overflowed to. For the signal
/// handler.
bool isBesideThreadStack(const void* address);

}  // namespace kor
