#include "platform/posix/kernel/loaded_modules.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <shared_mutex>
#include <utility>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/portable_executable.h"
#include "platform/posix/kernel/with_memory.h"

namespace kor {
namespace {

// All live modules by handle. Never destroyed: libraries use it while the process ends.
struct Registry {
    std::shared_mutex lock;
    std::unordered_map<const void*, std::shared_ptr<Module>> modules;
};

Registry& registry() {
    static Registry& instance = *new Registry;
    return instance;
}

// Why the loader refused an object or a symbol, in its words.
class LoaderRefusal {
  public:
    bool says(const char* words) const { return reason_ && std::strstr(reason_, words); }

    // Without memory for the name of a file that is there, the loader does not find it.
    bool isOfMemory(const char* path) const {
        const bool missed =
            says("cannot open shared object") && path && std::strstr(reason_, path) == reason_;
        return says("llocate memory") || says("out of memory") ||
               says("cannot create shared object descriptor") || (missed && access(path, R_OK) == 0);
    }

  private:
    const char* reason_ = dlerror();
};

// A reference of the dynamic loader's to an object of the process.
class LoaderReference {
  public:
    explicit LoaderReference(void* handle) : handle_(handle) {}

    // To an object that the process has already.
    explicit LoaderReference(const char* path) : handle_(dlopen(path, RTLD_LAZY | RTLD_NOLOAD)) {
        if (!handle_ && LoaderRefusal().isOfMemory(path)) throw std::bad_alloc();
    }
    ~LoaderReference() {
        if (handle_) dlclose(handle_);
    }
    LoaderReference(const LoaderReference&) = delete;
    LoaderReference& operator=(const LoaderReference&) = delete;
    void* get() const { return handle_; }
    void* release() { return std::exchange(handle_, nullptr); }

