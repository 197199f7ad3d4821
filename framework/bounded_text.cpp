#include "framework/bounded_text.h"

#include <charconv>
#include <cstring>

#include "framework/multibyte.h"

namespace kor {

BoundedText::BoundedText(char* buffer, UINT size)
    : next_(buffer), room_(buffer != nullptr && size > 0 ? size - 1 : 0) {
    if (buffer != nullptr && size > 0) *buffer = '\0';
}

BoundedText& BoundedText::append(std::string_view text) {
    std::size_t fits = text.size();
    if (fits > room_) {
        fits = 0;
        while (const std::size_t length = characterLength(text.substr(fits))) {
            if (fits + length > room_) break;
            fits += length;
        }
        room_ = static_cast<UINT>(fits);
    }
    if (fits == 0) return *this;
    std::memcpy(next_, text.data(), fits);
    next_ += fits;
    *next_ = '\0';
    room_ -= static_cast<UINT>(fits);
    return *this;
}

BoundedText& BoundedText::append(LONG number) {
    char digits[12];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    return append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

}  // namespace kor
