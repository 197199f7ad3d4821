#include "services/profile_argument.h"

#include <array>

#include "runtime/process_state.h"
#include "runtime/text_argument.h"
#include "services/profile_state.h"

namespace kor {

bool resolveInto(const char*& name, HINSTANCE module, std::span<char> buffer) {
    if (!isTextNumber(name)) return true;
    name = resolveText(name, module ? module : resourceModule(), buffer);
    return name != nullptr;
}

bool resolveName(const char*& name, NameRole role, HINSTANCE module) {
    constexpr std::size_t kRoles = 3;
    static std::array<ProfileName, kRoles> buffers{};
    return resolveInto(name, module, buffers[static_cast<std::size_t>(role)]);
}

}  // namespace kor
