#include "platform/posix/user/edit_text.h"

#include <algorithm>

#include "platform/posix/user/cut_text.h"

namespace kor {

void EditText::assign(std::string_view text) {
    text_.assign(text);
    start_ = end_ = caret_ = 0;
    starts_.clear();
}

void EditText::select(std::size_t from, std::size_t to) {
    from = characterStart(text_, from);
    to = characterStart(text_, to);
    caret_ = to;
    start_ = std::min(from, to);
    end_ = std::max(from, to);
}

EditText::Change EditText::replace(std::string_view text) {
    const std::size_t kept = text_.size() - (end_ - start_);
    const std::size_t room = limit_ > kept ? limit_ - kept : 0;
    const std::string_view fitting = text.substr(0, characterStart(text, std::min(room, text.size())));
    const Change change = fitting.size() < text.size()        ? Change::cut
                          : fitting.empty() && start_ == end_ ? Change::none
                                                              : Change::whole;
    text_.replace(start_, end_ - start_, fitting);
    start_ = end_ = caret_ = start_ + fitting.size();
    if (change != Change::none) starts_.clear();
    return change;
}

const std::vector<std::size_t>& EditText::starts() {
    if (!starts_.empty()) return starts_;
    std::vector<std::size_t> found{0};
    for (std::size_t at = 0; hasLines_ && (at = text_.find("\r\n", at)) != std::string::npos;)
        found.push_back(at += 2);
    starts_ = std::move(found);
    return starts_;
}

std::size_t EditText::lineCount() { return starts().size(); }

std::size_t EditText::lineAt(std::size_t position) {
    const auto after = std::upper_bound(starts().begin(), starts().end(), position);
    return static_cast<std::size_t>(after - starts_.begin()) - 1;
}

std::size_t EditText::lineStart(std::size_t line) { return starts()[line]; }

std::string_view EditText::line(std::size_t line) {
    const std::size_t start = lineStart(line), next = line + 1;
    if (next == lineCount()) return std::string_view(text_).substr(start);
    std::size_t end = starts_[next] - 2;
    if (end > start && text_[end - 1] == '\r') --end;
    return std::string_view(text_).substr(start, end - start);
}

}  // namespace kor
