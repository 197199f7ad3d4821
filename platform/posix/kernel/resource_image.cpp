#include "platform/posix/kernel/resource_image.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "korutil/platform/last_error.h"

namespace kor {
namespace {

constexpr std::size_t kDirectorySize = 16;
constexpr std::size_t kEntrySize = 8;
constexpr std::size_t kDataEntrySize = 16;
constexpr DWORD kHighBit = 0x80000000;  // of an entry: a name, or a subdirectory
constexpr WORD kEnglish = 1033;

constexpr WORD primaryOf(WORD language) { return language & 0x3FF; }

bool within(ByteView bytes, std::size_t offset, std::size_t size) {
    return offset <= bytes.size() && bytes.size() - offset >= size;
}

unsigned byteAt(ByteView bytes, std::size_t offset) { return std::to_integer<unsigned>(bytes[offset]); }

}  // namespace

WORD wordAt(ByteView bytes, std::size_t offset) {
    if (!within(bytes, offset, 2)) return 0;
    return static_cast<WORD>(byteAt(bytes, offset) | byteAt(bytes, offset + 1) << 8);
}

DWORD dwordAt(ByteView bytes, std::size_t offset) {
    if (!within(bytes, offset, 4)) return 0;
    return wordAt(bytes, offset) | static_cast<DWORD>(wordAt(bytes, offset + 2)) << 16;
}

std::optional<ResourceImage::Directory> ResourceImage::directoryAt(std::size_t offset) const {
    if (!within(image_, offset, kDirectorySize)) return std::nullopt;
    const std::size_t count = std::size_t{wordAt(image_, offset + 12)} + wordAt(image_, offset + 14);
    const std::size_t first = offset + kDirectorySize;
    if (!within(image_, first, count * kEntrySize)) return std::nullopt;
    return Directory{first, count};
}

// A name that does not lie within the image reads as number 0, which no resource has.
ResourceKey ResourceImage::keyOf(std::size_t entry) const {
    const DWORD field = dwordAt(image_, entry);
    if (!(field & kHighBit)) return {static_cast<WORD>(field > 0xFFFF ? 0 : field), {}};
    const std::size_t offset = field & ~kHighBit;
    const std::size_t length = wordAt(image_, offset);
    if (!within(image_, offset, 2 + length * 2)) return {};
    ResourceKey key;
    for (std::size_t i = 0; i < length; ++i) {
        key.name += static_cast<char16_t>(wordAt(image_, offset + 2 + i * 2));
    }
    return key;
}

std::optional<ResourceImage::Directory> ResourceImage::subdirectory(const Directory& parent,
                                                                    const ResourceKey& key) const {
    for (std::size_t i = 0; i < parent.count; ++i) {
        const std::size_t entry = parent.firstEntry + i * kEntrySize;
        const bool named = (dwordAt(image_, entry) & kHighBit) != 0;
        if (named == key.name.empty() || keyOf(entry) != key) continue;
        const DWORD offset = dwordAt(image_, entry + 4);
        if (offset & kHighBit) return directoryAt(offset & ~kHighBit);
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<ResourceImage::Directory> ResourceImage::languagesOf(const ResourceKey& type,
                                                                   const ResourceKey& name,
                                                                   DWORD& error) const {
    error = ERROR_RESOURCE_DATA_NOT_FOUND;
    const auto types = directoryAt(0);
    if (!types) return std::nullopt;
    error = ERROR_RESOURCE_TYPE_NOT_FOUND;
    const auto names = subdirectory(*types, type);
    if (!names) return std::nullopt;
    error = ERROR_RESOURCE_NAME_NOT_FOUND;
    return subdirectory(*names, name);
}

const std::byte* ResourceImage::dataEntry(std::size_t entry) const {
    const DWORD offset = dwordAt(image_, entry + 4);
    if ((offset & kHighBit) || !within(image_, offset, kDataEntrySize)) return nullptr;
    return image_.data() + offset;
}

const std::byte* ResourceImage::forLanguage(const Directory& directory, WORD language) const {
    for (std::size_t i = 0; i < directory.count; ++i) {
        const std::size_t entry = directory.firstEntry + i * kEntrySize;
        if (dwordAt(image_, entry) == language) return dataEntry(entry);
    }
    return nullptr;
}

ResourceImage::Found ResourceImage::find(const ResourceKey& type, const ResourceKey& name,
                                         WORD language) const {
    DWORD error = 0;
    const auto directory = languagesOf(type, name, error);
    if (!directory) return {nullptr, error};
    const bool any = primaryOf(language) == 0;
    const WORD user = userLanguage();
    const std::array<WORD, 5> forAny{0, user, primaryOf(user), kEnglish, primaryOf(kEnglish)};
    const std::array<WORD, 3> forOne{language, primaryOf(language), 0};
    for (const WORD candidate : any ? std::span<const WORD>(forAny) : std::span<const WORD>(forOne)) {
        if (const std::byte* entry = forLanguage(*directory, candidate)) return {entry, 0};
    }
    for (std::size_t i = 0; any && i < directory->count; ++i) {
        if (const std::byte* entry = dataEntry(directory->firstEntry + i * kEntrySize)) return {entry, 0};
    }
    return {nullptr, ERROR_RESOURCE_LANG_NOT_FOUND};
}

std::optional<ByteView> ResourceImage::data(const void* entry) const {
    const auto address = reinterpret_cast<std::uintptr_t>(entry);
    const auto start = reinterpret_cast<std::uintptr_t>(image_.data());
    if (address < start || !within(image_, address - start, kDataEntrySize)) return std::nullopt;
    const std::size_t offset = address - start;
    const DWORD position = dwordAt(image_, offset), size = dwordAt(image_, offset + 4);
    if (position < base_ || !within(image_, position - base_, size)) return std::nullopt;
    return image_.subspan(position - base_, size);
}

std::vector<ResourceKey> ResourceImage::names(const ResourceKey& type, DWORD& error) const {
    error = ERROR_RESOURCE_DATA_NOT_FOUND;
    const auto types = directoryAt(0);
    if (!types) return {};
    error = ERROR_RESOURCE_TYPE_NOT_FOUND;
    const auto directory = subdirectory(*types, type);
    if (!directory) return {};
    std::vector<ResourceKey> keys;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < directory->count; ++i) {
        keys.push_back(keyOf(directory->firstEntry + i * kEntrySize));
        // Entries may share one long name; together the names of an honest image are no longer than it.
        characters += keys.back().name.size();
        if (characters > image_.size()) return {};
    }
    return keys;
}

std::vector<WORD> ResourceImage::languages(const ResourceKey& type, const ResourceKey& name,
                                           DWORD& error) const {
    const auto directory = languagesOf(type, name, error);
    std::vector<WORD> languages;
    for (std::size_t i = 0; directory && i < directory->count; ++i) {
        languages.push_back(LOWORD(dwordAt(image_, directory->firstEntry + i * kEntrySize)));
    }
    return languages;
}

WORD userLanguage() {
    static const WORD language = [] {
        constexpr std::array<std::pair<std::string_view, WORD>, 6> kLanguages{
            {{"de", 1031}, {"en", kEnglish}, {"es", 1034}, {"fr", 1036}, {"ja", 1041}, {"zh", 2052}}};
        for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* value = std::getenv(variable);
            if (!value || !*value) continue;
            for (const auto& [prefix, number] : kLanguages) {
                if (std::string_view(value).starts_with(prefix)) return number;
            }
            break;
        }
        return kEnglish;
    }();
    return language;
}

}  // namespace kor
