#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/registry_contents.h"

namespace kor::test {
namespace {

// The process's folder of registry files, from before the first call that reads one.
struct Folder {
    Folder() {
        char name[] = "/tmp/korregXXXXXX";
        if (const char* made = mkdtemp(name)) path = made;
        setenv("KORUTIL_REGISTRY", path.c_str(), 1);
    }
    ~Folder() { std::filesystem::remove_all(path); }

    std::string path;
};
const Folder folder;

}  // namespace

void setRegistry(const std::vector<RegistryEntry>& entries) {
    std::string text = "REGEDIT4\r\n";
    for (const auto& [key, name, type, bytes] : entries) {
        char piece[24];
        std::snprintf(piece, sizeof piece, "=hex(%x):", type);
        text += "\r\n[HKEY_LOCAL_MACHINE\\" + std::string(kRegistryBase) + '\\' + key + "]\r\n";
        text += (name.empty() ? "@" : '"' + name + '"') + piece;
        for (const char byte : bytes) {
            std::snprintf(piece, sizeof piece, "%02x,", static_cast<unsigned char>(byte));
            text += piece;
        }
        text += "\r\n";
    }
    setRegistryFile("HKEY_LOCAL_MACHINE", text);
}

std::string setRegistryFile(const char* root, std::string_view bytes) {
    const std::string path = folder.path + '/' + root + ".reg";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

}  // namespace kor::test
