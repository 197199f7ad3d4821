#pragma once
// The lines of a registry file, read piece by piece.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace kor {

inline constexpr std::size_t kLongestRegistryLine = 1 << 20;  // bytes

struct RegistryLine {
    std::size_t number;     ///< from 1
    std::string_view text;  ///< UTF-8, without its line end
    const char* fault;      ///< why the text cannot be had; null when it is there
    bool opensKey;          ///< begins with a bracket, be there a fault or not
};

/// Takes a line. @return whether to go on
using RegistryLineTaker = std::function<bool(const RegistryLine&)>;

/// Makes lines of the pieces of a file. A mark at the start tells UTF-16 (little-endian) or UTF-8; without
/// one a file whose first line is "REGEDIT4" is in the ANSI code page, any other in UTF-8.
class RegistryLines {
  public:
    explicit RegistryLines(RegistryLineTaker take) : take_(std::move(take)) {}

    /// @param piece  of the file; the first one has its first three bytes
    /// @return whether more is wanted
    bool feed(std::string_view piece);

    /// The file has ended.
    void finish();

  private:
    enum class Encoding { unknown, ansi, utf8, utf16 };

    std::string_view withoutMark(std::string_view piece);
    std::string fromUtf16(std::string_view piece);
    bool splitLines(std::string_view text);
    bool endLine();

    RegistryLineTaker take_;
    Encoding encoding_ = Encoding::unknown;
    bool started_ = false;
    std::u16string units_;  // of UTF-16, what is left of the last piece: a surrogate whose second is to come
    std::string half_;      // the first byte of a unit
    std::string line_;
    std::size_t number_ = 1;
    bool tooLong_ = false;
};

}  // namespace kor
