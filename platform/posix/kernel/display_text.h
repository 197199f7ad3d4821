#pragma once
// Texts of the code page on their way to a terminal or a log, which are UTF-8.

#include <string>

namespace kor {

/// The text in UTF-8; bytes that the code page does not define become replacement characters. Control
/// characters other than line breaks and tabs, which a terminal might obey, become "?".
std::string displayText(const char* text);

}  // namespace kor
