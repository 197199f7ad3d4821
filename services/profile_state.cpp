#include "services/profile_state.h"

#include <algorithm>
#include <cstring>

#include "framework/bounded_text.h"
#include "framework/multibyte.h"
#include "korutil/profile.h"
#include "platform/last_separator.h"

namespace kor {
namespace {

constexpr std::size_t kLongestCharacter = 4;
constexpr std::string_view kExtension = ".ini";

void assign(ProfileName& name, const char* text) {
    BoundedText(name.data(), static_cast<UINT>(name.size())).append(text ? text : "");
}

bool sameCharacter(std::string_view first, std::string_view second) {
    if (first == second) return true;
    char upper[2][kLongestCharacter];
    first.copy(upper[0], kLongestCharacter);
    second.copy(upper[1], kLongestCharacter);
    CharUpperBuffA(upper[0], static_cast<DWORD>(first.size()));
    CharUpperBuffA(upper[1], static_cast<DWORD>(second.size()));
    return first.size() == second.size() && std::memcmp(upper[0], upper[1], first.size()) == 0;
}

// The executable's full path with another extension; empty when it is not known or does not fit.
void nameAfterExecutable(ProfileName& name) {
    const DWORD length = GetModuleFileNameA(nullptr, name.data(), static_cast<DWORD>(name.size()));
    const std::string_view path(name.data(), length < name.size() ? length : 0);
    const std::size_t folder = lastSeparator(path, "\\/");
    const std::size_t dot = path.find_last_of('.');
    const bool hasExtension = dot != path.npos && (folder == path.npos || dot > folder);
    const std::size_t end = hasExtension ? dot : path.size();
    const bool fits = end > 0 && end + kExtension.size() < name.size();
    if (fits) kExtension.copy(name.data() + end, kExtension.size());
    name[fits ? end + kExtension.size() : 0] = '\0';
}

}  // namespace

ProfileState& profileState() {
    static ProfileState state;
    return state;
}

ProfileSelector::ProfileSelector(UINT_PTR selector, UINT_PTR zero) : number_(selector ? selector : zero) {}

const char* ProfileSelector::file() const {
    const auto* name = reinterpret_cast<const char*>(number_);
    return IS_INTRESOURCE(name) ? nullptr : name;
}

bool ProfileSelector::user() const { return !file() && (number_ & kProfileUser) != 0; }

bool ProfileSelector::application() const { return !file() && (number_ & kProfileApplication) != 0; }

ProfileSelector readSelector(UINT_PTR selector) { return {selector, kProfileBoth}; }

ProfileSelector writeSelector(UINT_PTR selector) { return {selector, kProfileUser}; }

bool startsWithoutCase(std::string_view text, std::string_view start) {
    while (!text.empty() && !start.empty()) {
        const std::string_view first = text.substr(0, characterLength(text));
        const std::string_view second = start.substr(0, characterLength(start));
        if (!sameCharacter(first, second)) return false;
        text.remove_prefix(first.size());
        start.remove_prefix(second.size());
    }
    return start.empty();
}

}  // namespace kor

BOOL KORUTIL_CALL appSetProfiles(const char* applicationProfile, const char* userProfile) {
    kor::ProfileState& state = kor::profileState();
    // The texts may be the names that are set here (appGetProfilePathname).
    kor::ProfileName names[2];
    kor::assign(names[0], applicationProfile);
    kor::assign(names[1], userProfile);
    state.application = names[0];
    state.user = names[1];
    const std::string_view application = state.application.data();
    const std::string_view user = state.user.data();
    state.sameFile = application.size() == user.size() && kor::startsWithoutCase(application, user);
    return state.sameFile;
}

BOOL KORUTIL_CALL appGetProfiles(char* applicationOut, char* userOut) {
    const kor::ProfileState& state = kor::profileState();
    if (applicationOut) lstrcpyA(applicationOut, state.application.data());
    if (userOut) lstrcpyA(userOut, state.user.data());
    return state.sameFile;
}

const char* KORUTIL_CALL appGetProfilePathname() {
    kor::ProfileName& name = kor::profileState().application;
    if (name[0] == '\0') kor::nameAfterExecutable(name);
    return name.data();
}

BOOL KORUTIL_CALL appGetUserProfile(char* buffer, DWORD size) {
    if (!buffer || size == 0) return FALSE;
    const std::string_view name = kor::profileState().user.data();
    const bool fits = name.size() < size;
    if (fits) name.copy(buffer, name.size());
    buffer[fits ? name.size() : 0] = '\0';
    return fits;
}

BOOL KORUTIL_CALL appFoundInUserProfile() { return kor::profileState().foundInUser; }
