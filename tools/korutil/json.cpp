#include "tools/korutil/json.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "tools/korutil/utf8.h"

namespace kor::json {
namespace {

std::string positionOf(std::string_view source, std::size_t offset) {
    const std::string_view before = source.substr(0, offset);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    const std::size_t column = utf8::count(before.substr(start)) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": ";
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexDigit(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

class Reader {
  public:
    explicit Reader(std::string_view source) : source_(source) {}

    Value document() {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (source_.starts_with(kByteOrderMark)) at_ = kByteOrderMark.size();
        skipBlanks();
        Value root = value();
        skipBlanks();
        if (at_ != source_.size()) fail("nothing may follow the value");
        return root;
    }

  private:
    [[noreturn]] void failAt(std::size_t offset, std::string_view reason) const {
        throw Error(positionOf(source_, offset) + std::string(reason));
    }
    [[noreturn]] void fail(std::string_view reason) const {
        failAt(at_, at_ < source_.size() ? reason : std::string_view("the text ends too early"));
    }

    char peek() const { return at_ < source_.size() ? source_[at_] : '\0'; }

    bool take(char c) {
        if (at_ >= source_.size() || source_[at_] != c) return false;
        ++at_;
        return true;
    }

    void skipBlanks() {
        while (at_ < source_.size() &&
               std::string_view(" \t\r\n").find(source_[at_]) != std::string_view::npos)
            ++at_;
    }

    Value value() {
        Value result;
        result.offset_ = at_;
        switch (peek()) {
            case '{':
                object(result);
                break;
            case '[':
                array(result);
                break;
            case '"':
                result.kind_ = Kind::kString;
                result.content_ = std::make_unique<Value::Content>();
                string(result.content_->text, result.content_->bytes);
                break;
            case 't':
            case 'f':
                result.kind_ = Kind::kBoolean;
                result.truth_ = peek() == 't';
                word(result.truth_ ? "true" : "false");
                break;
            case 'n':
                word("null");
                break;
            default:
                result.kind_ = Kind::kNumber;
                result.digits_ = number();
        }
        return result;
    }

    void word(std::string_view expected) {
        if (!source_.substr(at_).starts_with(expected)) fail("a value is expected here");
        at_ += expected.size();
    }

    void enter() {
        if (++depth_ > kMaximumDepth) fail("nested too deeply");
        ++at_;
        skipBlanks();
    }

    void array(Value& result) {
        result.kind_ = Kind::kArray;
        result.content_ = std::make_unique<Value::Content>();
        enter();
        if (!take(']')) {
            do {
                skipBlanks();
                result.content_->items.push_back(value());
                skipBlanks();
            } while (take(','));
            if (!take(']')) fail("',' or ']' is expected here");
        }
        --depth_;
    }

    void object(Value& result) {
        result.kind_ = Kind::kObject;
        result.content_ = std::make_unique<Value::Content>();
        std::unordered_set<std::string> seen;
        enter();
        if (!take('}')) {
            do {
                skipBlanks();
                result.content_->names.push_back(name(seen));
                result.content_->items.push_back(value());
                skipBlanks();
            } while (take(','));
            if (!take('}')) fail("',' or '}' is expected here");
        }
        --depth_;
    }

    std::string name(std::unordered_set<std::string>& seen) {
        const std::size_t start = at_;
        if (peek() != '"') fail("a name in double quotes is expected here");
        std::string text;
        std::vector<std::size_t> unused;
        string(text, unused);
        if (!seen.insert(text).second) failAt(start, "the name \"" + text + "\" stands twice in one object");
        skipBlanks();
        if (!take(':')) fail("':' is expected here");
        skipBlanks();
        return text;
    }

    void string(std::string& text, std::vector<std::size_t>& bytes) {
        ++at_;
        while (!take('"')) {
            if (take('\\')) {
                escape(text, bytes);
                continue;
            }
            const utf8::Character character = utf8::at(source_, at_);
            if (character.length == 0) fail("the text is not UTF-8 here");
            if (character.code < 0x20) fail("a control character in a string must be written as an escape");
            text += source_.substr(at_, character.length);
            at_ += character.length;
        }
    }

    void escape(std::string& text, std::vector<std::size_t>& bytes) {
        constexpr std::string_view kLetters = "\"\\/bfnrt";
        constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
        if (take('u')) {
            unicodeEscape(text, bytes);
            return;
        }
        const std::size_t which = at_ < source_.size() ? kLetters.find(source_[at_]) : std::string_view::npos;
        if (which == std::string_view::npos) fail("there is no such escape");
        text += kMeanings[which];
        ++at_;
    }

    void unicodeEscape(std::string& text, std::vector<std::size_t>& bytes) {
        const std::size_t start = at_ - 2;
        char32_t code = fourDigits();
        if (code >= 0xD800 && code < 0xDC00 && source_.substr(at_).starts_with("\\u")) {
            at_ += 2;
            const char32_t low = fourDigits();
            if (low < 0xDC00 || low >= 0xE000) failAt(start, "half of a surrogate pair");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        if (code >= 0xD800 && code < 0xE000) failAt(start, "half of a surrogate pair");
        if (code >= 0x80 && code <= 0xFF) bytes.push_back(text.size());
        utf8::append(text, code);
    }

    char32_t fourDigits() {
        char32_t code = 0;
        for (int i = 0; i < 4; ++i, ++at_) {
            const int digit = hexDigit(peek());
            if (digit < 0) fail("four hexadecimal digits are expected here");
            code = code << 4 | static_cast<char32_t>(digit);
        }
        return code;
    }

    void digits() {
        if (!isDigit(peek())) fail("a digit is expected here");
        while (isDigit(peek()))
            ++at_;
    }

    std::string_view number() {
        const std::size_t start = at_;
        if (!isDigit(peek()) && peek() != '-') fail("a value is expected here");
        take('-');
        if (take('0')) {
            if (isDigit(peek())) fail("a number does not begin with 0");
        } else {
            digits();
        }
        if (take('.')) digits();
        if (take('e') || take('E')) {
            if (!take('+')) take('-');
            digits();
        }
        return source_.substr(start, at_ - start);
    }

    std::string_view source_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

std::string_view kindName(Kind kind) {
    switch (kind) {
        case Kind::kNull:
            return "null";
        case Kind::kBoolean:
            return "true or false";
        case Kind::kNumber:
            return "a number";
        case Kind::kString:
            return "a string";
        case Kind::kArray:
            return "an array";
        case Kind::kObject:
            return "an object";
    }
    return "";
}

const Value::Content& Value::content() const {
    static const Content kNothing;
    return content_ ? *content_ : kNothing;
}

const Value* Value::find(std::string_view name) const {
    const Content& members = content();
    const auto found = std::find(members.names.begin(), members.names.end(), name);
    const auto index = static_cast<std::size_t>(found - members.names.begin());
    return found == members.names.end() ? nullptr : &members.items[index];
}

Document::Document(std::string source) : source_(std::move(source)), root_(Reader(source_).document()) {}

void Document::fail(const Value& value, std::string_view reason) const {
    throw Error(positionOf(source_, value.offset()) + std::string(reason));
}

std::int64_t Document::integer(const Value& value, std::int64_t least, std::int64_t most,
                               std::string_view what) const {
    std::int64_t result = 0;
    const std::string_view digits = value.text();
    const char* end = digits.data() + digits.size();
    const bool isNumber = value.kind() == Kind::kNumber;
    const auto [rest, error] = std::from_chars(digits.data(), end, result);
    if (!isNumber || (error == std::errc() && rest != end))
        fail(value, std::string(what) + " must be a whole number");
    if (error != std::errc() || result < least || result > most) {
        fail(value, std::string(what) + " must lie between " + std::to_string(least) + " and " +
                        std::to_string(most));
    }
    return result;
}

double Document::real(const Value& value, std::string_view what) const {
    const std::string_view digits = value.text();
    double result = 0;
    if (value.kind() != Kind::kNumber) fail(value, std::string(what) + " must be a number");
    const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result);
    if (error != std::errc()) fail(value, std::string(what) + " lies outside the range of doubles");
    return result;
}

}  // namespace kor::json
