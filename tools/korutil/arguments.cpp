#include "tools/korutil/arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "tools/korutil/failure.h"

namespace kor::command {

std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t most) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || rest != text.data() + text.size() || value > most) return std::nullopt;
    return value;
}

Arguments::Arguments(std::span<const std::string_view> words, std::span<const Option> known) {
    bool optionsEnded = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (optionsEnded || !word.starts_with("--")) {
            operands_.emplace_back(word);
            continue;
        }
        if (word == "--") {
            optionsEnded = true;
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string_view name = word.substr(2, equals == std::string_view::npos ? equals : equals - 2);
        const auto option =
            std::find_if(known.begin(), known.end(), [&](const Option& o) { return o.name == name; });
        const std::string shown = "option --" + std::string(name);
        if (option == known.end()) throw UsageError("unknown " + shown);
        if (valueOf(name)) throw UsageError(shown + " is given twice");
        std::string value;
        if (equals != std::string_view::npos) {
            if (option->value.empty()) throw UsageError(shown + " takes no value");
            value = word.substr(equals + 1);
        } else if (!option->value.empty()) {
            if (++i == words.size())
                throw UsageError(shown + " needs a value (" + std::string(option->value) + ")");
            value = words[i];
        }
        if (option->most > 0 && !wholeNumber(value, option->most)) {
            throw UsageError(shown + " takes a whole number from 0 to " + std::to_string(option->most) +
                             ", not '" + value + "'");
        }
        given_.push_back({option->name, value});
    }
}

const std::string* Arguments::valueOf(std::string_view option) const {
    const auto found =
        std::find_if(given_.begin(), given_.end(), [&](const Given& g) { return g.name == option; });
    return found == given_.end() ? nullptr : &found->value;
}

std::optional<std::uint64_t> Arguments::number(std::string_view option) const {
    const std::string* text = valueOf(option);
    return text ? wholeNumber(*text, std::numeric_limits<std::uint64_t>::max()) : std::nullopt;
}

}  // namespace kor::command
