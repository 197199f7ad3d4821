#include "runtime/text_argument.h"

#include <new>

#include "host/conversion.h"
#include "platform/win32.h"
#include "runtime/process_state.h"

namespace kor {

const char* resolveText(const char* textOrNumber, HINSTANCE module, std::span<char> buffer) {
    if (!isTextNumber(textOrNumber)) return textOrNumber;
    if (!module) return nullptr;
    const UINT id = LOWORD(reinterpret_cast<ULONG_PTR>(textOrNumber));
    try {
        const int length = LoadStringA(module, id, buffer.data(), static_cast<int>(buffer.size()));
        return length > 0 ? buffer.data() : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;  // natively the first look at a resource takes memory
    }
}

const char* loadOwnText(UINT id, std::span<char> buffer, const char* arguments) {
    const char* text = resolveText(textNumber(id), resourceModule(), buffer);
    return text && (!arguments || formatTakes(text, arguments)) ? text : "";
}

}  // namespace kor
