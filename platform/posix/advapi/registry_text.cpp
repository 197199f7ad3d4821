#include "platform/posix/advapi/registry_text.h"

#include <algorithm>
#include <charconv>

#include "korutil/platform/registry.h"
#include "platform/posix/advapi/registry_string.h"
#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

constexpr std::string_view kHeader4 = "REGEDIT4";
constexpr std::string_view kHeader5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kNumber = "dword:";
constexpr std::string_view kBytes = "hex";
constexpr std::string_view kBlanks = " \t";
// The system's limits.
constexpr std::ptrdiff_t kLongestKeyName = 255;
constexpr std::ptrdiff_t kLongestValueName = 16383;
constexpr std::size_t kMostBytes = 1 << 20;

constexpr const char* kNoKind = "the value is of no known kind";
constexpr const char* kTooMuch = "there are more keys and values than the file's size allows for";

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Whether nothing but blanks and a comment is left.
bool isEnd(std::string_view text) {
    text = withoutBlanks(text);
    return text.empty() || text.front() == ';';
}

bool goesOn(std::string_view text) {
    const std::size_t last = text.find_last_not_of(kBlanks);
    return last != text.npos && text[last] == '\\';
}

bool isHexDigit(char character) {
    const char small = static_cast<char>(character | 0x20);
    return (character >= '0' && character <= '9') || (small >= 'a' && small <= 'f');
}

// Takes a hexadecimal number of `most` digits at most off a text. @return false when there is none
bool takeHex(std::string_view& text, std::size_t most, DWORD& value) {
    const auto* end = std::find_if_not(text.begin(), text.end(), isHexDigit);
    const auto count = static_cast<std::size_t>(end - text.begin());
    if (count == 0 || count > most) return false;
    std::from_chars(text.data(), text.data() + count, value, 16);
    text.remove_prefix(count);
    return true;
}

