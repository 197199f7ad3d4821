#pragma once
// Settings files as the library reads them: one file, or a user's file over the installation's. Names and
// values are texts of the code page.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korutil/platform.h"
#include "tools/korutil/file_argument.h"

namespace kor::profile {

/// A value that was found.
struct Setting {
    std::string value;
    const command::FileArgument* file = nullptr;  ///< that it stands in
    bool isUser = false;                          ///< that is the user's file
};

/// What the library reads. There is one at a time where two files are given: the library keeps their names.
class Settings {
  public:
    /// One file, which must be there. @throws command::Failure also when it may not be read
    static Settings ofFile(std::string_view file);

    /// A user's file, which may be missing, over an installation's. @throws command::Failure
    static Settings ofUser(std::string_view userFile, std::string_view applicationFile);

    /// What the library's functions take to read from here.
    UINT_PTR selector() const;
    /// The file or the two files, for messages.
    std::string shown() const;
    bool hasTwoFiles() const { return application_.has_value(); }

    /// The value that counts; nothing when there is no such key.
    std::optional<Setting> find(const std::string& section, const std::string& key) const;

    /// As find. @throws command::Failure that says what is missing
    Setting require(const std::string& section, const std::string& key) const;

    /// The sections, those of the user's file first; of several of one name the first.
    std::vector<std::string> sections() const;

    /// The keys of a section, likewise.
    std::vector<std::string> keys(const std::string& section) const;

    bool hasSection(const std::string& section) const;

    /// The lines of a section of the (first) file, each with a zero behind it.
    /// @param most  bytes of the buffer that they are read into, which cuts them; 0 for all
    std::string sectionText(const std::string& section, DWORD most = 0) const;

    /// The names of all section lines of the (first) file, in their order.
    std::vector<std::string> sectionLines() const;

    /// The (first) file's native name.
    const std::string& native() const { return file_.native; }

  private:
    Settings(command::FileArgument file, std::optional<command::FileArgument> application);

    std::vector<std::string> names(const char* section) const;
    std::string read(const char* section, const char* key, const char* defaultText, UINT_PTR from) const;
    std::size_t mostRoom() const;

    command::FileArgument file_;
    std::optional<command::FileArgument> application_;
};

/// A text in the form in which names are equal.
std::string folded(std::string name);

/// A name that was given, in the code page. @throws command::UsageError when no file can hold such a name;
/// command::Failure when the code page cannot express it
std::string sectionNamed(std::string_view utf8);
std::string keyNamed(std::string_view utf8);

/// Why a text (of any encoding that contains ASCII) can be no section or key name; empty when it can.
std::string_view faultOfSection(std::string_view name);
std::string_view faultOfKey(std::string_view name);

/// "[section] key" in UTF-8, for messages.
std::string entryShown(std::string_view section, std::string_view key);

}  // namespace kor::profile
