#pragma once
/// A text in the ANSI code page that copies for the price of a pointer.
///
/// A `CString` is one pointer to the characters, which are always ended by a zero and may hold zeros before
/// it. Copies share the characters until one of them is changed; the count of sharers is atomic, so copies
/// may live in different threads (one string itself may not be changed in two). Lengths and indexes count
/// bytes. Functions that search, reverse or change case keep the two bytes of a double-byte character (and
/// the sequences of code page 65001) together; a lead byte never matches alone, and a trail byte never
/// matches.
///
/// A null text argument is an empty text. A text of more than 2147483647 bytes cannot be; it, like any other
/// lack of memory, throws a `CMemoryException*` and leaves the string as it was. An index outside the string
/// throws `std::out_of_range`. Texts are formatted with the host's bounded formatter, and resource texts are
/// loaded by number, by other families; there are no members for that.

#include "korutil/platform.h"

class KORUTIL_CLASS CString {
  public:
    /// An empty text; nothing is allocated.
    CString();
    CString(const CString& other);
    CString(CString&& other) noexcept;
    /// `repeat` times the character; empty when `repeat` is not positive.
    explicit CString(char character, int repeat = 1);
    CString(const char* text);
    /// The first `length` bytes, zeros included; empty when `length` is not positive.
    CString(const char* text, int length);
    ~CString();

    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const char* text);
    CString& operator=(char character);

    /// Length in bytes, without the ending zero.
    int GetLength() const;
    BOOL IsEmpty() const;
    /// Makes the text empty and gives its memory back.
    void Empty();

    /// The byte at an index from 0 to the length; at the length it is the ending zero.
    char GetAt(int index) const;
    char operator[](int index) const;
    /// Sets the byte at an index below the length.
    void SetAt(int index, char character);
    /// The characters; valid until the string is changed or destroyed.
    operator const char*() const;

    CString& operator+=(const CString& text);
    CString& operator+=(const char* text);
    CString& operator+=(char character);

    /// Compares bytes, up to the first zero: below 0, 0 or above 0.
    int Compare(const char* text) const;
    /// As `Compare`, letters compared by their lower-case form in the code page.
    int CompareNoCase(const char* text) const;
    /// As `Compare`, in the order of the C runtime's current locale.
    int Collate(const char* text) const;

    /// The part from `first` on, or `count` bytes of it. A negative value counts as 0; what lies past the end
    /// is left out.
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// The longest beginning that consists of characters in the set, or of characters not in it.
    CString SpanIncluding(const char* set) const;
    CString SpanExcluding(const char* set) const;

    void MakeUpper();
    void MakeLower();
    void MakeReverse();
    /// Remove blanks, tabs and line ends at the beginning, or at the end.
    void TrimLeft();
    void TrimRight();

    /// Index of the first (or last) occurrence, -1 when there is none or `start` is outside the text. An
    /// empty text is found at `start`.
    int Find(char character, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char character) const;
    /// Index of the first character that is in the set, -1 when there is none.
    int FindOneOf(const char* set) const;

    /// Opens the characters for writing, with room for at least `minimum` bytes and the ending zero. The
    /// string may not be used until `ReleaseBuffer` tells its new length. A negative `minimum` counts as 0.
    char* GetBuffer(int minimum);
    /// As `GetBuffer` and makes the length exactly `length`.
    char* GetBufferSetLength(int length);
    /// Ends the writing. -1: the text ends at its first zero byte. A length beyond the room is cut to it.
    void ReleaseBuffer(int length = -1);
    /// Gives back memory that the text does not need.
    void FreeExtra();

  private:
    char* characters_;
};

inline CString operator+(const CString& left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
}
inline CString operator+(const CString& left, const char* right) {
    CString sum(left);
    sum += right;
    return sum;
}
inline CString operator+(const char* left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
}
inline CString operator+(const CString& left, char right) {
    CString sum(left);
    sum += right;
    return sum;
}
inline CString operator+(char left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
}

inline bool operator==(const CString& left, const CString& right) { return left.Compare(right) == 0; }
inline bool operator==(const CString& left, const char* right) { return left.Compare(right) == 0; }
inline bool operator<(const CString& left, const CString& right) { return left.Compare(right) < 0; }
inline bool operator<(const CString& left, const char* right) { return left.Compare(right) < 0; }
inline bool operator<(const char* left, const CString& right) { return right.Compare(left) > 0; }
inline bool operator>(const CString& left, const CString& right) { return left.Compare(right) > 0; }
inline bool operator>(const CString& left, const char* right) { return left.Compare(right) > 0; }
inline bool operator>(const char* left, const CString& right) { return right.Compare(left) < 0; }
inline bool operator<=(const CString& left, const CString& right) { return left.Compare(right) <= 0; }
inline bool operator<=(const CString& left, const char* right) { return left.Compare(right) <= 0; }
inline bool operator<=(const char* left, const CString& right) { return right.Compare(left) >= 0; }
inline bool operator>=(const CString& left, const CString& right) { return left.Compare(right) >= 0; }
inline bool operator>=(const CString& left, const char* right) { return left.Compare(right) >= 0; }
inline bool operator>=(const char* left, const CString& right) { return right.Compare(left) <= 0; }
