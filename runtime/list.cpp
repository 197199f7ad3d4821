// Packed lists.

#include "korutil/list.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/win32.h"
#include "runtime/list_block.h"

namespace kor {
namespace {

constexpr DWORD kFirstTable = 100;
constexpr DWORD kTableStep = 100;
constexpr DWORD kSmallestStep = 4;
constexpr DWORD kFreeBeforeShrink = 512;
constexpr std::uint64_t kMostBytes = std::numeric_limits<DWORD>::max();
constexpr DWORD kMostCleared = 1u << 20;  // a larger step would be paid for in memory that is never used

char* slotPlace(ListBlock* list, DWORD index) {
    return reinterpret_cast<char*>(list + 1) + std::size_t{index} * kListWord;
}

void clearSlots(ListBlock* list, DWORD first, DWORD end) {
    if (first < end) std::memset(slotPlace(list, first), 0, std::size_t{end - first} * kListWord);
}

// For a change, a table that is too small for the elements is worth the user's attention.
bool readForChange(const ListBlock* list, ListBlock& words) {
    if (readList(list, words)) return true;
    if (list && words.totalSize >= sizeof words && words.count > words.tableCapacity)
        MessageBeep(MB_ICONEXCLAMATION);
    return false;
}

// The bytes that an element takes: always more than its size.
std::uint64_t slotOf(DWORD size) { return std::uint64_t{size} - size % kListWord + kListWord; }

// Gives the list room for so many elements and so many data bytes, exactly or with a reserve.
// @param words  become those of the new block. @return false with the list as it was
bool resize(ListBlock** list, ListBlock& words, std::uint64_t slots, std::uint64_t bytes) {
    const std::uint64_t table = slots > words.tableCapacity ? slots + kTableStep : words.tableCapacity;
    const std::uint64_t data = bytes > words.dataCapacity ? bytes + words.growthStep : bytes;
    const std::uint64_t total = sizeof(ListBlock) + table * kListWord + data;
    if (total > kMostBytes) return false;
    auto* block = static_cast<ListBlock*>(std::realloc(*list, static_cast<SIZE_T>(total)));
    if (!block) return false;
    const ListBlock former = words;
    words.totalSize = static_cast<DWORD>(total);
    words.tableCapacity = static_cast<DWORD>(table);
    words.dataCapacity = static_cast<DWORD>(data);
    words.dataOffset = words.totalSize - words.dataCapacity;
    if (words.dataOffset != former.dataOffset)
        std::memmove(listData(block, words), listData(block, former),
                     std::min(words.dataCapacity, former.dataCapacity));
    clearSlots(block, words.count, words.tableCapacity);
    const DWORD spare = static_cast<DWORD>(data - bytes);
    if (spare <= kMostCleared) std::memset(listData(block, words) + bytes, 0, spare);
    std::memcpy(block, &words, sizeof words);
    *list = block;
    return true;
}

// A record that is to be added. It may lie in the list itself, which then moves.
class Record {
  public:
    Record(const void* bytes, const ListBlock* list, const ListBlock& words)
        : bytes_(static_cast<const char*>(bytes)), size_(listWordAt(bytes)) {
        const auto distance = reinterpret_cast<UINT_PTR>(bytes) - reinterpret_cast<UINT_PTR>(list);
        if (distance >= words.totalSize) return;
        inside_ = true;
        place_ = static_cast<DWORD>(distance) - words.dataOffset;
        valid_ = distance >= words.dataOffset && place_ <= words.dataUsed && size_ <= words.dataUsed - place_;
    }
    bool valid() const { return valid_ && size_ >= kListWord; }
    DWORD size() const { return size_; }
    const char* bytes(const ListBlock* list, const ListBlock& words) const {
        return inside_ ? listData(list, words) + place_ : bytes_;
    }

