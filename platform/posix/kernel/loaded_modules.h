#pragma once
// The modules that handles stand for: shared objects of the process and resource-only libraries read as data.

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/posix/kernel/resource_image.h"

struct link_map;

namespace kor {

/// Where the sixteen texts of a string block lie in the image; a text without length is not there.
struct StringBlock {
    struct Place {
        DWORD offset = 0;
        WORD length = 0;  // in UTF-16 units
    };
    std::array<Place, 16> places;
};

struct Module {
    std::string nativePath;            // UTF-8
    const link_map* object = nullptr;  // the shared object; null for a library read as data
    std::uintptr_t address = 0;        // where it was loaded
    void* reference = nullptr;         // ours on the shared object, held while `count` is not 0
    unsigned count = 0;                // loads that FreeLibrary has not given back
    bool pinned = false;               // never unloaded
    bool dataFile = false;             // loaded as a data file: not found by name
    std::vector<std::byte> fileBytes;  // the resources of a library read as data
    std::optional<ResourceImage> resources;

    std::mutex blocksLock;
    std::unordered_map<WORD, StringBlock> blocks;  // string blocks that were looked for, by number
};

/// Lower-case file name by which a module is known: `libNAME.so.1` is `name.dll`, a name without extension
/// gets
/// `.dll`, and one point at the end is dropped.
std::string moduleKey(std::string_view fileName);

/// The module of a handle, the host executable for null; null when the handle is not a live module's.
std::shared_ptr<Module> moduleOf(HMODULE handle);
HMODULE handleOf(const std::shared_ptr<Module>& module);

/// A module that the process has: a shared object by an address inside it; any by its key or its path. A
/// library that was loaded as a data file is found as such only.
std::shared_ptr<Module> objectAt(const void* address);
std::shared_ptr<Module> moduleByKey(const std::string& key);
std::shared_ptr<Module> moduleByPath(const std::string& nativePath, bool dataFile = false);

/// Loads a file and counts a reference. @return null with the last error set
std::shared_ptr<Module> loadModule(const std::string& nativePath, bool asData);
/// Counts one more reference to a module. @return false when it is being unloaded
bool addReference(const std::shared_ptr<Module>& module, bool pin);
bool releaseReference(HMODULE handle);

/// An exported symbol of this very module, null when it has none.
void* symbolOf(const Module& module, const char* name);

}  // namespace kor
