#pragma once
// JSON as RFC 8259 has it, read strictly and with positions, for the command's input and output.
//
// Read: one value, UTF-8 (a leading byte order mark is skipped), nested at most kMaximumDepth deep. Refused,
// each with line and column: anything the grammar does not allow, a name that stands twice in one object,
// bytes that are not UTF-8, half of a surrogate pair. Numbers keep their digits, so that 64-bit integers stay
// exact and a number out of range is noticed where its range is known.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kor::json {

/// Arrays and objects within each other; a tree of 1,000 levels, the most a file may hold, needs two per
/// level.
inline constexpr int kMaximumDepth = 2100;

/// A refusal; what() begins with "line L, column C: ", both counted from 1, columns in characters.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

enum class Kind { kNull, kBoolean, kNumber, kString, kArray, kObject };

/// "a number", "an object", ... for messages.
std::string_view kindName(Kind kind);

/// A value of a document. A long array of numbers may be most of a text, so a number takes no memory of its
/// own.
class Value {
  public:
    Kind kind() const { return kind_; }
    std::size_t offset() const { return offset_; }  ///< where it begins in the source
    bool truth() const { return truth_; }           ///< of a boolean

    /// A string, decoded to UTF-8; a number as it stands in the source.
    std::string_view text() const { return content_ ? std::string_view(content_->text) : digits_; }
    /// Of a string: offsets in its text of the characters that were written \u0080 to \u00FF.
    const std::vector<std::size_t>& bytes() const { return content().bytes; }
    /// The names of an object's members, parallel to items.
    const std::vector<std::string>& names() const { return content().names; }
    /// The members of an object, or the elements of an array.
    const std::vector<Value>& items() const { return content().items; }
    /// The member of that name, or null.
    const Value* find(std::string_view name) const;

  private:
    struct Content {
        std::string text;
        std::vector<std::size_t> bytes;
        std::vector<std::string> names;
        std::vector<Value> items;
    };

    const Content& content() const;

    Kind kind_ = Kind::kNull;
    bool truth_ = false;
    std::size_t offset_ = 0;
    std::string_view digits_;
    std::unique_ptr<Content> content_;

    friend class Reader;
};

class Document {
  public:
    /// Reads the whole text. @throws Error
    explicit Document(std::string source);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    const Value& root() const { return root_; }

    /// Ends in an Error that names the position of the value. @throws Error
    [[noreturn]] void fail(const Value& value, std::string_view reason) const;

    /// A whole number within bounds. @throws Error
    std::int64_t integer(const Value& value, std::int64_t least, std::int64_t most,
                         std::string_view what) const;

    /// The double nearest to a number. @throws Error when its size is beyond that of doubles
    double real(const Value& value, std::string_view what) const;

  private:
    std::string source_;
    Value root_;
};

/// Appends a string with its quotes: UTF-8 as it is, but " \ and the control characters below 0x20 escaped.
/// @param utf8  valid UTF-8
void appendString(std::string& out, std::string_view utf8);

/// Appends the escape \u00XX.
void appendByteEscape(std::string& out, unsigned char byte);

/// Appends what stands inside the quotes, escaped as appendString does.
void appendEscaped(std::string& out, std::string_view utf8);

/// Appends a finite double in the shortest form that reads back as the same double.
void appendReal(std::string& out, double value);

}  // namespace kor::json