std::ptrdiff_t charactersOf(std::string_view utf8) {
    return std::count_if(utf8.begin(), utf8.end(),
                         [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
}

bool isText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

}  // namespace

std::vector<std::string_view> registryKeyNames(std::string_view path) {
    std::vector<std::string_view> names;
    constexpr std::size_t kMost = kDeepestRegistryKey + 2;  // with the root, and one too many
    while (!path.empty() && names.size() < kMost) {
        const std::size_t end = std::min(path.find('\\'), path.size());
        if (end > 0) names.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

bool RegistryText::take(const RegistryLine& line) {
    number_ = line.number;
    const char* fault = line.fault;
    const std::string_view text = withoutBlanks(line.text);
    if (fault) {
        if (line.opensKey) place_ = Place::nowhere;
        finish();
    } else if (!hasHeader_) {
        fault = takeHeader(text);
    } else if (state_ != Bytes::none && !text.empty() && (isHexDigit(text[0]) || text[0] == '\\')) {
        fault = takeBytes(text);
    } else {
        finish();
        fault = takeText(text);
    }
    if (fault) report_(line.number, fault);
    return hasHeader_;
}

void RegistryText::finish() {
    if (state_ == Bytes::go_on) report_(startLine_, "the value's bytes do not end");
    state_ = Bytes::none;
}

const char* RegistryText::takeHeader(std::string_view text) {
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
    hasHeader_ = text == kHeader4 || text == kHeader5;
    wideTexts_ = text == kHeader5;
    return hasHeader_ ? nullptr : "the file does not begin as a registry file";
}

const char* RegistryText::takeText(std::string_view text) {
    if (isEnd(text)) return nullptr;
    if (text[0] == '[') return takeKey(text.substr(1));
    if (text[0] == '"' || text[0] == '@') return takeValue(text);
    return "the line is neither a key, a value nor a comment";
}

const char* RegistryText::takeKey(std::string_view text) {
    place_ = Place::nowhere;
    const std::size_t end = text.rfind(']');
    if (end == text.npos) return "the closing bracket is missing";
    if (!isEnd(text.substr(end + 1))) return "something stands behind the closing bracket";
    const std::string_view path = text.substr(0, end);
    return path.starts_with('-') ? removeKey(path.substr(1)) : enterKey(path);
}

const char* RegistryText::namesBelowRoot(std::string_view path, std::vector<std::string_view>& names) const {
    names = registryKeyNames(path);
    if (names.empty() || foldedName(names[0]) != foldedName(root_)) return "the key is not below this root";
    names.erase(names.begin());
    if (names.size() > kDeepestRegistryKey) return "the key lies too deep";
    const bool fit = std::all_of(names.begin(), names.end(),
                                 [](std::string_view name) { return charactersOf(name) <= kLongestKeyName; });
    return fit ? nullptr : "the key's name is too long";
}

const char* RegistryText::enterKey(std::string_view path) {
    std::vector<std::string_view> names;
    if (const char* fault = namesBelowRoot(path, names)) return fault;
    key_ = RegistryTree::kRoot;
    for (const std::string_view name : names) {
        key_ = tree_.makeKey(key_, foldedName(name));
        if (key_ == RegistryTree::kNone) return kTooMuch;
    }
    place_ = Place::key;
    return nullptr;
}

const char* RegistryText::removeKey(std::string_view path) {
    std::vector<std::string_view> names;
    if (const char* fault = namesBelowRoot(path, names)) return fault;
    if (names.empty()) return "a root cannot be removed";
    RegistryTree::Entry parent = RegistryTree::kRoot;
    for (std::size_t depth = 0; depth + 1 < names.size() && parent != RegistryTree::kNone; ++depth)
        parent = tree_.key(parent, foldedName(names[depth]));
    if (parent != RegistryTree::kNone) tree_.removeKey(parent, foldedName(names.back()));
    return nullptr;
}

const char* RegistryText::takeValue(std::string_view text) {
    if (place_ == Place::none) return "the value stands in front of the first key";
    name_.clear();
    const bool named = text[0] == '"';
    text.remove_prefix(1);
    if (named) {
        if (const char* fault = takeRegistryString(text, name_)) return fault;
        if (charactersOf(name_) > kLongestValueName) return "the value's name is too long";
    }
    text = withoutBlanks(text);
    if (!text.starts_with('=')) return "the equals sign is missing";
    return takeData(withoutBlanks(text.substr(1)));
}

const char* RegistryText::takeData(std::string_view text) {
    if (text.starts_with('"')) return takeString(text.substr(1));
    if (text.starts_with(kNumber)) return takeNumber(text.substr(kNumber.size()));
    if (text.starts_with(kBytes)) return startBytes(text.substr(kBytes.size()));
    if (!text.starts_with('-') || !isEnd(text.substr(1))) return kNoKind;
    if (place_ == Place::key) tree_.removeValue(key_, foldedName(name_));
    return nullptr;
}

const char* RegistryText::takeString(std::string_view text) {
    std::string value;
    if (const char* fault = takeRegistryString(text, value)) return fault;
    if (!isEnd(text)) return "something stands behind the closing quote";
    value = ansiFromUtf8(value);
    return setValue(REG_SZ, std::string_view(value.c_str(), value.size() + 1));
}

const char* RegistryText::takeNumber(std::string_view text) {
    constexpr std::size_t kDigits = 8;
    DWORD value = 0;
    if (!takeHex(text, kDigits, value) || !isEnd(text)) return "the number has not 1 to 8 hexadecimal digits";
    const char bytes[4] = {static_cast<char>(value), static_cast<char>(value >> 8),
                           static_cast<char>(value >> 16), static_cast<char>(value >> 24)};
    return setValue(REG_DWORD, {bytes, sizeof bytes});
}

const char* RegistryText::startBytes(std::string_view text) {
    type_ = REG_BINARY;
    startLine_ = number_;
    bytes_.clear();
    if (text.starts_with('(')) {
        text.remove_prefix(1);
        if (!takeHex(text, 8, type_) || !text.starts_with(')')) return kNoKind;
        text.remove_prefix(1);
    }
    if (!text.starts_with(':')) return kNoKind;
    return takeBytes(text.substr(1));
}

const char* RegistryText::takeBytes(std::string_view text) {
    const bool skipping = state_ == Bytes::skipped;
    bool more = goesOn(text);
    const char* fault = skipping ? nullptr : addBytes(text, more);
    state_ = !more ? Bytes::none : skipping || fault ? Bytes::skipped : Bytes::go_on;
    return state_ == Bytes::none && !skipping && !fault ? endBytes() : fault;
}

// @param more  whether the line seems to go on; on success, whether it does
const char* RegistryText::addBytes(std::string_view text, bool& more) {
    for (text = withoutBlanks(text); !isEnd(text); text = withoutBlanks(text)) {
        if (text[0] == '\\' && withoutBlanks(text.substr(1)).empty()) return nullptr;
        DWORD byte = 0;
        if (!takeHex(text, 2, byte)) return "the value's bytes are not two hexadecimal digits each";
        if (bytes_.size() == kMostBytes) return "the value has too many bytes";
        bytes_ += static_cast<char>(byte);
        text = withoutBlanks(text);
        if (text.starts_with(',')) {
            text.remove_prefix(1);
        } else if (!isEnd(text) && text[0] != '\\') {
            return "a comma is missing between the value's bytes";
        }
    }
    more = false;
    return nullptr;
}

const char* RegistryText::endBytes() {
    if (wideTexts_ && isText(type_)) bytes_ = ansiFromUtf16Bytes(bytes_);
    return setValue(type_, bytes_);
}

const char* RegistryText::setValue(DWORD type, std::string_view bytes) {
    if (place_ != Place::key) return nullptr;
    return tree_.setValue(key_, foldedName(name_), type, bytes) ? nullptr : kTooMuch;
}

}  // namespace kor
