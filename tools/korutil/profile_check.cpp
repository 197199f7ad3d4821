#include "tools/korutil/profile_check.h"

#include <algorithm>
#include <unordered_map>

#include "platform/posix/kernel/profile_line.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/input.h"
#include "tools/korutil/profile_content.h"
#include "tools/korutil/profile_settings.h"

namespace kor::profile {
namespace {

// Room that the library's readers have for a name or a text, a number, a list of numbers.
constexpr std::size_t kMostText = 259;
constexpr std::size_t kMostNumber = 127;
constexpr std::size_t kMostNumbers = 519;
constexpr std::size_t kMostCompared = 65535;

bool consistsOf(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

bool isBlank(char c) { return withoutProfileBlanks(std::string_view(&c, 1)).empty(); }

// What stands in a value like a comment behind it; empty when nothing does.
std::string_view commentIn(std::string_view value) {
    for (std::size_t at = 1; at < value.size(); ++at) {
        if ((value[at] == ';' || value[at] == '#') && isBlank(value[at - 1])) return value.substr(at, 1);
    }
    return {};
}

// Never true in a code page of single bytes.
bool isLeadByte(unsigned char byte) { return IsDBCSLeadByte(byte) != FALSE; }

// Where a section's name ends; npos when it does not.
std::size_t closingBracket(std::string_view text, ProfileLeadByte isLead) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == ']') return at;
        if (isLead && isLead(static_cast<unsigned char>(text[at]))) ++at;
    }
    return std::string_view::npos;
}

class Checker {
  public:
    Checker(const command::FileArgument& file, const CheckRules& rules, const Report& report)
        : settings_(Settings::ofFile(file.shown)),
          content_(command::readInput(file.shown)),
          isLead_(content_.isUnicode() ? nullptr : isLeadByte),
          rules_(rules),
          report_(report) {}

    void check() {
        const std::string_view text = content_.text();
        const bool hasLineFeeds = text.find('\n') != std::string_view::npos;
        isUtf8Reported_ = !content_.looksLikeUtf8();
        for (std::size_t at = 0; at < text.size();) {
            const ProfileLineSpan span = profileLineAt(text, at);
            line(text.substr(span.begin, span.end - span.begin));
            const std::string_view end = text.substr(span.end, span.next - span.end);
            if (end == "\r" && hasLineFeeds) {
                found("a carriage return without a line feed ends the line");
            } else {
                ++line_;
            }
            at = span.next;
        }
    }

  private:
    using Lines = std::unordered_map<std::string, std::uint64_t>;

    void found(std::string_view reason) const { report_(line_, reason); }
    void layout(const std::string& reason) const {
        if (!rules_.ignoresLayout) found(reason);
    }

    std::string quoted(std::string_view part) const { return '\'' + content_.shown(part) + '\''; }

    // Where the same name stood first; 0 when it is the first.
    std::uint64_t firstOf(Lines& lines, std::string_view name) const {
        const auto [known, isNew] =
            lines.try_emplace(folded(content_.inPage(name).value_or(std::string(name))), line_);
        return isNew ? 0 : known->second;
    }

    void line(std::string_view text) {
        const ProfileLine parsed = readProfileLine(text, isLead_);
        if (parsed.kind == ProfileLineKind::section) {
            section(withoutProfileBlanks(text), parsed.name);
            return;
        }
        if (parsed.kind != ProfileLineKind::key || isUnread_) return;
        if (!hasSection_) {
            found("it stands before the first section");
        } else if (!parsed.hasValue) {
            found("there is no '='");
            firstOf(keys_, parsed.name);  // it hides what follows all the same
        } else {
            setting(text, parsed);
        }
    }

    void section(std::string_view text, std::string_view name) {
        section_ = name;
        keys_.clear();
        hasSection_ = true;
        isUnread_ = false;
        characters(text);
        const std::size_t end = closingBracket(text, isLead_);
        if (end == std::string_view::npos)
            found("there is no ']'; the section's name is the rest of the line");
        if (end < text.size() - 1) found("what stands behind ']' is not read");
        if (name.empty()) found("the section has no name");
        length("the section's name", name, kMostText);
        if (withoutProfileBlanks(text.substr(1, end - 1)).size() < text.substr(1, end - 1).size())
            layout("the blanks around the section's name are not part of it");
        if (const std::uint64_t first = firstOf(sections_, name)) {
            isUnread_ = true;
            found("section " + quoted(name) + " stands on line " + std::to_string(first) +
                  " already; nothing below this one is read");
        }
    }

