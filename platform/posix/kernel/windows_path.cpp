#include "platform/posix/kernel/windows_path.h"

#include <algorithm>
#include <array>

#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

constexpr std::string_view kDevicePrefix = "\\\\.\\";
constexpr std::string_view kPlainPrefix = "\\\\?\\";

constexpr bool isSeparator(char character) { return character == '\\' || character == '/'; }

std::vector<std::string_view> split(std::string_view path) {
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const auto* end = std::find_if(path.begin(), path.end(), isSeparator);
        const auto length = static_cast<std::size_t>(end - path.begin());
        if (length != 0) parts.push_back(path.substr(0, length));
        path.remove_prefix(std::min(path.size(), length + 1));
    }
    return parts;
}

std::string_view withoutTrailing(std::string_view text, std::string_view characters) {
    const std::size_t last = text.find_last_not_of(characters);
    return last == text.npos ? std::string_view() : text.substr(0, last + 1);
}

// A component before the last one loses one dot, the last one all of its dots and blanks: required.
std::string_view trimmedComponent(std::string_view part, bool last) {
    if (last) return withoutTrailing(part, ". ");
    const bool oneDot = part.size() > 1 && part.back() == '.' && part[part.size() - 2] != '.';
    return oneDot ? part.substr(0, part.size() - 1) : part;
}

// @param root  with its separator
std::string joined(std::string_view root, std::string_view base, std::string_view rest) {
    std::vector<std::string_view> parts = split(base);
    const std::vector<std::string_view> added = split(rest);
    const bool separatorAtEnd = !rest.empty() && isSeparator(rest.back());
    for (std::size_t index = 0; index < added.size(); ++index) {
        const std::string_view part = added[index];
        if (part == ".") continue;
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
            continue;
        }
        const std::string_view kept = trimmedComponent(part, index + 1 == added.size() && !separatorAtEnd);
        if (!kept.empty()) parts.push_back(kept);
    }
    std::string result(root);
    for (const std::string_view part : parts) {
        result += part;
        result += '\\';
    }
    if (!parts.empty() && !separatorAtEnd) result.pop_back();
    return result;
}

// `\\server\share\...` and what follows `\\.\` and `\\?\`: the root cannot be climbed out of.
std::string networkPath(std::string_view path) {
    std::string_view rest = path.substr(2);
    std::string root = "\\\\";
    for (int part = 0; part < 2 && !rest.empty(); ++part) {
        const auto* end = std::find_if(rest.begin(), rest.end(), isSeparator);
        const auto length = static_cast<std::size_t>(end - rest.begin());
        root += rest.substr(0, length);
        rest.remove_prefix(length);
        if (rest.empty()) return root;
        root += '\\';
        rest.remove_prefix(1);
    }
    return joined(root, {}, rest);
}

// The device that the path's last component names, as it is spelled there; empty when none.
std::string_view deviceOf(std::string_view path) {
    if (path.empty() || isSeparator(path.back())) return {};
    std::string_view name = path;
    const auto last = std::find_if(path.rbegin(), path.rend(), isSeparator);
    name.remove_prefix(static_cast<std::size_t>(path.rend() - last));
    if (name.size() > 2 && name[1] == ':') name.remove_prefix(2);
    if (!isDeviceName(name)) return {};
    return withoutTrailing(name.substr(0, name.find_first_of(".:")), " ");
}

}  // namespace

bool isDeviceName(std::string_view component) {
    constexpr std::array<std::string_view, 6> kNames = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    const std::string_view stem = withoutTrailing(component.substr(0, component.find_first_of(".:")), " ");
    if (stem.size() < 3 || stem.size() > 7) return false;
    const std::string name = foldedName(stem);
    if (std::find(kNames.begin(), kNames.end(), name) != kNames.end()) return true;
    return name.size() == 4 && (name.starts_with("COM") || name.starts_with("LPT")) && name[3] >= '1' &&
           name[3] <= '9';
}

bool isValidComponent(std::string_view component) {
    return !component.empty() && std::all_of(component.begin(), component.end(), [](char character) {
        constexpr std::string_view kReserved = "<>:\"|?*/\\";
        return static_cast<unsigned char>(character) >= 0x20 && kReserved.find(character) == kReserved.npos;
    });
}

std::vector<std::string_view> componentsOf(std::string_view path) {
    return split(path.substr(std::min<std::size_t>(2, path.size())));
}

std::optional<std::string> fullPath(std::string_view path, const CurrentFolders& folders) {
    if (path.empty()) return std::nullopt;
    if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
        const bool plain = path.size() >= 4 && (path[2] == '?' || path[2] == '.') && isSeparator(path[3]);
        if (!plain) return networkPath(path);
        const std::string_view prefix = path[2] == '?' ? kPlainPrefix : kDevicePrefix;
        const std::string_view rest = path.substr(4);
        if (rest.size() < 2 || rest[1] != ':') return std::string(prefix) + std::string(rest);
        return joined(std::string(prefix) + std::string(rest.substr(0, 2)) + '\\', {}, rest.substr(2));
    }
    if (const std::string_view device = deviceOf(path); !device.empty()) {
        return std::string(kDevicePrefix) + std::string(device);
    }
    if (path.size() >= 2 && path[1] == ':') {
        const std::string root = std::string(path.substr(0, 2)) + '\\';
        const std::string_view rest = path.substr(2);
        if (!rest.empty() && isSeparator(rest[0])) return joined(root, {}, rest);
        const std::string current = folders.currentOf(path[0]);
        if (current.size() < 3) return std::nullopt;
        return joined(root, std::string_view(current).substr(2), rest);
    }
    const std::string current = folders.current();
    const std::string root = current.substr(0, 2) + '\\';
    if (isSeparator(path[0])) return joined(root, {}, path);
    if (current.size() < 3) return std::nullopt;
    return joined(root, std::string_view(current).substr(2), path);
}

}  // namespace kor
