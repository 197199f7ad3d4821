#include "platform/posix/advapi/registry_tree.h"

#include <cstring>
#include <random>

namespace kor {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kSlotBytes = sizeof(RegistryTree::Entry) + 1;
constexpr unsigned kBlockBits = 21;
constexpr std::size_t kBlock = std::size_t{1} << kBlockBits;  // the longest record, twice
constexpr std::size_t kMostBlocks = std::size_t{1} << (32 - kBlockBits);

// A record: a byte of flags with the type, the owner, the name's length; of a value the length of its bytes,
// and a type that does not fit into the flags; the name; the bytes. Lengths have 7 bits a byte.
constexpr unsigned kValueFlag = 1;
constexpr unsigned kRemovedFlag = 2;
constexpr unsigned kTypeShift = 2;
constexpr DWORD kLongType = 63;
constexpr std::size_t kMostHead = 1 + 4 + 5 + 5 + 4;

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

std::uint8_t markOf(std::uint64_t hash) { return static_cast<std::uint8_t>(1 + (hash & 0xFFFF) % 255); }

char* putLength(char* at, std::size_t length) {
    for (; length > 0x7F; length >>= 7)
        *at++ = static_cast<char>(length | 0x80);
    *at++ = static_cast<char>(length);
    return at;
}

std::size_t takeLength(const char*& at) {
    std::size_t length = 0;
    for (unsigned shift = 0;; shift += 7) {
        const auto byte = static_cast<unsigned char>(*at++);
        length |= std::size_t{byte & 0x7Fu} << shift;
        if (byte < 0x80) return length;
    }
}

template <class Number>
char* putNumber(char* at, Number number) {
    std::memcpy(at, &number, sizeof number);
    return at + sizeof number;
}

template <class Number>
Number takeNumber(const char*& at) {
    Number number;
    std::memcpy(&number, at, sizeof number);
    at += sizeof number;
    return number;
}

}  // namespace

RegistryTree::Record RegistryTree::readRecord(const char* at) {
    const auto flags = static_cast<unsigned char>(*at++);
    Record record{};
    record.kind = flags & kValueFlag ? Kind::value : Kind::key;
    record.removed = (flags & kRemovedFlag) != 0;
    record.owner = takeNumber<Entry>(at);
    const std::size_t nameLength = takeLength(at);
    const std::size_t length = record.kind == Kind::value ? takeLength(at) : 0;
    record.type = flags >> kTypeShift;
    if (record.type == kLongType) record.type = takeNumber<DWORD>(at);
    record.name = {at, nameLength};
    record.bytes = {at + nameLength, length};
    return record;
}

char* RegistryTree::at(Entry entry) const {
    return blocks_[entry >> kBlockBits].bytes.get() + (entry & (kBlock - 1));
}

std::uint64_t RegistryTree::hashOf(Kind kind, Entry owner, std::string_view name) {
    std::uint64_t hash = mixed(hashSeed() + owner * std::uint64_t{2} + static_cast<std::uint64_t>(kind));
    for (const char byte : name)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
    return mixed(hash);
}

std::size_t RegistryTree::slotOf(std::uint64_t hash, Kind kind, Entry owner, std::string_view name) const {
    const std::uint8_t mark = markOf(hash);
    std::size_t slot = (hash >> 32) * slots_.size() >> 32;
    for (; marks_[slot] != 0; slot = slot + 1 == slots_.size() ? 0 : slot + 1) {
        if (marks_[slot] != mark) continue;
        const Record record = readRecord(at(slots_[slot]));
        if (record.kind == kind && record.owner == owner && record.name == name) break;
    }
    return slot;
}

RegistryTree::Entry RegistryTree::find(Kind kind, Entry owner, std::string_view name) const {
    if (slots_.empty()) return kNone;
    const std::size_t slot = slotOf(hashOf(kind, owner, name), kind, owner, name);
    return marks_[slot] == 0 || readRecord(at(slots_[slot])).removed ? kNone : slots_[slot];
}

bool RegistryTree::hasRoom(std::uint64_t blocks, std::uint64_t slots) const {
    return blocks * kBlock + slots * kSlotBytes <= budget_;
}

// The former slots are given back first: the records tell all that they did.
bool RegistryTree::growSlots() {
    if (filled_ + 1 <= slots_.size() / 8 * 7) return true;
    const std::size_t count = slots_.empty() ? kFirstSlots : slots_.size() + slots_.size() / 4;
    if (count > kNone || !hasRoom(blocks_.size(), count)) return false;
    std::vector<Entry>().swap(slots_);
    std::vector<std::uint8_t>().swap(marks_);
    slots_.resize(count);
    marks_.resize(count);
    fillSlots();
    return true;
}

