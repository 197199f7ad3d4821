#pragma once
// What the fault translation needs of virtual memory.

#include "korutil/platform.h"

/// Takes the guard off the page that holds an address, as the first access to it does. The handler of an
/// access fault asks this first: TRUE means the fault is STATUS_GUARD_PAGE_VIOLATION, and the page may be
/// used from now on. For faults of the calling thread's own instructions only: it takes the table's lock and
/// may allocate.
/// @return FALSE when there is no guarded page of ours
KORPLATFORM_API BOOL WINAPI korTakeGuardPage(LPCVOID address);
