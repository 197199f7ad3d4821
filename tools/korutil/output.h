#pragma once
// Standard output, with every failure to write noticed.

#include <string>
#include <string_view>

namespace kor::command {

class Output {
  public:
    /// Appends text; written in large pieces. @throws Failure when it cannot be written
    void write(std::string_view text);

    /// Writes what is left. A command that succeeded is done only after this. @throws Failure
    void flush();

  private:
    std::string pending_;
};

/// Makes a line of any text: the bytes of control characters become \xNN, so that no name can forge a second
/// line, and a backslash in front of x and two hexadecimal digits \x5C, so that the text can be had back.
std::string oneLine(std::string_view text);

/// Writes one line "korutil: TEXT" to standard error.
void reportLine(std::string_view text);

}  // namespace kor::command
