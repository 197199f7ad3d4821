#pragma once
// The suffixes of a tree's entries in a settings file, and the types that they stand for.

#include <algorithm>
#include <iterator>
#include <string_view>

#include "tools/korutil/profile_settings.h"
#include "tools/korutil/tree_value.h"

namespace kor::profile {

struct Suffix {
    std::string_view text;
    tree::Type type;
};

inline constexpr std::string_view kVersionSuffix = "MVer";

inline constexpr Suffix kSuffixes[] = {
    {"Int", tree::Type::kLong},    {"Flt", tree::Type::kDouble},          {"Pt", tree::Type::kPoint},
    {"Str", tree::Type::kString},  {"FltA", tree::Type::kDoubles},        {"Mem", tree::Type::kMemory},
    {"Sec", tree::Type::kSection}, {kVersionSuffix, tree::Type::kMemory},
};

inline std::string_view suffixOf(tree::Type type) {
    const auto found = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                    [type](const Suffix& suffix) { return suffix.type == type; });
    return found == std::end(kSuffixes) ? "?" : found->text;
}

/// The suffix of that text, without regard to case; null when there is none.
inline const Suffix* suffixNamed(std::string_view text) {
    const auto found = std::find_if(std::begin(kSuffixes), std::end(kSuffixes), [&](const Suffix& suffix) {
        return folded(std::string(suffix.text)) == folded(std::string(text));
    });
    return found == std::end(kSuffixes) ? nullptr : found;
}

/// A key's name and what stands behind its last point; a key without a point has no suffix.
struct SplitKey {
    explicit SplitKey(std::string_view key)
        : name(key.substr(0, key.rfind('.'))),
          suffix(key.find('.') == std::string_view::npos ? nullptr
                                                         : suffixNamed(key.substr(key.rfind('.') + 1))) {}

    std::string_view name;
    const Suffix* suffix;
};

}  // namespace kor::profile
