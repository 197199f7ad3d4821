#pragma once
// Texts of the code page that may be long, written in pieces, so that no second form of the whole is made.

#include <string>
#include <string_view>

#include "tools/korutil/output.h"

namespace kor::command {

/// Writes a text as it is, in UTF-8.
void writeText(Output& output, std::string_view bytes);

/// Writes a text as oneLine makes it.
void writeLine(Output& output, std::string_view bytes);

/// Writes a text in double quotes, as JSON has it.
void writeJsonText(Output& output, std::string_view bytes);

/// A text for messages, in UTF-8; cut where it is long.
std::string shownStart(std::string_view bytes);

}  // namespace kor::command
