#pragma once
// The words of a packed list. A block may have come from anywhere: they are copied out and checked first.

#include <cstdint>
#include <cstring>

#include "korutil/list.h"

namespace kor {

inline constexpr DWORD kListWord = sizeof(DWORD);

inline const char* listData(const ListBlock* list, const ListBlock& words) {
    return reinterpret_cast<const char*>(list) + words.dataOffset;
}

inline char* listData(ListBlock* list, const ListBlock& words) {
    return reinterpret_cast<char*>(list) + words.dataOffset;
}

inline DWORD listWordAt(const void* place) {
    DWORD word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

inline const char* listTable(const ListBlock* list) { return reinterpret_cast<const char*>(list + 1); }

inline DWORD listOffset(const ListBlock* list, DWORD index) {
    return listWordAt(listTable(list) + std::size_t{index} * kListWord);
}

/// Reads the words of a list. @return whether they agree with each other; false for null
bool readList(const ListBlock* list, ListBlock& words);

struct ListElement {
    DWORD offset;
    DWORD size;
};

/// Finds an element of a list whose words are read. @return whether it lies within the data in use
bool findElement(const ListBlock* list, const ListBlock& words, DWORD index, ListElement& element);

enum class Removal { none, done, notShrunk };

Removal removeElement(ListBlock** list, DWORD index);

}  // namespace kor