    void setting(std::string_view text, const ProfileLine& parsed) {
        characters(text);
        if (parsed.name.empty()) return found("there is no key before '='");
        if (const std::uint64_t first = firstOf(keys_, parsed.name)) {
            return found("key " + quoted(parsed.name) + " stands on line " + std::to_string(first) +
                         " of this section already; this one is not read");
        }
        if (parsed.name.starts_with('#')) found("'#' begins no comment; the line is a setting");
        const std::string_view value = withoutProfileQuotes(parsed.value);
        blanks(text, parsed);
        if (value.size() != parsed.value.size()) layout("the quotes around the value are not read");
        if (const std::string_view sign = commentIn(value); !sign.empty())
            found("what stands behind '" + std::string(sign) + "' is no comment, but read with the value");
        length("the key", parsed.name, kMostText);
        lengthOfValue(value);
        compare(parsed.name, value);
    }

    void characters(std::string_view text) {
        if (text.find('\0') != std::string_view::npos)
            found("it holds a zero byte; what stands behind it is not read");
        if (!isUtf8Reported_ && std::any_of(text.begin(), text.end(), [](char c) { return c < 0; })) {
            isUtf8Reported_ = true;
            found("the file looks like UTF-8, but without a byte-order mark it is not read as that: " +
                  quoted(text));
        }
        if (const std::string fault = content_.faultIn(text); !fault.empty()) found(fault);
    }

    void blanks(std::string_view text, const ProfileLine& parsed) const {
        const std::string_view before = text.substr(0, text.find('='));
        const std::string_view behind = text.substr(std::min(before.size() + 1, text.size()));
        std::string where;
        const auto add = [&](bool isThere, std::string_view place) {
            if (isThere) where += (where.empty() ? "" : ", ") + std::string(place);
        };
        add(isBlank(before.front()), "before the key");
        add(isBlank(before.back()), "before '='");
        add(!behind.empty() && isBlank(behind.front()), "behind '='");
        add(!parsed.value.empty() && isBlank(behind.back()), "at the end");
        if (!where.empty()) layout("the blanks " + where + " are not read");
    }

    void length(std::string_view what, std::string_view part, std::size_t most) const {
        if (part.size() <= most) return;  // UTF-8 is never shorter than the code page
        const std::size_t size =
            content_.isUnicode() ? content_.inPage(part).value_or(std::string(part)).size() : part.size();
        if (size > most) {
            found(std::string(what) + " has " + std::to_string(size) + " characters; many readers take " +
                  std::to_string(most));
        }
    }

    void lengthOfValue(std::string_view value) const {
        if (value.size() <= kMostNumber) return;
        if (value.size() % 2 == 0 && consistsOf(value, "0123456789ABCDEFabcdef"))
            return;  // bytes: any length
        if (consistsOf(value, "0123456789+-.eE")) return length("the number", value, kMostNumber);
        if (consistsOf(value, "0123456789+-.eE,")) return length("the list of numbers", value, kMostNumbers);
        length("the value", value, kMostText);
    }

    // Whatever the reason: what the library reads must be what stands there.
    void compare(std::string_view key, std::string_view value) const {
        if (value.size() > kMostCompared) return;
        const auto section = content_.inPage(section_);
        const auto name = content_.inPage(key);
        const auto written = content_.inPage(value);
        if (!section || !name || !written) return;
        const auto setting = settings_.find(*section, *name);
        if (!setting) {
            found("key " + quoted(key) + " is not found by the library");
        } else if (setting->value != *written) {
            found("it is read as '" + code_page::toUtf8(setting->value) + '\'');
        }
    }

    Settings settings_;
    Content content_;
    ProfileLeadByte isLead_;
    const CheckRules& rules_;
    const Report& report_;
    std::uint64_t line_ = 1;
    std::string_view section_;
    bool hasSection_ = false;
    bool isUnread_ = false;  // a section of that name was there before
    bool isUtf8Reported_ = false;
    Lines sections_;
    Lines keys_;
};

}  // namespace

void checkProfile(const command::FileArgument& file, const CheckRules& rules, const Report& report) {
    Checker(file, rules, report).check();
}

}  // namespace kor::profile
