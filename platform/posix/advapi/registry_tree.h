#pragma once
// The keys and values of one root, in memory.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "korutil/platform.h"

namespace kor {

struct RegistryValue {
    DWORD type = 0;
    std::string_view bytes;  ///< valid while the tree is not changed
};

/// Names are given as foldedName has them: letter case does not count. What is done takes time that does not
/// depend on what is there. All is packed, so that a line of a file takes hardly more than twice its length.
/// What is removed, or replaced by something of another length, keeps the room of its record.
class RegistryTree {
  public:
    using Entry = std::uint32_t;
    static constexpr Entry kRoot = 0;
    static constexpr Entry kNone = 0xFFFFFFFF;

    /// @param budget  bytes of memory that the tree may take
    explicit RegistryTree(std::uint64_t budget) : budget_(budget) {}

    /// @return the key below another one, kNone when it is not there
    Entry key(Entry parent, std::string_view name) const;

    /// The same, made when it is missing. @return kNone when that would take more than the budget
    Entry makeKey(Entry parent, std::string_view name);

    /// Removes a key with all that is below it.
    void removeKey(Entry parent, std::string_view name);

    /// @return whether the key has such a value
    bool value(Entry key, std::string_view name, RegistryValue& found) const;

    /// @return false when it would take more than the budget
    bool setValue(Entry key, std::string_view name, DWORD type, std::string_view bytes);
    void removeValue(Entry key, std::string_view name);

  private:
    enum class Kind : std::uint8_t { key, value };

    // Records lie one behind the other in blocks. An entry is its record's place, which is a key's identity:
    // one that is removed and made again is another one.
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::uint32_t used;
    };
    // A record taken apart.
    struct Record {
        Kind kind;
        bool removed;
        Entry owner;
        DWORD type;
        std::string_view name;
        std::string_view bytes;
    };

    static std::uint64_t hashOf(Kind kind, Entry owner, std::string_view name);
    static Record readRecord(const char* at);
    char* at(Entry entry) const;
    std::size_t slotOf(std::uint64_t hash, Kind kind, Entry owner, std::string_view name) const;
    Entry find(Kind kind, Entry owner, std::string_view name) const;
    Entry add(const Record& record);
    Entry takePlace(std::size_t size);
    bool growSlots();
    void fillSlots();
    bool hasRoom(std::uint64_t blocks, std::uint64_t slots) const;
    void remove(Kind kind, Entry owner, std::string_view name);

    std::uint64_t budget_;
    std::vector<Block> blocks_;
    std::vector<Entry> slots_;         // hashed, open addressing
    std::vector<std::uint8_t> marks_;  // of each slot: 0 when it is free, else a few bits of the hash
    std::size_t filled_ = 0;
};

}  // namespace kor
