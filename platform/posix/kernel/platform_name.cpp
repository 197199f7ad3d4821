#include "platform/posix/kernel/platform_name.h"

#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/windows_path.h"

namespace kor {

std::optional<std::string> platformName(std::string_view native) {
    if (!isValidComponent(native) || native.back() == '.' || native.back() == ' ') return std::nullopt;
    return textFromUtf8(native);
}

}  // namespace kor
