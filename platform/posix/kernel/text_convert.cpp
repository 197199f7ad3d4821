// Conversion between code pages and UTF-16.
#include <cstddef>
#include <cstring>
#include <string_view>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/utf.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::CodePage;
using kor::codePage;
using kor::failWith;

constexpr DWORD kKnownToWide = MB_PRECOMPOSED | MB_COMPOSITE | MB_USEGLYPHCHARS | MB_ERR_INVALID_CHARS;
constexpr DWORD kKnownFromWide = WC_DISCARDNS | WC_SEPCHARS | WC_DEFAULTCHAR | WC_ERR_INVALID_CHARS |
                                 WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS;

// The caller's buffer, or only the count when its size is 0.
template <typename Unit>
class Output {
  public:
    Output(Unit* buffer, int size) : buffer_(buffer), size_(static_cast<std::size_t>(size)) {}

    void add(const Unit* units, std::size_t count) {
        if (size_ != 0 && !overflowed_) {
            overflowed_ = count > size_ - used_;
            if (!overflowed_) std::memcpy(buffer_ + used_, units, count * sizeof(Unit));
        }
        used_ += count;
    }

    // @return what the conversion functions return: units written or needed, 0 when there was no room
    int result() const {
        if (overflowed_) return failWith(ERROR_INSUFFICIENT_BUFFER);
        if (used_ > static_cast<std::size_t>(INT32_MAX)) return failWith(ERROR_ARITHMETIC_OVERFLOW);
        return static_cast<int>(used_);
    }

  private:
    Unit* buffer_;
    std::size_t size_;
    std::size_t used_ = 0;
    bool overflowed_ = false;
};

template <typename Unit>
bool argumentsAreValid(const Unit* text, int length, const void* buffer, int size) {
    return text && length != 0 && size >= 0 && (size == 0 || (buffer && buffer != text));
}

// The text of a counted or, for a negative length, terminated argument; the terminator then belongs to it.
template <typename Unit>
std::basic_string_view<Unit> textOf(const Unit* text, int length) {
    if (length >= 0) return {text, static_cast<std::size_t>(length)};
    return {text, std::char_traits<Unit>::length(text) + 1};
}

}  // namespace

KORPLATFORM_API UINT WINAPI GetACP() { return kor::ansiCodePage(); }

KORPLATFORM_API int WINAPI MultiByteToWideChar(UINT number, DWORD flags, LPCSTR text, int length,
                                               LPWSTR buffer, int size) {
    return kor::withMemory(0, [&]() -> int {
        const CodePage* page = codePage(number);
        if (!page || !argumentsAreValid(text, length, buffer, size)) return failWith(ERROR_INVALID_PARAMETER);
        if (flags & ~kKnownToWide) return failWith(ERROR_INVALID_FLAGS);
        Output<WCHAR> output(buffer, size);
        for (std::string_view rest = textOf(text, length); !rest.empty();) {
            const CodePage::Character next = page->decode(rest);
            if (!next.valid && (flags & MB_ERR_INVALID_CHARS)) return failWith(ERROR_NO_UNICODE_TRANSLATION);
            WCHAR units[2];
            output.add(units, kor::encodeUtf16(next.character, units));
            rest.remove_prefix(next.length);
        }
        return output.result();
    });
}

KORPLATFORM_API int WINAPI WideCharToMultiByte(UINT number, DWORD flags, LPCWSTR text, int length,
                                               LPSTR buffer, int size, LPCSTR defaultCharacter,
                                               LPBOOL usedDefault) {
    return kor::withMemory(0, [&]() -> int {
        const CodePage* page = codePage(number);
        if (!page || !argumentsAreValid(text, length, buffer, size)) return failWith(ERROR_INVALID_PARAMETER);
        if (flags & ~kKnownFromWide) return failWith(ERROR_INVALID_FLAGS);
        const bool utf8 = page == codePage(CP_UTF8);
        const std::string_view replacement =
            defaultCharacter
                ? std::string_view(
                      defaultCharacter,
                      page->isLeadByte(static_cast<BYTE>(*defaultCharacter)) && defaultCharacter[1] ? 2 : 1)
                : std::string_view("?");
        BOOL used = FALSE;
        Output<char> output(buffer, size);
        for (std::u16string_view rest = textOf(text, length); !rest.empty();) {
            const kor::Decoded next = kor::decodeUtf16(rest);
            char bytes[4];
            if (utf8 && !next.valid && (flags & WC_ERR_INVALID_CHARS))
                return failWith(ERROR_NO_UNICODE_TRANSLATION);
            if (const std::size_t count = page->encode(next.character, bytes)) {
                output.add(bytes, count);
            } else {
                // Each unit of a pair is replaced for itself: required, as the system does so.
                for (std::size_t unit = 0; unit < next.length; ++unit)
                    output.add(replacement.data(), replacement.size());
                used = TRUE;
            }
            rest.remove_prefix(next.length);
        }
        if (usedDefault) *usedDefault = used;
        return output.result();
    });
}

KORPLATFORM_API BOOL WINAPI IsDBCSLeadByteEx(UINT number, BYTE byte) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const CodePage* page = codePage(number);
        return page && page->isLeadByte(byte);
    });
}

KORPLATFORM_API BOOL WINAPI IsDBCSLeadByte(BYTE byte) { return kor::ansiPage().isLeadByte(byte); }