void RegistryTree::fillSlots() {
    filled_ = 0;
    for (std::size_t block = 0; block < blocks_.size(); ++block) {
        const char* start = blocks_[block].bytes.get();
        std::size_t place = block == 0 ? 1 : 0;
        while (place < blocks_[block].used) {
            const Record record = readRecord(start + place);
            const auto entry = static_cast<Entry>(block << kBlockBits | place);
            place = static_cast<std::size_t>(record.bytes.data() + record.bytes.size() - start);
            if (record.removed) continue;
            const std::uint64_t hash = hashOf(record.kind, record.owner, record.name);
            const std::size_t slot = slotOf(hash, record.kind, record.owner, record.name);
            slots_[slot] = entry;
            marks_[slot] = markOf(hash);
            ++filled_;
        }
    }
}

RegistryTree::Entry RegistryTree::takePlace(std::size_t size) {
    if (size >= kBlock) return kNone;
    if (blocks_.empty() || size > kBlock - blocks_.back().used) {
        if (blocks_.size() + 1 >= kMostBlocks || !hasRoom(blocks_.size() + 1, slots_.size())) return kNone;
        // The first byte of all stays free: place 0 is the root.
        const std::uint32_t used = blocks_.empty() ? 1 : 0;
        blocks_.push_back({std::make_unique_for_overwrite<char[]>(kBlock), used});
    }
    const std::size_t place = blocks_.back().used;
    blocks_.back().used += static_cast<std::uint32_t>(size);
    return static_cast<Entry>((blocks_.size() - 1) << kBlockBits | place);
}

RegistryTree::Entry RegistryTree::add(const Record& record) {
    if (!growSlots()) return kNone;
    const bool isValue = record.kind == Kind::value;
    const DWORD type = record.type < kLongType ? record.type : kLongType;
    char head[kMostHead];
    head[0] = static_cast<char>(type << kTypeShift | (isValue ? kValueFlag : 0));
    char* end = putLength(putNumber(head + 1, record.owner), record.name.size());
    if (isValue) end = putLength(end, record.bytes.size());
    if (type == kLongType) end = putNumber(end, record.type);
    const std::string_view start(head, static_cast<std::size_t>(end - head));
    const Entry entry = takePlace(start.size() + record.name.size() + record.bytes.size());
    if (entry == kNone) return kNone;
    char* text = at(entry);
    for (const std::string_view part : {start, record.name, record.bytes})
        text += part.copy(text, part.size());
    const std::uint64_t hash = hashOf(record.kind, record.owner, record.name);
    const std::size_t slot = slotOf(hash, record.kind, record.owner, record.name);
    if (marks_[slot] == 0) ++filled_;
    marks_[slot] = markOf(hash);
    return slots_[slot] = entry;
}

void RegistryTree::remove(Kind kind, Entry owner, std::string_view name) {
    const Entry entry = find(kind, owner, name);
    if (entry != kNone) *at(entry) = static_cast<char>(*at(entry) | kRemovedFlag);
}

RegistryTree::Entry RegistryTree::key(Entry parent, std::string_view name) const {
    return find(Kind::key, parent, name);
}

RegistryTree::Entry RegistryTree::makeKey(Entry parent, std::string_view name) {
    const Entry there = key(parent, name);
    return there != kNone ? there : add({Kind::key, false, parent, 0, name, {}});
}

void RegistryTree::removeKey(Entry parent, std::string_view name) { remove(Kind::key, parent, name); }

bool RegistryTree::value(Entry key, std::string_view name, RegistryValue& found) const {
    const Entry entry = find(Kind::value, key, name);
    if (entry == kNone) return false;
    const Record record = readRecord(at(entry));
    found = {record.type, record.bytes};
    return true;
}

bool RegistryTree::setValue(Entry key, std::string_view name, DWORD type, std::string_view bytes) {
    const Entry there = find(Kind::value, key, name);
    if (there == kNone) return add({Kind::value, false, key, type, name, bytes}) != kNone;
    const Record former = readRecord(at(there));
    if (former.type == type && former.bytes.size() == bytes.size()) {
        bytes.copy(at(there) + (former.bytes.data() - at(there)), bytes.size());
        return true;
    }
    if (add({Kind::value, false, key, type, name, bytes}) == kNone) return false;
    *at(there) = static_cast<char>(*at(there) | kRemovedFlag);
    return true;
}

void RegistryTree::removeValue(Entry key, std::string_view name) { remove(Kind::value, key, name); }

}  // namespace kor
