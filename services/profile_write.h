#pragma once
// Which files a write goes to.

#include "services/profile_state.h"

namespace kor {

/// Hands the name of each file that a selector writes to `write`, the user profile first; ends at the first
/// failure. A file that is both profiles is written once.
/// @param write  (const char* file) -> BOOL
template <class Write>
BOOL writeToProfiles(UINT_PTR number, Write write) {
    const ProfileSelector selector = writeSelector(number);
    const ProfileState& state = profileState();
    if (selector.file()) return write(selector.file());
    if (selector.user()) {
        if (!write(state.user.data())) return FALSE;
        if (state.sameFile) return TRUE;
    }
    return selector.application() ? write(state.application.data()) : TRUE;
}

}  // namespace kor
