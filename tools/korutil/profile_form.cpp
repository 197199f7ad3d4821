#include "tools/korutil/profile_form.h"

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"

namespace kor::profile {

Form formOf(const command::Arguments& arguments) {
    Form form = Form::kText;
    std::string_view given;
    for (std::size_t i = 0; i < kFormOptions.size(); ++i) {
        const std::string_view name = kFormOptions[i].name;
        if (!arguments.has(name)) continue;
        if (!given.empty()) {
            throw command::UsageError("--" + std::string(given) + " and --" + std::string(name) +
                                      " exclude each other");
        }
        given = name;
        form = static_cast<Form>(i + 1);
    }
    return form;
}

std::string jsonText(std::string_view text) { return code_page::quoted(code_page::decode(text)); }

}  // namespace kor::profile