  private:
    const char* bytes_;
    DWORD size_;
    DWORD place_ = 0;  // in the data area
    bool inside_ = false;
    bool valid_ = true;
};

DWORD addElement(ListBlock** list, const void* element) {
    ListBlock words;
    if (!readForChange(*list, words)) return 0;
    const Record record(element, *list, words);
    if (!record.valid()) return 0;
    const std::uint64_t slot = slotOf(record.size());
    const std::uint64_t needed = words.dataUsed + slot;
    if (needed > words.dataCapacity || words.count == words.tableCapacity) {
        if (!resize(list, words, std::uint64_t{words.count} + 1, needed)) return 0;
    }
    const DWORD offset = words.dataUsed;
    char* target = listData(*list, words) + offset;
    std::memset(target + slot - kListWord, 0, kListWord);
    std::memcpy(target, record.bytes(*list, words), record.size());
    std::memcpy(slotPlace(*list, words.count), &offset, sizeof offset);
    words.dataUsed = static_cast<DWORD>(needed);
    ++words.count;
    std::memcpy(*list, &words, sizeof words);
    return words.count;
}

// Where an element ends: where the next one begins.
DWORD endOf(const ListBlock* list, const ListBlock& words, DWORD index) {
    return index + 1 < words.count ? listOffset(list, index + 1) : words.dataUsed;
}

// Whether the elements from an index on lie one behind the other in the data in use.
bool ascending(const ListBlock* list, const ListBlock& words, DWORD index) {
    for (; index < words.count; ++index)
        if (listOffset(list, index) > endOf(list, words, index)) return false;
    return true;
}

}  // namespace

bool readList(const ListBlock* list, ListBlock& words) {
    if (!list) return false;
    words.totalSize = listWordAt(list);
    if (words.totalSize < sizeof words) return false;
    std::memcpy(&words, list, sizeof words);
    const DWORD room = words.totalSize - static_cast<DWORD>(sizeof words);
    if (words.tableCapacity > room / kListWord) return false;
    const DWORD table = words.tableCapacity * kListWord;
    return words.dataOffset == sizeof words + table && words.dataCapacity == room - table &&
           words.dataUsed <= words.dataCapacity && words.count <= words.tableCapacity;
}

bool findElement(const ListBlock* list, const ListBlock& words, DWORD index, ListElement& element) {
    if (index >= words.count) return false;
    element.offset = listOffset(list, index);
    if (element.offset % kListWord != 0 || element.offset > words.dataUsed) return false;
    const DWORD room = words.dataUsed - element.offset;
    if (room < kListWord) return false;
    element.size = listWordAt(listData(list, words) + element.offset);
    return element.size <= room;
}

Removal removeElement(ListBlock** list, DWORD index) {
    ListBlock words;
    if (!readForChange(*list, words) || index >= words.count || !ascending(*list, words, index))
        return Removal::none;
    const DWORD start = listOffset(*list, index);
    const DWORD length = endOf(*list, words, index) - start;
    char* data = listData(*list, words);
    std::memmove(data + start, data + start + length, words.dataUsed - start - length);
    for (; index + 1 < words.count; ++index) {
        const DWORD offset = listOffset(*list, index + 1) - length;
        std::memcpy(slotPlace(*list, index), &offset, sizeof offset);
    }
    --words.count;
    words.dataUsed -= length;
    clearSlots(*list, words.count, words.count + 1);
    std::memset(data + words.dataUsed, 0, length);
    std::memcpy(*list, &words, sizeof words);
    if (words.dataCapacity - words.dataUsed <= kFreeBeforeShrink) return Removal::done;
    return resize(list, words, words.count, words.dataUsed) ? Removal::done : Removal::notShrunk;
}

}  // namespace kor

using namespace kor;

ListBlock* KORUTIL_CALL lisCreate(DWORD growthStep) {
    constexpr DWORD kSize = sizeof(ListBlock) + kFirstTable * kListWord;
    auto* list = static_cast<ListBlock*>(std::calloc(1, kSize));
    if (!list) return nullptr;
    list->totalSize = list->dataOffset = kSize;
    list->tableCapacity = kFirstTable;
    list->growthStep = std::max(growthStep, kSmallestStep);
    return list;
}

BOOL KORUTIL_CALL lisDestroy(ListBlock** list) {
    if (!list || !*list) return 0;
    std::free(*list);
    *list = nullptr;
    return 1;
}

DWORD KORUTIL_CALL lisAdd(ListBlock** list, const void* element) {
    return list && element ? addElement(list, element) : 0;
}

BOOL KORUTIL_CALL lisRemoveData(ListBlock** list, DWORD index) {
    return list && removeElement(list, index) == Removal::done;
}

DWORD KORUTIL_CALL lisGetElementCount(const ListBlock* list) {
    ListBlock words;
    return readList(list, words) ? words.count : 0;
}

void* KORUTIL_CALL lisGetPointerToElement(ListBlock* list, DWORD index) {
    ListBlock words;
    ListElement element;
    if (!readList(list, words) || !findElement(list, words, index, element)) return nullptr;
    return listData(list, words) + element.offset;
}

DWORD KORUTIL_CALL lisGetTotalSize(const ListBlock* list) { return list ? listWordAt(list) : 0; }

ListBlock* KORUTIL_CALL lisDuplicate(const ListBlock* list) {
    ListBlock words;
    if (!readList(list, words)) return nullptr;
    void* copy = std::malloc(words.totalSize);
    return copy ? static_cast<ListBlock*>(std::memcpy(copy, list, words.totalSize)) : nullptr;
}
