#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/loaded_modules.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/with_memory.h"

// The caller's buffer: the resource as it stands (its first word is its length), padding to a multiple of 4,
// a mark, and room into which the texts are converted. The text at offset n of the resource goes to room[n *
// 3 / 2]: a UTF-16 unit takes at most three bytes in any code page.
namespace {

constexpr std::size_t kMostBytes = 0xFFFF;  // the length is a word
constexpr std::size_t kHeaderSize = 6;
constexpr DWORD kMark = 0x56524F4B;

constexpr std::size_t alignUp(std::size_t size) { return (size + 3) / 4 * 4; }
constexpr std::size_t roomFor(std::size_t length) { return length * 3 / 2 + 4; }
constexpr std::size_t bufferSize(std::size_t length) {
    return alignUp(length) + sizeof kMark + roomFor(length);
}

// The version resource of a library, whose data keeps it loaded.
class VersionResource {
  public:
    explicit VersionResource(LPCSTR file) : module_(LoadLibraryExA(file, nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
        if (!module_ && GetLastError() == ERROR_MOD_NOT_FOUND) SetLastError(ERROR_FILE_NOT_FOUND);
        const HRSRC resource = module_ ? FindResourceA(module_, MAKEINTRESOURCEA(1), RT_VERSION) : nullptr;
        const void* data = resource ? LockResource(LoadResource(module_, resource)) : nullptr;
        if (!data) return;
        bytes_ = {static_cast<const std::byte*>(data), SizeofResource(module_, resource)};
        bytes_ = bytes_.first(std::min<std::size_t>({bytes_.size(), kor::wordAt(bytes_, 0), kMostBytes}));
        if (bytes_.size() < kHeaderSize) {
            bytes_ = {};
            SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        }
    }
    ~VersionResource() {
        const DWORD error = GetLastError();
        if (module_) FreeLibrary(module_);
        SetLastError(error);
    }
    VersionResource(const VersionResource&) = delete;
    VersionResource& operator=(const VersionResource&) = delete;

    kor::ByteView bytes() const { return bytes_; }

  private:
    HMODULE module_;
    kor::ByteView bytes_;
};

struct Node {
    std::size_t value;      // offset of the value
    std::size_t valueSize;  // in bytes
    std::size_t children;   // offset of the first child
    std::size_t end;
    bool isText;
    std::string key;
};

// The node at an offset; false when it does not lie within `end`. Lengths of texts are in characters, but
// some makers of resources count bytes, so a value is cut to what the node holds.
bool readNode(kor::ByteView bytes, std::size_t offset, std::size_t end, Node& node) {
    if (offset > end || end - offset < kHeaderSize) return false;
    const std::size_t length = kor::wordAt(bytes, offset);
    if (length < kHeaderSize || length > end - offset) return false;
    node.end = offset + length;
    node.isText = kor::wordAt(bytes, offset + 4) == 1;
    node.key.clear();
    std::size_t place = offset + kHeaderSize;
    for (;; place += 2) {
        if (node.end - place < 2) return false;
        const WORD unit = kor::wordAt(bytes, place);
        if (unit == 0) break;
        node.key += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    node.value = std::min(alignUp(place + 2), node.end);
    const std::size_t wanted = std::size_t{kor::wordAt(bytes, offset + 2)} * (node.isText ? 2 : 1);
    node.valueSize = std::min(wanted, node.end - node.value);
    node.children = std::min(alignUp(node.value + node.valueSize), node.end);
    return true;
}

bool sameKey(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        return lower(x) == lower(y);
    });
}

bool findChild(kor::ByteView bytes, Node& node, std::string_view key) {
    Node child;
    for (std::size_t offset = node.children; readNode(bytes, offset, node.end, child);
         offset = alignUp(child.end)) {
        if (!sameKey(child.key, key)) continue;
        node = child;
        return true;
    }
    return false;
}

// Converts a text into its place in the room behind the resource. @return its length without terminator
int convertText(kor::ByteView bytes, const Node& node, char* target, std::size_t room) {
    std::u16string text;
    for (std::size_t i = 0; i + 2 <= node.valueSize; i += 2) {
        const WORD unit = kor::wordAt(bytes, node.value + i);
        if (unit == 0) break;
        text += static_cast<char16_t>(unit);
    }
    const int units = static_cast<int>(text.size());
    const int length = units == 0 ? 0
                                  : WideCharToMultiByte(CP_ACP, 0, text.data(), units, target,
                                                        static_cast<int>(room - 1), nullptr, nullptr);
    target[length] = '\0';
    return length;
}

}  // namespace

DWORD WINAPI GetFileVersionInfoSizeA(LPCSTR file, LPDWORD ignored) {
    return kor::withMemory(0, [&]() -> DWORD {
        if (ignored) *ignored = 0;
        const VersionResource resource(file);
        return resource.bytes().empty() ? 0 : static_cast<DWORD>(bufferSize(resource.bytes().size()));
    });
}

BOOL WINAPI GetFileVersionInfoA(LPCSTR file, DWORD, DWORD size, LPVOID data) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const VersionResource resource(file);
        const kor::ByteView bytes = resource.bytes();
        if (bytes.empty()) return FALSE;
        if (!data || size < bufferSize(bytes.size())) {
            SetLastError(data ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_DATA);
            return FALSE;
        }
        auto* buffer = static_cast<char*>(data);
        const WORD length = static_cast<WORD>(bytes.size());
        std::memset(buffer, 0, bufferSize(length));
        std::memcpy(buffer, bytes.data(), length);
        std::memcpy(buffer, &length, sizeof length);
        std::memcpy(buffer + alignUp(length), &kMark, sizeof kMark);
        return TRUE;
    });
}

BOOL WINAPI VerQueryValueA(LPCVOID data, LPCSTR path, LPVOID* value, UINT* length) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (value) *value = nullptr;
        if (length) *length = 0;
        if (!data || !path || !value) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return FALSE;
        }
        auto* buffer = static_cast<char*>(const_cast<void*>(data));
        WORD total = 0;
        std::memcpy(&total, buffer, sizeof total);
        const kor::ByteView bytes(reinterpret_cast<const std::byte*>(buffer), total);
        Node node;
        bool found = std::memcmp(buffer + alignUp(total), &kMark, sizeof kMark) == 0 &&
                     readNode(bytes, 0, total, node);
        std::string_view rest = path;
        while (found && !rest.empty()) {
            const std::size_t end = std::min(rest.find('\\'), rest.size());
            if (end > 0) found = findChild(bytes, node, rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        if (!found) {
            SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
            return FALSE;
        }
        UINT size = static_cast<UINT>(node.valueSize);
        *value = buffer + node.value;
        if (node.isText) {
            const std::size_t place = node.value * 3 / 2;
            char* target = buffer + alignUp(total) + sizeof kMark + place;
            const int converted = convertText(bytes, node, target, roomFor(total) - place);
            *value = target;
            size = node.valueSize > 0 ? static_cast<UINT>(converted) + 1 : 0;
        }
        if (length) *length = size;
        return TRUE;
    });
}
