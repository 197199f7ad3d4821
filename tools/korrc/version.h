#pragma once
// The version resource.

#include <array>
#include <string>

#include "resource.h"

namespace korrc {

struct Version {
    std::array<unsigned, 3> number{};
    std::u16string name;  // of the module, without extension
    std::u16string description;
    std::uint16_t language = 0;  // of the texts in it
};

Resource versionResource(const Version& version);

}  // namespace korrc
