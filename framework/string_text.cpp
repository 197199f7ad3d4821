// What a CString knows about its text: comparing, cutting, searching, letter case.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "framework/multibyte.h"
#include "korutil/framework/string.h"
#include "platform/win32.h"

namespace {

std::string_view viewOf(const CString& text) {
    return {static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength())};
}

const char* textOrEmpty(const char* text) { return text != nullptr ? text : ""; }

int signOf(int value) { return (value > 0) - (value < 0); }

char asciiLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool isAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

bool isSpace(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }

bool containsCharacter(std::string_view set, std::string_view character) {
    while (!set.empty()) {
        const std::size_t length = kor::characterLength(set);
        if (set.substr(0, length) == character) return true;
        set.remove_prefix(length);
    }
    return false;
}

// Index of the first character that is in the set (or, with `inside` false, is not in it); the length when
// there is none.
int indexOfMember(std::string_view text, const char* set, bool inside) {
    const std::string_view characters = textOrEmpty(set);
    std::size_t index = 0;
    while (index < text.size()) {
        const std::size_t length = kor::characterLength(text.substr(index));
        if (containsCharacter(characters, text.substr(index, length)) == inside) break;
        index += length;
    }
    return static_cast<int>(index);
}

// Index of a text, looked for only where characters begin; -1 when it is not there.
int indexOf(std::string_view text, std::string_view part, std::size_t start) {
    if (kor::oneBytePerCharacter()) {
        const std::size_t index = text.find(part, start);
        return index == std::string_view::npos ? -1 : static_cast<int>(index);
    }
    for (std::size_t index = start; index + part.size() <= text.size();) {
        if (text.substr(index, part.size()) == part) return static_cast<int>(index);
        if (index == text.size()) break;
        index += kor::characterLength(text.substr(index));
    }
    return -1;
}

}  // namespace

int CString::Compare(const char* text) const { return signOf(std::strcmp(characters_, textOrEmpty(text))); }

int CString::CompareNoCase(const char* text) const {
    const char* left = characters_;
    const char* right = textOrEmpty(text);
    while (*left != '\0' && isAscii(*left) && isAscii(*right) && asciiLower(*left) == asciiLower(*right)) {
        ++left;
        ++right;
    }
    if (isAscii(*left) && isAscii(*right)) return signOf(asciiLower(*left) - asciiLower(*right));
    CString leftRest(left);
    CString rightRest(right);
    leftRest.MakeLower();
    rightRest.MakeLower();
    return leftRest.Compare(rightRest);
}

int CString::Collate(const char* text) const { return signOf(lstrcmpA(characters_, textOrEmpty(text))); }

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    first = std::clamp(first, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - first);
    return count == GetLength() ? *this : CString(characters_ + first, count);
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const {
    count = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - count, count);
}

CString CString::SpanIncluding(const char* set) const {
    return Left(indexOfMember(viewOf(*this), set, false));
}
CString CString::SpanExcluding(const char* set) const {
    return Left(indexOfMember(viewOf(*this), set, true));
}

void CString::MakeUpper() {
    if (!IsEmpty()) CharUpperBuffA(GetBuffer(0), static_cast<DWORD>(GetLength()));
}

void CString::MakeLower() {
    if (!IsEmpty()) CharLowerBuffA(GetBuffer(0), static_cast<DWORD>(GetLength()));
}

void CString::MakeReverse() {
    CString reversed;
    char* target = reversed.GetBufferSetLength(GetLength()) + GetLength();
    for (std::string_view rest = viewOf(*this); !rest.empty();) {
        const std::size_t length = kor::characterLength(rest);
        target -= length;
        std::memcpy(target, rest.data(), length);
        rest.remove_prefix(length);
    }
    *this = static_cast<CString&&>(reversed);
}

void CString::TrimLeft() {
    int blanks = 0;
    while (blanks < GetLength() && isSpace(characters_[blanks]))
        ++blanks;
    if (blanks > 0) *this = Mid(blanks);
}

void CString::TrimRight() {
    // No double-byte character has a blank for its second byte.
    int length = GetLength();
    while (length > 0 && isSpace(characters_[length - 1]))
        --length;
    if (length < GetLength()) *this = Left(length);
}

int CString::Find(char character, int start) const {
    if (start < 0 || start > GetLength()) return -1;
    if (kor::oneBytePerCharacter())
        return indexOf(viewOf(*this), {&character, 1}, static_cast<std::size_t>(start));
    for (int index = start; index < GetLength();) {
        const std::size_t length =
            kor::characterLength(viewOf(*this).substr(static_cast<std::size_t>(index)));
        if (length == 1 && characters_[index] == character) return index;
        index += static_cast<int>(length);
    }
    return -1;
}

int CString::Find(const char* text, int start) const {
    if (start < 0 || start > GetLength()) return -1;
    return indexOf(viewOf(*this), textOrEmpty(text), static_cast<std::size_t>(start));
}

int CString::ReverseFind(char character) const {
    int last = -1;
    for (int index = Find(character); index >= 0; index = Find(character, index + 1))
        last = index;
    return last;
}

int CString::FindOneOf(const char* set) const {
    const int index = indexOfMember(viewOf(*this), set, true);
    return index < GetLength() ? index : -1;
}