  private:
    void* handle_;
};

constexpr const char* kHost = nullptr;  // the loader's name of the host executable

const link_map* objectOf(void* reference) {
    link_map* object = nullptr;
    return reference && dlinfo(reference, RTLD_DI_LINKMAP, &object) == 0 ? object : nullptr;
}

const std::string& hostPath() {
    static const std::string& path = *new std::string([] {
        std::array<char, PATH_MAX> buffer{};
        const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
        return std::string(buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    }());
    return path;
}

const link_map* hostObject() {
    static const link_map* object = objectOf(LoaderReference(kHost).get());
    return object;
}

// These two read the loader's record of an object that is loaded meanwhile. The loader's own lock orders that
// with its writing, which the race detector does not see.
__attribute__((no_sanitize("thread"))) std::uintptr_t addressOf(const link_map* object) {
    return object->l_addr;
}

__attribute__((no_sanitize("thread"))) void copyName(const link_map* object,
                                                     std::array<char, PATH_MAX>& name) {
    std::size_t length = 0;
    for (; length + 1 < name.size() && object->l_name[length] != '\0'; ++length) {
        name[length] = object->l_name[length];
    }
    name[length] = '\0';
}

// The loader knows the host executable by an empty name.
std::string pathOf(const link_map* object) {
    if (object == hostObject()) return hostPath();
    std::array<char, PATH_MAX> name, resolved;
    copyName(object, name);
    if (realpath(name.data(), resolved.data())) return resolved.data();
    if (errno == ENOMEM) throw std::bad_alloc();
    return name.data();
}

void attachLinkedResources(Module& module) {
    const auto* table = static_cast<const KorResourceTable*>(symbolOf(module, "korResourceTable"));
    if (!table || table->magic != kKorResourceMagic || !table->image) return;
    module.resources.emplace(ByteView(static_cast<const std::byte*>(table->image), table->size), 0);
}

bool isSame(const Module& module, std::uintptr_t address, const std::string& path) {
    return module.address == address && module.nativePath == path;
}

bool isLoaded(const Module& module, void* reference) {
    const link_map* object = objectOf(reference);
    return object && object == module.object && addressOf(object) == module.address;
}

// The module of a shared object; made when it is met for the first time. Where the loader keeps the record of
// an object, it may have kept that of one which was unloaded, or of the same one at another address.
std::shared_ptr<Module> moduleOfObject(const link_map* object) {
    if (!object) return nullptr;
    const std::string path = pathOf(object);
    auto& known = registry();
    const std::uintptr_t address = addressOf(object);
    const auto isIt = [&](const auto& item) { return item.second->object == object; };
    {
        const std::shared_lock lock(known.lock);
        const auto found = std::find_if(known.modules.begin(), known.modules.end(), isIt);
        if (found != known.modules.end() && isSame(*found->second, address, path)) return found->second;
    }
    const auto fresh = std::make_shared<Module>();
    fresh->nativePath = path;
    fresh->object = object;
    fresh->address = address;
    attachLinkedResources(*fresh);
    const std::unique_lock lock(known.lock);
    const auto found = std::find_if(known.modules.begin(), known.modules.end(), isIt);
    if (found != known.modules.end()) {
        if (isSame(*found->second, address, path)) return found->second;
        known.modules.erase(found);
    }
    known.modules.emplace(fresh.get(), fresh);
    return fresh;
}

// The names by which the loader knows the process's objects.
std::vector<std::string> loaderNames() {
    std::vector<std::string> names;
    const auto add = [](dl_phdr_info* info, std::size_t, void* data) {
        // The loader holds its lock: nothing may be thrown past it.
        return withMemory(1, [&] {
            static_cast<std::vector<std::string>*>(data)->emplace_back(info->dlpi_name ? info->dlpi_name
                                                                                       : "");
            return 0;
        });
    };
    if (dl_iterate_phdr(add, &names) != 0) throw std::bad_alloc();
    return names;
}

std::string fileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::optional<std::vector<std::byte>> readFile(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    std::optional<std::vector<std::byte>> bytes;
    constexpr off_t kMost = 0x7FFFFFFF;
    if (file.isOpen() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_size <= kMost) {
        bytes.emplace(static_cast<std::size_t>(status.st_size));
        std::size_t done = 0;
        while (done < bytes->size()) {
            const ssize_t part = read(file.get(), bytes->data() + done, bytes->size() - done);
            if (part < 0 && errno == EINTR) continue;
            if (part <= 0) break;
            done += static_cast<std::size_t>(part);
        }
        bytes->resize(done);
    }
    return bytes;
}

std::shared_ptr<Module> loadObject(const std::string& path) {
    LoaderReference reference(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!reference.get()) {
        const LoaderRefusal refusal;
        SetLastError(refusal.isOfMemory(path.c_str())            ? ERROR_NOT_ENOUGH_MEMORY
                     : refusal.says("cannot open shared object") ? ERROR_MOD_NOT_FOUND
                     : refusal.says("undefined symbol")          ? ERROR_PROC_NOT_FOUND
                                                                 : ERROR_BAD_EXE_FORMAT);
        return nullptr;
    }
    const auto module = moduleOfObject(objectOf(reference.get()));
    if (module) {
        const std::unique_lock lock(registry().lock);
        if (!module->reference) {
            registry().modules.emplace(module.get(), module);
            module->reference = reference.release();
        }
        ++module->count;
    }
    return module;
}

std::shared_ptr<Module> loadData(const std::string& path, ByteView bytes, bool asData) {
    auto executable = parsePortableExecutable(bytes);
    if (!executable || (executable->hasCode && !asData)) {
        SetLastError(ERROR_BAD_EXE_FORMAT);
        return nullptr;
    }
    const auto module = std::make_shared<Module>();
    module->nativePath = path;
    module->count = 1;
    module->dataFile = asData;
    module->fileBytes = std::move(executable->resources);
    if (!module->fileBytes.empty()) {
        module->resources.emplace(ByteView(module->fileBytes), executable->resourceAddress);
    }
    const std::unique_lock lock(registry().lock);
    registry().modules.emplace(module.get(), module);
    return module;
}

template <typename Condition>
std::shared_ptr<Module> libraryWhere(Condition condition) {
    const std::shared_lock lock(registry().lock);
    for (const auto& [handle, module] : registry().modules) {
        if (!module->object && condition(*module)) return module;
    }
    return nullptr;
}

}  // namespace

std::string moduleKey(std::string_view fileName) {
    std::string key(fileName);
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
    const std::size_t extension = key.find(".so");
    if (extension != std::string::npos && (extension + 3 == key.size() || key[extension + 3] == '.')) {
        key.resize(extension);
        if (key.starts_with("lib")) key.erase(0, 3);
        return key + ".dll";
    }
    if (key.ends_with('.')) {
        key.pop_back();
        return key;
    }
    return key.find('.') == std::string::npos ? key + ".dll" : key;
}

HMODULE handleOf(const std::shared_ptr<Module>& module) { return reinterpret_cast<HMODULE>(module.get()); }

std::shared_ptr<Module> moduleOf(HMODULE handle) {
    if (!handle) return moduleOfObject(hostObject());
    const std::shared_lock lock(registry().lock);
    const auto found = registry().modules.find(handle);
    return found == registry().modules.end() ? nullptr : found->second;
}

std::shared_ptr<Module> objectAt(const void* address) {
    Dl_info information{};
    link_map* object = nullptr;
    if (!dladdr1(address, &information, reinterpret_cast<void**>(&object), RTLD_DL_LINKMAP)) return nullptr;
    return moduleOfObject(object);
}

std::shared_ptr<Module> moduleByKey(const std::string& key) {
    for (const char* own : {"kernel32.dll", "user32.dll", "advapi32.dll", "ole32.dll"}) {
        if (key == own) return objectAt(reinterpret_cast<const void*>(&GetLastError));
    }
    const std::string host = fileNameOf(hostPath());
    if (key == moduleKey(host) || key == moduleKey(host + ".") || key == moduleKey(host + ".exe")) {
        return moduleOf(nullptr);
    }
    for (const std::string& name : loaderNames()) {
        if (name.empty() || moduleKey(fileNameOf(name)) != key) continue;
        const LoaderReference reference(name.c_str());
        if (auto module = moduleOfObject(objectOf(reference.get()))) return module;
    }
    return libraryWhere([&](const Module& module) {
        return !module.dataFile && moduleKey(fileNameOf(module.nativePath)) == key;
    });
}

std::shared_ptr<Module> moduleByPath(const std::string& nativePath, bool dataFile) {
    if (nativePath == hostPath()) return moduleOf(nullptr);
    const LoaderReference reference(nativePath.c_str());
    if (auto module = moduleOfObject(objectOf(reference.get()))) return module;
    return libraryWhere(
        [&](const Module& module) { return module.nativePath == nativePath && module.dataFile == dataFile; });
}

std::shared_ptr<Module> loadModule(const std::string& nativePath, bool asData) {
    if (auto known = moduleByPath(nativePath, asData); known && addReference(known, false)) {
        return known;
    }
    const auto bytes = readFile(nativePath);
    if (!bytes) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    constexpr char kSharedObject[] =
        "\x7F"
        "ELF";
    if (bytes->size() > 4 && std::memcmp(bytes->data(), kSharedObject, 4) == 0 && !asData)
        return loadObject(nativePath);
    return loadData(nativePath, *bytes, asData);
}

bool addReference(const std::shared_ptr<Module>& module, bool pin) {
    const bool isHost = module->object == hostObject();
    LoaderReference reference(module->object && !isHost ? module->nativePath.c_str() : kHost);
    if (!reference.get()) return false;
    // It may have been unloaded, and loaded anew elsewhere, since it was found.
    if (module->object && !isHost && !isLoaded(*module, reference.get())) return false;
    const std::unique_lock lock(registry().lock);
    if (!registry().modules.contains(module.get())) return false;
    ++module->count;
    module->pinned = module->pinned || pin;
    if (module->object && !module->reference) module->reference = reference.release();
    return true;
}

bool releaseReference(HMODULE handle) {
    void* reference = nullptr;
    std::shared_ptr<Module> module;
    {
        const std::unique_lock lock(registry().lock);
        const auto found = registry().modules.find(handle);
        if (found == registry().modules.end()) return false;
        module = found->second;
        // An object that the process was linked with has no reference of ours, and stays.
        if (module->count == 0 || --module->count > 0 || module->pinned || module->object == hostObject())
            return true;
        reference = std::exchange(module->reference, nullptr);
    }
    // Unloading runs the module's own code, so no lock of ours is held meanwhile.
    if (reference) dlclose(reference);
    const bool stillThere = module->object && withMemory(true, [&module] {
                                return isLoaded(*module, LoaderReference(module->nativePath.c_str()).get());
                            });
    const std::unique_lock lock(registry().lock);
    if (module->count == 0 && !stillThere) registry().modules.erase(handle);
    return true;
}

void* symbolOf(const Module& module, const char* name) {
    if (!module.object) return nullptr;
    const LoaderReference reference(module.object == hostObject() ? kHost : module.nativePath.c_str());
    if (!reference.get()) return nullptr;
    void* symbol = dlsym(reference.get(), name);
    if (!symbol && LoaderRefusal().isOfMemory(nullptr)) throw std::bad_alloc();
    Dl_info information{};
    link_map* object = nullptr;
    // The loader also looks into what the module depends on; that is not the module's own.
    if (!symbol || !dladdr1(symbol, &information, reinterpret_cast<void**>(&object), RTLD_DL_LINKMAP))
        return nullptr;
    return object == module.object ? symbol : nullptr;
}

}  // namespace kor
