#pragma once
// The user's regional settings, from section "intl" of the system's profile.

namespace kor {

struct RegionalSettings {
    char decimal;  // a character of one byte, never 0
};

/// Read once, when first asked for: not while the library is loaded, when the system's loader holds its lock
/// and the program has not yet had the chance to choose its code page.
const RegionalSettings& regionalSettings();

}  // namespace kor
