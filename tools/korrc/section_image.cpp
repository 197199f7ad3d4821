#include <map>

#include "outputs.h"

namespace korrc {
namespace {

constexpr std::size_t kDirectorySize = 16;
constexpr std::size_t kEntrySize = 8;
constexpr std::size_t kDataEntrySize = 16;
constexpr std::size_t kSubdirectory = 0x80000000;

using Languages = std::map<std::uint16_t, const Resource*>;
using Names = std::map<std::uint16_t, Languages>;
using Types = std::map<std::uint16_t, Names>;

// The header of a directory whose entries are all numbers.
void directory(Writer& writer, std::size_t entries) {
    writer.dword(0);
    writer.dword(0);
    writer.dword(0);
    writer.word(0);
    writer.word(entries);
}

constexpr std::size_t sizeOf(std::size_t entries) { return kDirectorySize + entries * kEntrySize; }

}  // namespace

// Level by level: the types, all names, all languages, the data entries, the data.
Bytes sectionImage(const std::vector<Resource>& resources, std::uint32_t base) {
    Types types;
    for (const Resource& resource : resources)
        types[resource.type][resource.name][resource.language] = &resource;
    std::size_t nextNames = sizeOf(types.size()), nextLanguages = nextNames;
    for (const auto& [type, names] : types)
        nextLanguages += sizeOf(names.size());
    std::size_t nextEntry = nextLanguages;
    for (const auto& [type, names] : types) {
        for (const auto& [name, languages] : names)
            nextEntry += sizeOf(languages.size());
    }
    std::size_t nextData = nextEntry;
    for (const auto& [type, names] : types) {
        for (const auto& [name, languages] : names)
            nextData += languages.size() * kDataEntrySize;
    }

    Bytes bytes;
    Writer writer(bytes);
    directory(writer, types.size());
    for (const auto& [type, names] : types) {
        writer.dword(type);
        writer.dword(nextNames | kSubdirectory);
        nextNames += sizeOf(names.size());
    }
    for (const auto& [type, names] : types) {
        directory(writer, names.size());
        for (const auto& [name, languages] : names) {
            writer.dword(name);
            writer.dword(nextLanguages | kSubdirectory);
            nextLanguages += sizeOf(languages.size());
        }
    }
    std::vector<const Resource*> order;
    for (const auto& [type, names] : types) {
        for (const auto& [name, languages] : names) {
            directory(writer, languages.size());
            for (const auto& [language, resource] : languages) {
                writer.dword(language);
                writer.dword(nextEntry);
                nextEntry += kDataEntrySize;
                order.push_back(resource);
            }
        }
    }
    for (const Resource* resource : order) {
        nextData = (nextData + 7) / 8 * 8;
        writer.dword(base + nextData);
        writer.dword(resource->bytes.size());
        writer.dword(0);
        writer.dword(0);
        nextData += resource->bytes.size();
    }
    for (const Resource* resource : order) {
        writer.align(8);
        writer.append(resource->bytes);
    }
    return bytes;
}

}  // namespace korrc
