#pragma once
// The texts of one language, from a file named after its language number: `1033.txt`.

#include <map>
#include <string>
#include <vector>

#include "resource.h"

namespace korrc {

struct Texts {
    std::uint16_t language;
    std::map<unsigned, std::u16string> byId;
};

/// Reads lines `id<TAB>text` with the escapes \r \n \t \\.
Texts readTexts(const std::string& path);

/// The texts as string resources: blocks of sixteen, the first block of which is number 1.
std::vector<Resource> stringBlocks(const Texts& texts);

}  // namespace korrc
