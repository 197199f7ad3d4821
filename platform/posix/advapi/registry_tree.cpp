#include "platform/posix/advapi/registry_tree.h"

#include <random>

namespace kor {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kBlock = 64 * 1024;
constexpr std::size_t kBigText = kBlock / 4;  // has a block of its own

// A file must not be able to choose names that all hash alike.
std::uint64_t hashSeed() {
    static const std::uint64_t seed = [] {
        std::random_device random;
        return std::uint64_t{random()} << 32 | random();
    }();
    return seed;
}

std::uint64_t mixed(std::uint64_t hash) {
    hash = (hash ^ (hash >> 32)) * 0x9E3779B97F4A7C15u;
    return hash ^ (hash >> 29);
}

}  // namespace

RegistryTree::RegistryTree(std::uint64_t budget) : budget_(budget), slots_(kFirstSlots, kNone) {
    nodes_.push_back({"", kNone, 0, 0, 0, Kind::key, false});
}

std::size_t RegistryTree::slotOf(Kind kind, Entry owner, std::string_view name) const {
    std::uint64_t hash = mixed(hashSeed() + owner * std::uint64_t{2} + static_cast<std::uint64_t>(kind));
    for (const char byte : name)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
    std::size_t slot = mixed(hash) & (slots_.size() - 1);
    for (; slots_[slot] != kNone; slot = (slot + 1) & (slots_.size() - 1)) {
        const Node& node = nodes_[slots_[slot]];
        if (node.kind == kind && node.owner == owner && node.name() == name) break;
    }
    return slot;
}

RegistryTree::Entry RegistryTree::find(Kind kind, Entry owner, std::string_view name) const {
    const Entry entry = slots_[slotOf(kind, owner, name)];
    return entry == kNone || nodes_[entry].removed ? kNone : entry;
}

bool RegistryTree::hasRoom(std::size_t bytes) const {
    // While the slots double, the old ones are still there.
    constexpr std::uint64_t kOverhead = sizeof(Node) + 6 * sizeof(Entry);
    return nodes_.size() < kNone - 1 && (nodes_.size() + 1) * kOverhead + blockBytes_ + bytes <= budget_;
}

char* RegistryTree::takeText(std::size_t bytes) {
    const std::size_t room = bytes > kBigText ? bytes : kBlock;
    if (bytes > textLeft_) {
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(room));
        blockBytes_ += room;
        if (bytes > kBigText) return blocks_.back().get();
        nextText_ = blocks_.back().get();
        textLeft_ = room;
    }
    char* taken = nextText_;
    nextText_ += bytes;
    textLeft_ -= bytes;
    return taken;
}

void RegistryTree::grow() {
    if (nodes_.size() * 2 < slots_.size()) return;
    std::vector<Entry> former(slots_.size() * 2, kNone);
    former.swap(slots_);
    for (const Entry entry : former) {
        if (entry == kNone) continue;
        const Node& node = nodes_[entry];
        slots_[slotOf(node.kind, node.owner, node.name())] = entry;
    }
}

RegistryTree::Entry RegistryTree::add(Kind kind, Entry owner, std::string_view name, DWORD type,
                                      std::string_view bytes) {
    if (!hasRoom(name.size() + bytes.size())) return kNone;
    grow();
    const std::size_t slot = slotOf(kind, owner, name);
    char* text = takeText(name.size() + bytes.size());
    bytes.copy(text + name.copy(text, name.size()), bytes.size());
    nodes_.push_back({text, owner, static_cast<std::uint32_t>(bytes.size()), type,
                      static_cast<std::uint16_t>(name.size()), kind, false});
    return slots_[slot] = static_cast<Entry>(nodes_.size() - 1);
}

void RegistryTree::remove(Kind kind, Entry owner, std::string_view name) {
    const Entry entry = find(kind, owner, name);
    if (entry != kNone) nodes_[entry].removed = true;
}

RegistryTree::Entry RegistryTree::key(Entry parent, std::string_view name) const {
    return find(Kind::key, parent, name);
}

RegistryTree::Entry RegistryTree::makeKey(Entry parent, std::string_view name) {
    const Entry there = key(parent, name);
    return there != kNone ? there : add(Kind::key, parent, name, 0, {});
}

void RegistryTree::removeKey(Entry parent, std::string_view name) { remove(Kind::key, parent, name); }

bool RegistryTree::value(Entry key, std::string_view name, RegistryValue& found) const {
    const Entry entry = find(Kind::value, key, name);
    if (entry == kNone) return false;
    found = {nodes_[entry].type, nodes_[entry].bytes()};
    return true;
}

bool RegistryTree::setValue(Entry key, std::string_view name, DWORD type, std::string_view bytes) {
    return add(Kind::value, key, name, type, bytes) != kNone;
}

void RegistryTree::removeValue(Entry key, std::string_view name) { remove(Kind::value, key, name); }

}  // namespace kor
