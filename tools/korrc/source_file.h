#pragma once
// Reading the compiler's sources: whole files, lines with their numbers, and errors that name both.

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korrc {

using Bytes = std::vector<std::uint8_t>;

/// A fault in a source, worded "FILE:LINE: reason" (or "FILE: reason").
class SourceError : public std::runtime_error {
  public:
    SourceError(const std::string& file, const std::string& reason) : runtime_error(file + ": " + reason) {}
    SourceError(const std::string& file, int line, const std::string& reason)
        : runtime_error(file + ":" + std::to_string(line) + ": " + reason) {}
};

Bytes readFile(const std::string& path);
void writeFile(const std::string& path, const Bytes& bytes);

struct Line {
    int number;
    std::string text;  // without its line end
};

/// The lines of a file that are neither empty nor comments (`#` first).
std::vector<Line> readLines(const std::string& path);

/// Decodes UTF-8; nothing when the bytes are not well-formed UTF-8.
std::optional<std::u16string> fromUtf8(std::string_view text);

/// A whole decimal number from 0 to `most`.
std::optional<unsigned> parseNumber(std::string_view text, unsigned most);

/// A path's folder with its separator ("" when it has none), and the rest.
std::string folderOf(const std::string& path);
std::string nameOf(const std::string& path);

}  // namespace korrc
