// Blocks of bytes as hexadecimal digits.
#include <cstdint>
#include <memory>
#include <new>

#include "korutil/profile.h"

namespace kor {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

using Room = std::unique_ptr<char[]>;

// Null when a text of so many bytes cannot be had.
Room roomFor(DWORD bytes, DWORD more) {
    const std::uint64_t size = 2 * std::uint64_t{bytes} + more;
    return Room(size <= INT32_MAX ? new (std::nothrow) char[static_cast<std::size_t>(size)] : nullptr);
}

// Their value; 16 for what is no upper-case digit.
unsigned digitOf(char character) {
    if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
    if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
    return 16;
}

char upperDigit(char character) {
    return character >= 'a' && character <= 'f' ? static_cast<char>(character - 'a' + 'A') : character;
}

}  // namespace
}  // namespace kor

BOOL KORUTIL_CALL utlStructToString(const void* data, DWORD size, char* text, DWORD textSize) {
    if (!text || (!data && size > 0) || textSize < 2 * std::uint64_t{size} + 1) return FALSE;
    const auto* bytes = static_cast<const BYTE*>(data);
    for (DWORD index = 0; index < size; ++index) {
        *text++ = kor::kDigits[bytes[index] >> 4];
        *text++ = kor::kDigits[bytes[index] & 15];
    }
    *text = '\0';
    return TRUE;
}

BOOL KORUTIL_CALL utlStringToStruct(const char* text, DWORD length, void* data, DWORD size) {
    if (length / 2 != size || (size > 0 && (!text || !data))) return FALSE;
    auto* bytes = static_cast<BYTE*>(data);
    for (DWORD index = 0; index < size; ++index) {
        const unsigned high = kor::digitOf(*text++);
        const unsigned low = kor::digitOf(*text++);
        if (high > 15 || low > 15) return FALSE;
        bytes[index] = static_cast<BYTE>(high << 4 | low);
    }
    return TRUE;
}

BOOL KORUTIL_CALL appGetProfileStruct(const char* section, const char* key, void* data, DWORD size,
                                      UINT_PTR selector, HINSTANCE module) {
    // One digit more than needed, so that a value that is too long shows.
    constexpr DWORD kMore = 2;
    const kor::Room text = kor::roomFor(size, kMore);
    if (!text) return FALSE;
    const DWORD length =
        appGetProfileString(section, key, "", text.get(), 2 * size + kMore, selector, module);
    if (length != 2 * size) return FALSE;
    for (DWORD index = 0; index < length; ++index)
        text[index] = kor::upperDigit(text[index]);
    return utlStringToStruct(text.get(), length, data, size);
}

BOOL KORUTIL_CALL appWriteProfileStruct(const char* section, const char* key, const void* data, DWORD size,
                                        UINT_PTR selector, HINSTANCE module) {
    const kor::Room text = kor::roomFor(size, 1);
    return text && utlStructToString(data, size, text.get(), 2 * size + 1) &&
           appWriteProfileString(section, key, text.get(), selector, module);
}
