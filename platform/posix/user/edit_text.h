#pragma once
// The text of an edit control: its selection, its limit, its lines.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kor {

class EditText {
  public:
    explicit EditText(bool hasLines) : hasLines_(hasLines) {}

    const std::string& text() const { return text_; }
    std::size_t start() const { return start_; }  ///< of the selection
    std::size_t end() const { return end_; }
    std::size_t caret() const { return caret_; }  ///< the selection's end that was given last
    std::size_t limit() const { return limit_; }
    void setLimit(std::size_t limit) { limit_ = limit; }

    /// Sets the whole text, without regard to the limit; nothing is selected.
    void assign(std::string_view text);

    /// Selects from one position to the other, in either order; SIZE_MAX is the end of the text.
    void select(std::size_t from, std::size_t to);
    void selectNothing() { start_ = caret_ = end_; }

    enum class Change { none, whole, cut };

    /// Puts a text, or what of it the limit admits, in the selection's place; nothing is selected after it.
    /// May throw std::bad_alloc, and has then changed nothing.
    Change replace(std::string_view text);

    std::size_t lineCount();
    std::size_t lineAt(std::size_t position);
    /// @param line  below the count
    std::size_t lineStart(std::size_t line);
    std::string_view line(std::size_t line);  ///< without its end

  private:
    const std::vector<std::size_t>& starts();

    bool hasLines_;
    std::string text_;
    std::size_t start_ = 0;
    std::size_t end_ = 0;
    std::size_t caret_ = 0;
    std::size_t limit_ = 30'000;
    std::vector<std::size_t> starts_;  // of the lines; empty when not known
};

}  // namespace kor
