#pragma once
// The bytes of a settings file as one text with lines.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kor::profile {

class Content {
  public:
    /// @param bytes  of a file; those of a Unicode file, known by its byte-order mark, become UTF-8
    explicit Content(std::string bytes);

    std::string_view text() const { return text_; }
    bool isUnicode() const { return isUnicode_; }

    /// Whether it has no byte-order mark, but reads as UTF-8 with characters beyond ASCII.
    bool looksLikeUtf8() const;

    /// A part of the text in the code page; nothing when that cannot express it.
    std::optional<std::string> inPage(std::string_view part) const;

    /// Why the first character of a part that is none is none; empty when there is no such character.
    std::string faultIn(std::string_view part) const;

    /// The same of all section lines and settings of a Unicode file; empty for any other file.
    std::string faultInSettings() const;

    /// A part for messages: UTF-8, cut where it is long.
    std::string shown(std::string_view part) const;

  private:
    void takeUtf16(bool bigEndian);

    std::string text_;
    bool isUnicode_ = false;
};

}  // namespace kor::profile
