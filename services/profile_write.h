#pragma once
// Which files a write goes to.

#include "services/profile_state.h"

namespace kor {

/// Does what WritePrivateProfileStringA does. @return FALSE also for texts that the system cannot take
BOOL writeProfileText(const char* section, const char* key, const char* value, const char* file);

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
