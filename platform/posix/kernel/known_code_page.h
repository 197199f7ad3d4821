#pragma once
// The code pages that are known, and the ANSI code page among them.

#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/kernel/code_page.h"

namespace kor {

/// The ANSI code page's number.
UINT ansiCodePage();

/// @param number  1252, 932, 936, 65001, or CP_ACP and its kin for the ANSI code page
/// @return the page; null when it is not known, or its converter is not installed. The first use of 932 and
/// 936
///         may throw std::bad_alloc
const CodePage* codePage(UINT number);

/// The ANSI code page, for functions that cannot fail; ASCII when its converter is not installed or there is
/// no memory for it.
const CodePage& ansiPage();

/// Whole texts between the ANSI code page and UTF-8; nothing when any part is invalid or cannot be expressed.
std::optional<std::string> utf8FromText(std::string_view text);
std::optional<std::string> textFromUtf8(std::string_view utf8);

}  // namespace kor
