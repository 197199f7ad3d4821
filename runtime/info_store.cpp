// The info store: keyed entries in a packed list.

#include "korutil/info_store.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>

#include "framework/multibyte.h"
#include "platform/win32.h"
#include "runtime/list_block.h"

namespace kor {
namespace {

constexpr DWORD kGrowthStep = 4;
constexpr DWORD kMostName = 30;
constexpr DWORD kIdHeader = 12;
constexpr DWORD kNameHeader = 36;
constexpr DWORD kProbe = sizeof(std::uint64_t);

std::uint64_t eightBytes(const char* place) {
    std::uint64_t bytes;
    std::memcpy(&bytes, place, sizeof bytes);
    return bytes;
}

// What stands between an entry's size and its data: a zero and the number, or the name with zeros behind it.
class Key {
  public:
    explicit Key(UINT_PTR key) {
        if (IS_INTRESOURCE(reinterpret_cast<const char*>(key))) {
            const DWORD id = LOWORD(key);
            std::memcpy(bytes_.data() + kListWord, &id, sizeof id);
            size_ = id != 0 ? kIdHeader - kListWord : 0;
        } else if (const DWORD length = nameLength(reinterpret_cast<const char*>(key))) {
            std::memcpy(bytes_.data(), reinterpret_cast<const char*>(key), length);
            size_ = kNameHeader - kListWord;
            // Names that belong together tend to begin alike and to differ at their ends.
            if (length >= kProbe) probe_ = length + 1 - kProbe;
        }
    }
    bool valid() const { return size_ != 0; }
    DWORD header() const { return size_ + kListWord; }
    DWORD probe() const { return probe_; }
    std::uint64_t probed() const { return eightBytes(bytes_.data() + probe_); }
    bool sameAs(const char* bytes) const { return std::memcmp(bytes_.data(), bytes, size_) == 0; }
    void copyTo(char* target) const { std::memcpy(target, bytes_.data(), size_); }

  private:
    static DWORD nameLength(const char* name) {
        const std::string_view text(name, strnlen(name, kMostName + 1));
        std::size_t length = text.size();
        if (length > kMostName) {
            length = 0;
            for (std::size_t next = 0; next <= kMostName; next += characterLength(text.substr(next)))
                length = next;
        }
        return static_cast<DWORD>(length);
    }

    std::array<char, kNameHeader - kListWord> bytes_{};
    DWORD size_ = 0;
    DWORD probe_ = 0;  // where the bytes stand that are looked at first
};

struct Entry {
    DWORD index;
    DWORD offset;  // of its data, from the start of the block
    DWORD length;
};

// The first element from an index on that may be the key's. Nothing is taken for granted but the words of the
// list: an offset that leaves no room for a key is passed over.
DWORD scan(const ListBlock* store, const ListBlock& words, DWORD index, const Key& key) {
    const char* const table = listTable(store);
    const char* const probed = listData(store, words) + kListWord + key.probe();
    const std::uint64_t wanted = key.probed();
    const DWORD last = words.dataUsed - key.header();
    for (; index < words.count; ++index) {
        const DWORD offset = listWordAt(table + std::size_t{index} * kListWord);
        if (offset <= last && eightBytes(probed + offset) == wanted) break;
    }
    return index;
}

bool find(const ListBlock* store, const Key& key, Entry& entry) {
    ListBlock words;
    if (!key.valid() || !readList(store, words) || words.dataUsed < key.header()) return false;
    for (DWORD index = 0; (index = scan(store, words, index, key)) < words.count; ++index) {
        ListElement element;
        if (!findElement(store, words, index, element) || element.size < key.header()) continue;
        if (!key.sameAs(listData(store, words) + element.offset + kListWord)) continue;
        entry = {index, words.dataOffset + element.offset + key.header(), element.size - key.header()};
        return true;
    }
    return false;
}

const char* dataOf(const ListBlock* store, const Entry& entry) {
    return reinterpret_cast<const char*>(store) + entry.offset;
}

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, FreeBlock>;

Block makeEntry(const Key& key, const void* data, DWORD length) {
    const DWORD header = key.header();
    if (length > std::numeric_limits<DWORD>::max() - header) return nullptr;
    const DWORD size = header + length;
    Block entry(static_cast<char*>(std::malloc(size)));
    if (!entry) return nullptr;
    std::memcpy(entry.get(), &size, kListWord);
    key.copyTo(entry.get() + kListWord);
    if (length > 0) std::memcpy(entry.get() + header, data, length);
    return entry;
}

void destroyIfEmpty(ListBlock** store) {
    ListBlock words;
    if (readList(*store, words) && words.count == 0) lisDestroy(store);
}

bool deleteEntry(ListBlock** store, const Key& key) {
    Entry entry;
    const bool deleted = find(*store, key, entry) && removeElement(store, entry.index) != Removal::none;
    destroyIfEmpty(store);
    return deleted;
}

}  // namespace
}  // namespace kor

using namespace kor;

BOOL KORUTIL_CALL infInit(ListBlock** store) {
    if (!store) return 0;
    *store = nullptr;
    return 1;
}

DWORD KORUTIL_CALL infSet(ListBlock** store, UINT_PTR key, const void* data, DWORD length) {
    const Key wanted(key);
    if (!store || !wanted.valid() || (!data && length > 0)) return 0;
    const Block entry = makeEntry(wanted, data, length);
    if (!entry) return 0;
    deleteEntry(store, wanted);
    if (!*store) *store = lisCreate(kGrowthStep);
    const DWORD count = lisAdd(store, entry.get());
    destroyIfEmpty(store);
    return count;
}

DWORD KORUTIL_CALL infGet(const ListBlock* store, UINT_PTR key, void* buffer, DWORD size) {
    Entry entry;
    if (!buffer || !find(store, Key(key), entry)) return 0;
    const DWORD copied = std::min(entry.length, size);
    if (copied > 0) std::memcpy(buffer, dataOf(store, entry), copied);
    return copied;
}

DWORD KORUTIL_CALL infGetSize(const ListBlock* store, UINT_PTR key) {
    Entry entry;
    return find(store, Key(key), entry) ? entry.length : 0;
}

void* KORUTIL_CALL infGetPointer(ListBlock* store, UINT_PTR key, DWORD* length) {
    Entry entry;
    const bool found = find(store, Key(key), entry);
    if (length) *length = found ? entry.length : 0;
    return found ? const_cast<char*>(dataOf(store, entry)) : nullptr;
}

BOOL KORUTIL_CALL infDelete(ListBlock** store, UINT_PTR key) { return store && deleteEntry(store, Key(key)); }
