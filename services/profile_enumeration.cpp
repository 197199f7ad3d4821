// Visiting the keys of a section.
#include <memory>
#include <new>

#include "korutil/error.h"
#include "korutil/profile.h"
#include "services/profile_argument.h"
#include "services/profile_state.h"

namespace kor {
namespace {

constexpr DWORD kListRoom = 61440;

int KORUTIL_CALL stopAtOnce(ProfileEnumRecord*) { return 0; }

// The names of a section's keys, one behind the other, behind the last one an empty one.
class KeyList {
  public:
    KeyList(const char* section, const char* file) : names_(new (std::nothrow) char[kListRoom]) {
        if (!names_) return;
        const DWORD length = GetPrivateProfileStringA(section, nullptr, "", names_.get(), kListRoom, file);
        end_ = length;
        names_[kListRoom - 1] = '\0';
        // When the list was cut, so may its last name have been.
        if (length < kListRoom - 2) return;
        while (end_ > 0 && names_[end_ - 1] != '\0')
            --end_;
    }
    bool isThere() const { return names_ != nullptr; }
    const char* begin() const { return names_.get(); }
    const char* end() const { return names_.get() + end_; }

  private:
    std::unique_ptr<char[]> names_;
    DWORD end_ = 0;
};

const char* fileOf(const ProfileSelector& selector) {
    const ProfileState& state = profileState();
    if (selector.file()) return selector.file();
    return (selector.user() ? state.user : state.application).data();
}

int walk(const KeyList& keys, ProfileEnumRecord& record, ProfileEnumCallback callback, bool inUser) {
    const std::string_view prefix = record.prefix;
    int result = 1;
    std::string_view name;
    for (const char* key = keys.begin(); key < keys.end() && result; key += name.size() + 1) {
        name = key;
        if (!startsWithoutCase(name, prefix)) continue;
        if (inUser) profileState().foundInUser = true;
        record.key = key;
        record.keyTail = key + prefix.size();
        ++record.index;
        result = callback(&record);
    }
    return result != 0;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL appEnumProfileKeys(const char* section, const char* prefix, ProfileEnumCallback callback,
                                    UINT_PTR userData, UINT_PTR selector, HINSTANCE module) {
    kor::profileState().foundInUser = false;
    kor::ProfileSelector walked = kor::readSelector(selector);
    if (walked.user() && walked.application()) {
        const bool inUser = !appEnumProfileKeys(section, prefix, kor::stopAtOnce, 0, kProfileUser, module);
        walked = kor::readSelector(inUser ? kProfileUser : kProfileApplication);
        kor::profileState().foundInUser = false;
    }
    if (!kor::resolveName(section, kor::NameRole::section, module) ||
        !kor::resolveName(prefix, kor::NameRole::key, module) || !section || !*section || !callback) {
        return 0;
    }
    const kor::KeyList keys(section, kor::fileOf(walked));
    if (!keys.isThere()) {
        OutOfMemoryError();
        return 0;
    }
    ProfileEnumRecord record{};
    record.section = section;
    record.selector = walked.file() ? walked.number() : walked.user() ? kProfileUser : kProfileApplication;
    record.prefix = prefix ? prefix : "";
    record.userData = userData;
    return kor::walk(keys, record, callback, walked.user());
}
