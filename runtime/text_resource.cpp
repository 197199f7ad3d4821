// String resources.

#include <span>

#include "framework/bounded_text.h"
#include "korutil/error.h"
#include "korutil/text.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

constexpr UINT kStringType = 6;
constexpr UINT kBlockStrings = 16;
constexpr UINT kMostId = 0xFFFF;
constexpr std::size_t kMostLoaded = 256;
constexpr std::size_t kWarningRoom = 256;

// The bytes of a string resource, two for each unit of UTF-16.
using Units = std::span<const BYTE>;

WORD unitAt(Units units, std::size_t index) {
    return static_cast<WORD>(units[index * 2] | units[index * 2 + 1] << 8);
}

// One of the strings of a block, each of which has its length in front; empty when it does not lie in it.
Units stringOf(Units block, UINT number) {
    for (;; --number) {
        if (block.size() < 2) return {};
        const std::size_t bytes = std::size_t{unitAt(block, 0)} * 2;
        block = block.subspan(2);
        if (block.size() < bytes) return {};
        if (number == 0) return block.first(bytes);
        block = block.subspan(bytes);
    }
}

bool isPair(Units units, std::size_t index) {
    return (unitAt(units, index) & 0xFC00) == 0xD800 && (index + 1) * 2 < units.size() &&
           (unitAt(units, index + 1) & 0xFC00) == 0xDC00;
}

int convert(const WCHAR* wide, int count, std::span<char> bytes) {
    if (*wide >= 0x80)
        return WideCharToMultiByte(CP_ACP, 0, wide, count, bytes.data(), static_cast<int>(bytes.size()),
                                   nullptr, nullptr);
    bytes[0] = static_cast<char>(*wide);  // the same in every code page
    return 1;
}

void append(BoundedText& text, Units units) {
    for (std::size_t index = 0; index < units.size() / 2; ++index) {
        WCHAR wide[2] = {unitAt(units, index)};
        int count = 1;
        if (isPair(units, index)) wide[count++] = unitAt(units, ++index);
        char character[8];
        const int length = convert(wide, count, character);
        if (length > 0) text.append({character, static_cast<std::size_t>(length)});
    }
}

void warnOfMissing(UINT id) {
    char format[kWarningRoom];
    utlWarning(nullptr, nullptr, loadOwnText(text::kStringMissing, format, "i"), MB_ICONEXCLAMATION, id);
}

// The block of a string; empty when it cannot be had, which the user is then told.
Units blockOf(HINSTANCE module, UINT id) {
    const HRSRC place = id <= kMostId
                            ? FindResourceExA(module, MAKEINTRESOURCEA(kStringType),
                                              MAKEINTRESOURCEA(id / kBlockStrings + 1), MAKELANGID(0, 0))
                            : nullptr;
    if (!place && (id > kMostId || GetLastError() != ERROR_NOT_ENOUGH_MEMORY)) {
        warnOfMissing(id);
        return {};
    }
    const HGLOBAL data = LoadResource(module, place);  // null for null
    const void* bytes = data ? LockResource(data) : nullptr;
    if (!bytes) {
        OutOfMemoryError();
        return {};
    }
    return {static_cast<const BYTE*>(bytes), SizeofResource(module, place)};
}

}  // namespace
}  // namespace kor

using namespace kor;

int KORUTIL_CALL utlLoadString(HINSTANCE module, UINT id, char* buffer, int size) {
    BoundedText text(buffer, size > 0 ? static_cast<UINT>(size) : 0);
    const Units string = stringOf(blockOf(module, id), id % kBlockStrings);
    append(text, string);
    return static_cast<int>(string.size() / 2);
}

int KORUTIL_CALL strLoadString(HINSTANCE module, UINT id, CString& text, BOOL direct) {
    char loaded[kMostLoaded + 1];
    if (direct) {
        utlLoadString(module, id, loaded, sizeof loaded);
    } else {
        // The system may cut within a character: it gets room to do so behind what is taken.
        char more[kMostLoaded + 8];
        const int length = LoadStringA(module, id, more, sizeof more);
        BoundedText(loaded, sizeof loaded).append({more, static_cast<std::size_t>(length > 0 ? length : 0)});
    }
    text = loaded;
    text.FreeExtra();
    return text.GetLength();
}
