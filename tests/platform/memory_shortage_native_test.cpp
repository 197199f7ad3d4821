// Memory that runs out at each allocation in turn, in every platform function that needs any: the function
// fails as documented, throws nothing, keeps nothing open, and works again afterwards. The first calls of the
// process are among them, so what is set up once is too.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

#include "platform/posix/kernel/native_name.h"
#include "platform/win32.h"
#include "tests/support/failing_allocator.h"

namespace {

using kor::test::FailingAllocation;

// Where all of it happens. The functions under test are not to be called before, so the folder is made
// natively.
struct Places {
    std::string folder;
    std::string nativeFile, nativeOther, nativeFolder;
    std::string file, other, inner, otherCase, pattern, temporary;

    Places() {
        char name[] = "/tmp/kor-shortage-XXXXXX";
        folder = mkdtemp(name);
        nativeFile = folder + "/file.txt";
        nativeOther = folder + "/other.txt";
        nativeFolder = folder + "/inner";
        close(open(nativeFile.c_str(), O_WRONLY | O_CREAT, 0600));
        file = windows(nativeFile);
        other = windows(nativeOther);
        inner = windows(nativeFolder);
        otherCase = windows(folder + "/FILE.TXT");
        pattern = windows(folder + "/*");
        std::filesystem::create_directory(folder + "-temporary");  // a shortage may leave files there
        temporary = windows(folder + "-temporary");
    }
    ~Places() {
        std::filesystem::remove_all(folder);
        std::filesystem::remove_all(folder + "-temporary");
    }
    Places(const Places&) = delete;
    Places& operator=(const Places&) = delete;

    static std::string windows(std::string path) {
        for (char& character : path)
            if (character == '/') character = '\\';
        return "Z:" + path;
    }
};
const Places* places = nullptr;

char buffer[4096];
constexpr char kClassName[] = "KorUtil.Window.Class.With.A.Name";

HANDLE opened(const std::string& name, DWORD disposition, DWORD flags = 0) {
    return CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, disposition, flags, nullptr);
}

bool closed(HANDLE handle) { return handle != INVALID_HANDLE_VALUE && CloseHandle(handle); }

void makeOther() { close(open(places->nativeOther.c_str(), O_WRONLY | O_CREAT, 0600)); }

bool madeAndRemovedOther(bool succeeded) {
    unlink(places->nativeOther.c_str());
    return succeeded;
}

// The module that stays loaded meanwhile; null when memory is too short for that.
HMODULE library() {
    static HMODULE loaded = nullptr;
    if (!loaded) loaded = LoadLibraryA("KorTestL");
    return loaded;
}

bool freed(HMODULE module) { return module && FreeLibrary(module); }

struct Call {
    const char* name;
    bool (*succeeds)();  // does it once and takes it back
};

