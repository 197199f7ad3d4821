#pragma once
// The keys and values of one root, in memory.

#include <cstddef>
#include <cstdint>
#include <deque>
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
/// depend on what is there; what is removed or replaced keeps its memory.
class RegistryTree {
  public:
    using Entry = std::uint32_t;
    static constexpr Entry kRoot = 0;
    static constexpr Entry kNone = 0xFFFFFFFF;

    /// @param budget  bytes of memory that the tree may take, about
    explicit RegistryTree(std::uint64_t budget);

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

    // A key or a value. A key's number is its identity: one that is removed and made again is another one.
    struct Node {
        const char* text;  // the name, behind it a value's bytes
        Entry owner;
        std::uint32_t length;
        DWORD type;
        std::uint16_t nameLength;
        Kind kind;
        bool removed;

        std::string_view name() const { return {text, nameLength}; }
        std::string_view bytes() const { return {text + nameLength, length}; }
    };

    std::size_t slotOf(Kind kind, Entry owner, std::string_view name) const;
    Entry find(Kind kind, Entry owner, std::string_view name) const;
    bool hasRoom(std::size_t bytes) const;
    char* takeText(std::size_t bytes);
    Entry add(Kind kind, Entry owner, std::string_view name, DWORD type, std::string_view bytes);
    void remove(Kind kind, Entry owner, std::string_view name);
    void grow();

    std::uint64_t budget_;
    std::deque<Node> nodes_;
    std::vector<Entry> slots_;  // hashed, open addressing; kNone is a free one
    std::vector<std::unique_ptr<char[]>> blocks_;
    std::uint64_t blockBytes_ = 0;
    char* nextText_ = nullptr;
    std::size_t textLeft_ = 0;
};

}  // namespace kor
