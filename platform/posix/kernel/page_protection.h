#pragma once
// Protections of pages: the PAGE_* values and what the machine makes of them.

#include "korutil/platform/memory.h"

namespace kor {

/// Whether pages of ours may be given this protection.
bool isPageProtection(DWORD protect);

/// The PROT_* bits; none for a guarded page, whose first access has to fault.
int nativeProtection(DWORD protect);

/// The protection of an entry of the process map.
DWORD pageProtection(bool read, bool write, bool execute);

}  // namespace kor