constexpr Call kCalls[] = {
    {"GetLogicalDrives", [] { return GetLogicalDrives() != 0; }},
    {"GetWindowsDirectoryA", [] { return GetWindowsDirectoryA(buffer, sizeof buffer) != 0; }},
    {"GetCurrentDirectoryA", [] { return GetCurrentDirectoryA(sizeof buffer, buffer) != 0; }},
    {"GetFullPathNameA", [] { return GetFullPathNameA("name.txt", sizeof buffer, buffer, nullptr) != 0; }},
    {"GetLongPathNameA",
     [] { return GetLongPathNameA(places->otherCase.c_str(), buffer, sizeof buffer) != 0; }},
    {"GetTempPathA", [] { return GetTempPathA(sizeof buffer, buffer) != 0; }},
    {"GetTempFileNameA",
     [] {
         const UINT made = GetTempFileNameA(places->temporary.c_str(), "kor", 0, buffer);
         return made != 0 && DeleteFileA(buffer);
     }},
    {"korNativePath",
     [] {
         return korNativePath(places->otherCase.c_str(), buffer, sizeof buffer) == places->nativeFile.size();
     }},
    {"korWindowsPath", [] { return korWindowsPath("relative/name", buffer, sizeof buffer) != 0; }},
    {"korUtf8FromText",
     [] { return korUtf8FromText("a text of more than a few bytes", buffer, sizeof buffer) != 0; }},
    {"korTextFromUtf8",
     [] { return korTextFromUtf8("a text of more than a few bytes", buffer, sizeof buffer) != 0; }},
    {"CreateFileA", [] { return closed(opened(places->file, OPEN_EXISTING)); }},
    {"CreateFileA, another letter case", [] { return closed(opened(places->otherCase, OPEN_ALWAYS)); }},
    {"CreateFileA, a new file",
     [] { return closed(opened(places->other, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE)); }},
    {"DuplicateHandle",
     [] {
         const HANDLE file = opened(places->file, OPEN_EXISTING), process = GetCurrentProcess();
         HANDLE copy = nullptr;
         if (file == INVALID_HANDLE_VALUE) return false;
         const BOOL made = DuplicateHandle(process, file, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
         const DWORD error = GetLastError();
         const bool done = made && CloseHandle(copy);
         CloseHandle(file);
         SetLastError(error);
         return done;
     }},
    {"LockFile",
     [] {
         const HANDLE file = opened(places->file, OPEN_EXISTING);
         if (file == INVALID_HANDLE_VALUE) return false;
         const bool locked = LockFile(file, 0, 0, 8, 0) && UnlockFile(file, 0, 0, 8, 0);
         return CloseHandle(file) && locked;
     }},
    {"FindFirstFileA",
     [] {
         WIN32_FIND_DATAA data;
         const HANDLE find = FindFirstFileA(places->pattern.c_str(), &data);
         if (find == INVALID_HANDLE_VALUE) return false;
         unsigned count = 1;
         while (FindNextFileA(find, &data))
             ++count;
         const DWORD error = GetLastError();
         FindClose(find);
         SetLastError(error);
         return error == ERROR_NO_MORE_FILES && count == 3;
     }},
    {"GetFileAttributesA",
     [] { return GetFileAttributesA(places->file.c_str()) != INVALID_FILE_ATTRIBUTES; }},
    {"SetFileAttributesA",
     [] { return SetFileAttributesA(places->file.c_str(), FILE_ATTRIBUTE_NORMAL) != FALSE; }},
    {"CopyFileA",
     [] { return madeAndRemovedOther(CopyFileA(places->file.c_str(), places->other.c_str(), FALSE)); }},
    {"DeleteFileA",
     [] {
         makeOther();
         return madeAndRemovedOther(DeleteFileA(places->other.c_str()));
     }},
    {"MoveFileExA",
     [] {
         makeOther();
         const bool moved =
             MoveFileExA(places->file.c_str(), places->other.c_str(), MOVEFILE_REPLACE_EXISTING);
         if (moved) std::rename(places->nativeOther.c_str(), places->nativeFile.c_str());
         return madeAndRemovedOther(moved);
     }},
    {"CreateDirectoryA",
     [] {
         const bool made = CreateDirectoryA(places->inner.c_str(), nullptr);
         rmdir(places->nativeFolder.c_str());
         return made;
     }},
    {"RemoveDirectoryA",
     [] {
         mkdir(places->nativeFolder.c_str(), 0700);
         const bool removed = RemoveDirectoryA(places->inner.c_str());
         rmdir(places->nativeFolder.c_str());
         return removed;
     }},
    {"SetCurrentDirectoryA", [] { return SetCurrentDirectoryA("Z:\\tmp") != FALSE; }},
    {"GetDriveTypeA", [] { return GetDriveTypeA("Z:\\") != DRIVE_UNKNOWN; }},
    {"GetDiskFreeSpaceExA", [] { return GetDiskFreeSpaceExA("Z:\\", nullptr, nullptr, nullptr) != FALSE; }},
    {"GetDiskFreeSpaceA",
     [] { return GetDiskFreeSpaceA("Z:\\", nullptr, nullptr, nullptr, nullptr) != FALSE; }},
    {"GetVolumeInformationA",
     [] {
         return GetVolumeInformationA("Z:\\", nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0) != FALSE;
     }},
    {"SearchPathA",
     [] { return SearchPathA(nullptr, "KorTestL", ".dll", sizeof buffer, buffer, nullptr) != 0; }},
    {"LoadLibraryA", [] { return freed(LoadLibraryA("KorTestModule")); }},
    {"LoadLibraryExA", [] { return freed(LoadLibraryExA("KorTestL", nullptr, LOAD_LIBRARY_AS_DATAFILE)); }},
    {"GetModuleHandleA", [] { return GetModuleHandleA("kernel32") != nullptr; }},
    {"GetModuleHandleExA",
     [] {
         HMODULE found = nullptr;
         return GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(&closed),
                                   &found) &&
                FreeLibrary(found);
     }},
    {"GetModuleFileNameA", [] { return GetModuleFileNameA(nullptr, buffer, sizeof buffer) != 0; }},
    {"GetProcAddress",
     [] {
         const HMODULE module = GetModuleHandleA("kernel32");
         return module && GetProcAddress(module, "GetLastError") != nullptr;
     }},
    {"FindResourceA",
     [] {
         if (!library()) return false;
         const HRSRC found = FindResourceA(library(), MAKEINTRESOURCEA(8), "NUMBERS OF A NAME THAT IS LONG");
         return found != nullptr || GetLastError() == ERROR_RESOURCE_TYPE_NOT_FOUND;
     }},
    {"EnumResourceLanguagesA",
     [] {
         const auto any = [](HMODULE, LPCSTR, LPCSTR, WORD, LONG_PTR) -> BOOL { return TRUE; };
         return library() &&
                EnumResourceLanguagesA(library(), MAKEINTRESOURCEA(6), MAKEINTRESOURCEA(1), any, 0) != FALSE;
     }},
    {"EnumResourceNamesA",
     [] {
         const auto any = [](HMODULE, LPCSTR, LPSTR, LONG_PTR) -> BOOL { return TRUE; };
         return library() && EnumResourceNamesA(library(), MAKEINTRESOURCEA(6), any, 0) != FALSE;
     }},
    {"LoadStringA", [] { return library() && LoadStringA(library(), 1, buffer, sizeof buffer) == 3; }},
    {"LoadStringA, not ASCII",
     [] { return library() && LoadStringA(library(), 80, buffer, sizeof buffer) > 3; }},
    {"GetFileVersionInfoA",
     [] { return GetFileVersionInfoA("KorTestL.dll", 0, sizeof buffer, buffer) != FALSE; }},
    {"VerQueryValueA",
     [] {
         void* value = nullptr;
         return VerQueryValueA(buffer, "\\", &value, nullptr) != FALSE;
     }},
    {"FormatMessageA",
     [] {
         char* text = nullptr;
         const DWORD length =
             FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                            ERROR_FILE_NOT_FOUND, 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
         return length != 0 && LocalFree(text) == nullptr;
     }},
    {"MultiByteToWideChar, a page that is read first",
     [] { return MultiByteToWideChar(932, 0, "text", 4, nullptr, 0) == 4; }},
    {"lstrcmpA", [] { return lstrcmpA("one of two texts, none short", "one of two texts, none long") > 0; }},
    {"RegisterClassA",
     [] {
         WNDCLASSA window{};
         window.lpszClassName = kClassName;
         window.lpszMenuName = "KorUtil.Menu.With.A.Name.As.Well";
         if (!RegisterClassA(&window)) return false;
         // Without memory to look for it, it stays.
         return UnregisterClassA(window.lpszClassName, nullptr) ||
                UnregisterClassA(window.lpszClassName, nullptr);
     }},
    {"GetClassInfoA",
     [] {
         WNDCLASSA window;
         return GetClassInfoA(nullptr, "KorUtil.No.Class.But.A.Long.Name", &window) ||
                GetLastError() == ERROR_CLASS_DOES_NOT_EXIST;
     }},
    {"CreateWindowExA",
     [] {
         WNDCLASSA window{};
         window.lpfnWndProc = DefWindowProcA;
         window.lpszClassName = kClassName;
         if (!RegisterClassA(&window)) return false;
         HWND made = CreateWindowExA(0, kClassName, "A text of more than a few bytes", WS_POPUP, 0, 0, 1, 1,
                                     nullptr, nullptr, nullptr, nullptr);
         const bool succeeds = made && PostMessageA(made, WM_USER, 0, 0);
         if (made && !DestroyWindow(made)) DestroyWindow(made);
         if (!UnregisterClassA(kClassName, nullptr)) UnregisterClassA(kClassName, nullptr);
         return succeeds;
     }},
    {"SendMessageA to an edit control",
     [] {
         HWND edit = CreateWindowExA(0, "Edit", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
         if (!edit) return false;
         const LPARAM text = reinterpret_cast<LPARAM>("a text of more than a few bytes");
         const bool succeeds = SendMessageA(edit, EM_REPLACESEL, 0, text) != 0;
         if (!DestroyWindow(edit)) DestroyWindow(edit);
         return succeeds;
     }},
    {"LoadCursorA", [] { return LoadCursorA(nullptr, IDC_WAIT) != nullptr; }},
    {"MessageBoxIndirectA",
     [] {
         MSGBOXPARAMSA box{};
         box.cbSize = sizeof box;
         box.lpszText = "A box that is shown while memory is short";
         box.lpszCaption = "Test";
         return MessageBoxIndirectA(&box) == IDOK;
     }},
    {"GlobalAlloc",
     [] {
         const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
         return block && GlobalFree(block) == nullptr;
     }},
    {"GlobalReAlloc",
     [] {
         const HGLOBAL block = GlobalAlloc(GMEM_FIXED, 100);
         const HGLOBAL grown = block ? GlobalReAlloc(block, 10000, GMEM_MOVEABLE) : nullptr;
         const DWORD error = GetLastError();
         if (block) GlobalFree(grown ? grown : block);
         SetLastError(error);
         return grown != nullptr;
     }},
    {"HeapCreate",
     [] {
         const HANDLE heap = HeapCreate(0, 0, 0);
         const bool filled = heap && HeapAlloc(heap, 0, 100);
         const DWORD error = GetLastError();
         if (heap) HeapDestroy(heap);
         SetLastError(error);
         return filled;
     }},
    {"VirtualAlloc",
     [] {
         void* pages = VirtualAlloc(nullptr, 0x20000, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
         if (!pages) return false;
         DWORD former = 0;
         const BOOL changed = VirtualProtect(pages, 0x1000, PAGE_READONLY, &former);
         const DWORD error = GetLastError();
         VirtualFree(pages, 0, MEM_RELEASE);
         SetLastError(error);
         return changed != FALSE;
     }},
    {"VirtualQuery",
     [] {
         MEMORY_BASIC_INFORMATION block;
         return VirtualQuery(reinterpret_cast<const void*>(&closed), &block, sizeof block) != 0;
     }},
};

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

class Outcome {
  public:
    // Calls once while memory is short; nothing here may need any.
    void add(const Call& call) {
        SetLastError(ERROR_SUCCESS);
        try {
            if (call.succeeds()) return;
        } catch (...) {
            thrown_ = true;
            return;
        }
        if (GetLastError() != ERROR_NOT_ENOUGH_MEMORY) wrongError_ = GetLastError();
    }

    void expectFailuresOnly(const Call& call) const {
        EXPECT_FALSE(thrown_) << call.name << " threw";
        EXPECT_EQ(wrongError_, 0u) << call.name << " failed for another reason";
    }

    bool onlyFailed() const { return !thrown_ && wrongError_ == 0; }

  private:
    bool thrown_ = false;
    DWORD wrongError_ = 0;
};

// The first test, and in a process of its own, so that it meets the first use of everything: what is set up
// then must not end the process when there is no memory to tell of the lack.
TEST(MemoryShortage, ThatLastsEndsInAFailure) {
    const Places made;
    places = &made;
    const auto inNewProcess = [] {
        int failed = 0, failures = 0;
        for (const Call& call : kCalls) {
            Outcome outcome;
            bool happened = true;
            for (int nth = 1; happened && nth < 10000; ++nth) {
                FailingAllocation failing(nth, FailingAllocation::After::fails);
                outcome.add(call);
                failing.stop();
                happened = failing.happened();
                failures += happened;
                UnregisterClassA(kClassName, nullptr);  // what could not be taken back without memory
            }
            if (outcome.onlyFailed()) continue;
            std::fprintf(stderr, "%s did not fail for the lack of memory\n", call.name);
            ++failed;
        }
        std::_Exit(failures < 150 ? 200 : failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(MemoryShortage, EndsInAFailureThatLeavesNothingBehind) {
    const Places made;
    places = &made;
    int failures = 0;
    for (const Call& call : kCalls) {
        std::size_t before = 0;
        // The first round meets what is set up once and stays.
        for (const int round : {1, 2}) {
            Outcome outcome;
            before = openDescriptors();
            failures += kor::test::failEachAllocation([&] { outcome.add(call); });
            outcome.expectFailuresOnly(call);
            SetLastError(ERROR_SUCCESS);
            EXPECT_TRUE(call.succeeds())
                << call.name << " afterwards, error " << GetLastError() << ", round " << round;
        }
        EXPECT_EQ(openDescriptors(), before) << call.name << " left a file open";
    }
    EXPECT_GT(failures, 300) << "memory was hardly ever short";
}

}  // namespace
