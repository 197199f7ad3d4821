#include "tools/korutil/profile_options.h"

#include "tools/korutil/json.h"

namespace kor::command {

profile::Settings settingsOf(const Arguments& arguments) {
    const std::string* application = arguments.valueOf(kApplicationOption.name);
    return application ? profile::Settings::ofUser(arguments.operand(0), *application)
                       : profile::Settings::ofFile(arguments.operand(0));
}

std::string fileAsJson(const profile::Setting& setting) {
    std::string text;
    json::appendString(text, setting.file->shown);
    return text;
}

}  // namespace kor::command
