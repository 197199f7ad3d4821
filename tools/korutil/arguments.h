#pragma once
// The words of a command line, taken apart: options begin with two dashes, "--" ends them, everything else is
// an operand. A word with one dash is therefore always a value (-40, -Infinity).

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kor::command {

struct Option {
    std::string_view name;   ///< without the dashes
    std::string_view value;  ///< what its value is called in the help; empty when it takes none
    std::string_view help;
    std::uint64_t most = 0;   ///< its value is a whole number up to this; 0: any text
    bool isRequired = false;  ///< the command does nothing without it
};

class Arguments {
  public:
    /// Takes the words after the command's name apart; an option's value stands in the next word or after
    /// "=".
    /// @throws UsageError for an unknown option, one given twice, a missing, a superfluous or a wrong value
    Arguments(std::span<const std::string_view> words, std::span<const Option> known);

    bool has(std::string_view option) const { return valueOf(option) != nullptr; }

    /// The option's value; null when it was not given.
    const std::string* valueOf(std::string_view option) const;

    /// The option's value as a whole number, decimal or 0x and hexadecimal; nothing when it was not given.
    std::optional<std::uint64_t> number(std::string_view option) const;

    const std::vector<std::string>& operands() const { return operands_; }
    const std::string& operand(std::size_t index) const { return operands_.at(index); }

  private:
    struct Given {
        std::string_view name;
        std::string value;
    };

    std::vector<Given> given_;
    std::vector<std::string> operands_;
};

/// A whole number from 0 to most, decimal or 0x and hexadecimal; nothing when the text is anything else.
std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t most);

}  // namespace kor::command
