#pragma once
// The one parser of resources: the resource section of a portable executable, whether it lies in a library's
// file or in a table that is linked in. Its bytes are never trusted: every directory, entry, name, address
// and size is checked against the image, and the tree is three levels deep by construction.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "korutil/platform.h"

namespace kor {

using ByteView = std::span<const std::byte>;

/// A little-endian field at an offset; 0 when it does not lie wholly within the bytes.
WORD wordAt(ByteView bytes, std::size_t offset);
DWORD dwordAt(ByteView bytes, std::size_t offset);

/// A type or a resource: by number, or by name in upper case when the name is not empty.
struct ResourceKey {
    WORD number = 0;
    std::u16string name;
    bool operator==(const ResourceKey&) const = default;
};

class ResourceImage {
  public:
    /// @param base  address that data entries count from, in terms of the image's first byte
    ResourceImage(ByteView image, DWORD base) : image_(image), base_(base) {}

    struct Found {
        const std::byte* entry = nullptr;  // the data entry
        DWORD error = 0;                   // of the system, when there is none
    };
    /// Finds a resource for a language, 0 for the user's; see FindResourceExA.
    Found find(const ResourceKey& type, const ResourceKey& name, WORD language) const;

    /// The bytes of a data entry; nothing when it is not one within the image or its data is not.
    std::optional<ByteView> data(const void* entry) const;

    /// All names of a type, all languages of a resource. `error` is the system's when there are none.
    std::vector<ResourceKey> names(const ResourceKey& type, DWORD& error) const;
    std::vector<WORD> languages(const ResourceKey& type, const ResourceKey& name, DWORD& error) const;

    ByteView bytes() const { return image_; }

  private:
    struct Directory {
        std::size_t firstEntry;
        std::size_t count;
    };
    std::optional<Directory> directoryAt(std::size_t offset) const;
    ResourceKey keyOf(std::size_t entry) const;
    std::optional<Directory> subdirectory(const Directory& parent, const ResourceKey& key) const;
    std::optional<Directory> languagesOf(const ResourceKey& type, const ResourceKey& name,
                                         DWORD& error) const;
    const std::byte* dataEntry(std::size_t entry) const;
    const std::byte* forLanguage(const Directory& directory, WORD language) const;

    ByteView image_;
    DWORD base_;
};

/// The language of the user's environment, for resources that have several.
WORD userLanguage();

}  // namespace kor
