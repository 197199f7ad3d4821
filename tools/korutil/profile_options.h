#pragma once
// The options that commands for settings share.

#include <string>

#include "tools/korutil/arguments.h"
#include "tools/korutil/profile_settings.h"

namespace kor::command {

inline constexpr Option kApplicationOption{"application", "FILE2",
                                           "what FILE lacks is read from the installation's file FILE2"};
inline constexpr Option kOriginOption{"origin", "", "show which file each value comes from"};
inline constexpr Option kJsonOption{"json", "", "write JSON"};

/// The settings that the first operand and --application name. @throws Failure
profile::Settings settingsOf(const Arguments& arguments);

/// The name of the file that a value stands in, as JSON.
std::string fileAsJson(const profile::Setting& setting);

}  // namespace kor::command
