#pragma once
// A user and an application profile in a scratch folder.
#include <string>
#include <string_view>

#include "korutil/profile.h"
#include "tests/support/scratch.h"

namespace kor::test {

class Profiles {
  public:
    explicit Profiles(std::string_view user = {}, std::string_view application = {})
        : application_(folder_.file("installation.ini", application)), user_(folder_.file("user.ini", user)) {
        appSetProfiles(application_.c_str(), user_.c_str());
    }
    ~Profiles() { appSetProfiles("", ""); }
    Profiles(const Profiles&) = delete;
    Profiles& operator=(const Profiles&) = delete;

    const ScratchFolder& folder() const { return folder_; }
    const char* user() const { return user_.c_str(); }
    const char* application() const { return application_.c_str(); }

    /// The value of a key of section "S" as it stands in one file.
    static std::string valueIn(const char* file, const char* key) {
        std::string text(1024, '\0');
        text.resize(GetPrivateProfileStringA("S", key, "<none>", text.data(), 1024, file));
        return text;
    }

  private:
    ScratchFolder folder_;
    std::string application_;
    std::string user_;
};

}  // namespace kor::test
