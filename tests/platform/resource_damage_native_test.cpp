// What damaged resource libraries do: nothing outside their bytes is read. The system's own loader is not
// ours to try, and what it does with such files differs between its versions.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/support/random.h"
#include "tests/support/scratch.h"

namespace {

struct Seen {
    std::size_t fileSize;
    std::size_t resources = 0;
};

// Reads every byte of a resource: an address outside the library faults, or is caught by the sanitizer.
unsigned touch(HMODULE module, HRSRC resource, Seen& seen) {
    const auto* data = static_cast<const unsigned char*>(LockResource(LoadResource(module, resource)));
    if (!data) return 0;
    const DWORD size = SizeofResource(module, resource);
    EXPECT_LE(size, seen.fileSize);
    ++seen.resources;
    unsigned sum = 0;
    for (DWORD i = 0; i < size; ++i)
        sum += data[i];
    return sum;
}

BOOL CALLBACK visitLanguage(HMODULE module, LPCSTR type, LPCSTR name, WORD language, LONG_PTR parameter) {
    touch(module, FindResourceExA(module, type, name, language), *reinterpret_cast<Seen*>(parameter));
    return TRUE;
}

BOOL CALLBACK visitName(HMODULE module, LPCSTR type, LPSTR name, LONG_PTR parameter) {
    touch(module, FindResourceA(module, name, type), *reinterpret_cast<Seen*>(parameter));
    EnumResourceLanguagesA(module, type, name, visitLanguage, parameter);
    return TRUE;
}

void queryVersion(const std::string& path) {
    const DWORD size = GetFileVersionInfoSizeA(path.c_str(), nullptr);
    std::vector<char> data(size);
    if (size == 0 || !GetFileVersionInfoA(path.c_str(), 0, size, data.data())) return;
    for (const char* query :
         {"\\", "\\VarFileInfo\\Translation", "\\StringFileInfo\\040904B0\\FileVersion",
          "\\StringFileInfo\\040904B0\\OriginalFilename", "\\StringFileInfo\\040904B0\\X"}) {
        void* value = nullptr;
        UINT length = 0;
        if (!VerQueryValueA(data.data(), query, &value, &length)) continue;
        const char* start = static_cast<const char*>(value);
        EXPECT_GE(start, data.data());
        EXPECT_LE(start + length, data.data() + data.size()) << query;
    }
}

// Uses everything that a library may offer; the number of resources that could be read.
std::size_t exercise(const std::string& path, std::size_t fileSize) {
    queryVersion(path);
    const HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (!module) return 0;
    for (const UINT id : {1u, 2u, 31u, 32u, 80u, 81u, 65535u, 900u}) {
        std::array<char, 64> text;
        text.fill('#');
        const int length = LoadStringA(module, id, text.data(), 60);
        EXPECT_LT(length, 60);
        EXPECT_EQ(text[60], '#');
    }
    Seen seen{fileSize};
    for (const int type : {1, 5, 6, 12, 16, 4794}) {
        EnumResourceNamesA(module, MAKEINTRESOURCEA(type), visitName, reinterpret_cast<LONG_PTR>(&seen));
    }
    LoadCursorA(module, MAKEINTRESOURCEA(105));
    FreeLibrary(module);
    return seen.resources;
}

class DamagedLibrary : public testing::Test {
  protected:
    DamagedLibrary() {
        char path[MAX_PATH];
        const DWORD length = SearchPathA(nullptr, "KorTestL.dll", nullptr, MAX_PATH, path, nullptr);
        whole_ = kor::test::bytesOf(std::string(path, length));
    }

    std::size_t exerciseBytes(const std::string& bytes) const {
        const std::string path = scratch_.file("damaged.dll", bytes);
        const std::size_t resources = exercise(path, bytes.size());
        // Some file systems write a file to the disk at once when it is cut and filled anew.
        EXPECT_TRUE(DeleteFileA(path.c_str()));
        return resources;
    }

    kor::test::ScratchFolder scratch_;
    std::string whole_;
};

constexpr std::size_t kHeaders = 0x200;

}  // namespace

TEST_F(DamagedLibrary, IsReadInBounds) {
    const std::size_t all = exerciseBytes(whole_);
    ASSERT_GT(all, 10u);
    for (std::size_t length = 0; length < whole_.size(); length += length < kHeaders ? 1 : 7)
        EXPECT_LE(exerciseBytes(whole_.substr(0, length)), all) << "cut to " << length;
    std::size_t harmed = 0;
    for (std::size_t at = 0; at + 4 <= whole_.size(); at += 4) {
        for (const char* value : {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\x7F", "\xF0\xFF\0\0", "\0\0\0\x80"}) {
            std::string bytes = whole_;
            if (bytes.compare(at, 4, std::string(4, '\0')) == 0 && at > kHeaders) continue;
            bytes.replace(at, 4, std::string(value, 4));
            harmed += exerciseBytes(bytes) < all ? 1 : 0;
        }
    }
    EXPECT_GT(harmed, 100u) << "the damage must reach what is read";
    auto random = kor::test::generator();
    for (int round = 0; round < kor::test::scaled(2000); ++round) {
        std::string bytes = whole_;
        for (std::size_t count = 1 + random() % 6; count-- > 0;) {
            // Offsets that lead elsewhere in the file are the interesting ones.
            const std::size_t at = random() % (bytes.size() - 4) & ~std::size_t{3};
            bytes[at] = static_cast<char>(random());
            bytes[at + 1] = static_cast<char>(random() % 17);
        }
        EXPECT_LE(exerciseBytes(bytes), 64 * all) << "round " << round << ", seed " << kor::test::seed();
    }
}
