#pragma once
// Finding the end of a path's folder in the text of any code page.

#include <cstddef>
#include <string_view>

#include "platform/win32.h"

namespace kor {

/// Where the last of the separators stands; npos when none does. The second byte of a double-byte character
/// may look like a backslash, so the text is walked from its start.
inline std::size_t lastSeparator(std::string_view text, std::string_view separators) {
    std::size_t found = std::string_view::npos;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsDBCSLeadByte(static_cast<BYTE>(text[at]))) {
            ++at;
        } else if (separators.find(text[at]) != std::string_view::npos) {
            found = at;
        }
    }
    return found;
}

/// Whether the text ends in one of the separators.
inline bool endsInSeparator(std::string_view text, std::string_view separators) {
    return !text.empty() && lastSeparator(text, separators) == text.size() - 1;
}

}  // namespace kor
