// The memory of a CString: shared blocks, and changing their text.
#include "korutil/framework/string.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "korutil/framework/memory_exception.h"

namespace {

// Stands in front of the characters; `room` does not count the ending zero.
struct Block {
    std::atomic<int> sharers;
    int length;
    int room;
};

// What every empty string that owns no memory points to; it is never counted and never written.
struct EmptyBlock {
    Block block{0, 0, 0};
    char zero = '\0';
};
constinit EmptyBlock theEmptyBlock;

static_assert(offsetof(EmptyBlock, zero) == sizeof(Block));

char* emptyText() { return &theEmptyBlock.zero; }
Block* blockOf(const char* characters) { return reinterpret_cast<Block*>(const_cast<char*>(characters)) - 1; }
bool isOwned(const char* characters) { return characters != emptyText(); }
bool isShared(const char* characters) {
    return blockOf(characters)->sharers.load(std::memory_order_acquire) != 1;
}

// A block of its own for up to `room` bytes, with an empty text; null when memory is short.
char* tryAllocate(int room) {
    void* memory = std::malloc(sizeof(Block) + static_cast<std::size_t>(room) + 1);
    if (memory == nullptr) return nullptr;
    auto* characters = reinterpret_cast<char*>(new (memory) Block{1, 0, room} + 1);
    *characters = '\0';
    return characters;
}

char* allocate(int room) {
    char* characters = tryAllocate(room);
    if (characters == nullptr) AfxThrowMemoryException();
    return characters;
}

void setLength(char* characters, int length) {
    blockOf(characters)->length = length;
    characters[length] = '\0';
}

char* allocateCopy(const char* text, int length, int room) {
    char* characters = allocate(room);
    std::memcpy(characters, text, static_cast<std::size_t>(length));
    setLength(characters, length);
    return characters;
}

char* share(char* characters) {
    if (isOwned(characters)) blockOf(characters)->sharers.fetch_add(1, std::memory_order_relaxed);
    return characters;
}

void release(char* characters) {
    if (!isOwned(characters)) return;
    Block* block = blockOf(characters);
    // The last owner needs no atomic subtraction: nobody else can reach the block any more.
    if (isShared(characters) && block->sharers.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    block->~Block();
    std::free(block);
}

int lengthOf(const char* text) {
    if (text == nullptr) return 0;
    const std::size_t length = std::strlen(text);
    if (length > INT_MAX) AfxThrowMemoryException();
    return static_cast<int>(length);
}

// Puts `length` bytes in place of the text; they may be a part of it.
void assign(char*& characters, const char* text, int length) {
    if (length == 0) {
        release(std::exchange(characters, emptyText()));
    } else if (isShared(characters) || blockOf(characters)->room < length) {
        release(std::exchange(characters, allocateCopy(text, length, length)));
    } else {
        std::memmove(characters, text, static_cast<std::size_t>(length));
        setLength(characters, length);
    }
}

// Makes the text changeable, with room for at least `room` bytes.
void makeOwn(char*& characters, int room) {
    Block* block = blockOf(characters);
    if (!isShared(characters) && room <= block->room) return;
    release(
        std::exchange(characters, allocateCopy(characters, block->length, std::max(room, block->length))));
}

void append(char*& characters, const char* text, int length) {
    if (length == 0) return;
    const int before = blockOf(characters)->length;
    if (length > INT_MAX - before) AfxThrowMemoryException();
    const int after = before + length;
    if (isShared(characters) || blockOf(characters)->room < after) {
        const int ample = before < INT_MAX / 2 ? before + before / 2 : after;
        char* grown = allocateCopy(characters, before, std::max(after, ample));
        std::memcpy(grown + before, text, static_cast<std::size_t>(length));
        release(std::exchange(characters, grown));
    } else {
        std::memcpy(characters + before, text, static_cast<std::size_t>(length));
    }
    setLength(characters, after);
}

}  // namespace

CString::CString() : characters_(emptyText()) {}
CString::CString(const CString& other) : characters_(share(other.characters_)) {}
CString::CString(CString&& other) noexcept : characters_(std::exchange(other.characters_, emptyText())) {}
CString::CString(const char* text) : characters_(emptyText()) {
    if (const int length = lengthOf(text)) characters_ = allocateCopy(text, length, length);
}

CString::CString(const char* text, int length) : characters_(emptyText()) {
    if (text != nullptr && length > 0) characters_ = allocateCopy(text, length, length);
}

CString::CString(char character, int repeat) : characters_(emptyText()) {
    if (repeat <= 0) return;
    characters_ = allocate(repeat);
    std::memset(characters_, character, static_cast<std::size_t>(repeat));
    setLength(characters_, repeat);
}

CString::~CString() { release(characters_); }

CString& CString::operator=(const CString& other) {
    release(std::exchange(characters_, share(other.characters_)));
    return *this;
}

CString& CString::operator=(CString&& other) noexcept {
    std::swap(characters_, other.characters_);
    return *this;
}

CString& CString::operator=(const char* text) {
    assign(characters_, text, lengthOf(text));
    return *this;
}

CString& CString::operator=(char character) {
    assign(characters_, &character, 1);
    return *this;
}

int CString::GetLength() const { return blockOf(characters_)->length; }
BOOL CString::IsEmpty() const { return GetLength() == 0; }
void CString::Empty() { release(std::exchange(characters_, emptyText())); }
CString::operator const char*() const { return characters_; }

char CString::GetAt(int index) const {
    if (index < 0 || index > GetLength()) throw std::out_of_range("CString: index outside the text");
    return characters_[index];
}

char CString::operator[](int index) const { return GetAt(index); }

void CString::SetAt(int index, char character) {
    if (index < 0 || index >= GetLength()) throw std::out_of_range("CString: index outside the text");
    makeOwn(characters_, 0);
    characters_[index] = character;
}

CString& CString::operator+=(const CString& text) {
    if (!isOwned(characters_)) return *this = text;
    append(characters_, text.characters_, text.GetLength());
    return *this;
}

CString& CString::operator+=(const char* text) {
    append(characters_, text, lengthOf(text));
    return *this;
}

CString& CString::operator+=(char character) {
    append(characters_, &character, 1);
    return *this;
}

char* CString::GetBuffer(int minimum) {
    makeOwn(characters_, std::max(minimum, 0));
    return characters_;
}

char* CString::GetBufferSetLength(int length) {
    length = std::max(length, 0);
    char* buffer = GetBuffer(length);
    const int before = GetLength();
    if (length > before) std::memset(buffer + before, 0, static_cast<std::size_t>(length - before));
    setLength(buffer, length);
    return buffer;
}

void CString::ReleaseBuffer(int length) {
    if (!isOwned(characters_)) return;
    makeOwn(characters_, 0);
    const int room = blockOf(characters_)->room;
    if (length < 0) {
        const void* zero = std::memchr(characters_, '\0', static_cast<std::size_t>(room));
        length = zero != nullptr ? static_cast<int>(static_cast<const char*>(zero) - characters_) : room;
    }
    setLength(characters_, std::min(length, room));
}

void CString::FreeExtra() {
    if (!isOwned(characters_) || isShared(characters_) || GetLength() == blockOf(characters_)->room) return;
    if (IsEmpty()) return Empty();
    char* fitting = tryAllocate(GetLength());
    if (fitting == nullptr) return;
    std::memcpy(fitting, characters_, static_cast<std::size_t>(GetLength()));
    setLength(fitting, GetLength());
    release(std::exchange(characters_, fitting));
}
