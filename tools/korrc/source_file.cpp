#include "source_file.h"

#include <charconv>
#include <fstream>
#include <iterator>

namespace korrc {

Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw SourceError(path, "cannot be opened");
    Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) throw SourceError(path, "cannot be read");
    return bytes;
}

void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw SourceError(path, "cannot be written");
}

std::vector<Line> readLines(const std::string& path) {
    const Bytes bytes = readFile(path);
    std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
    std::vector<Line> lines;
    for (int number = 1; !rest.empty(); ++number) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!line.empty() && line.front() != '#') lines.push_back({number, std::string(line)});
    }
    return lines;
}

std::optional<std::u16string> fromUtf8(std::string_view text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC2 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF5 ? 4
                                                 : 0;
        if (length == 0 || text.size() - i < length) return std::nullopt;
        char32_t point = length == 1 ? lead : lead & (0x7Fu >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return std::nullopt;
            point = (point << 6) | (next & 0x3Fu);
        }
        const bool overlong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
        if (overlong || (point >= 0xD800 && point < 0xE000) || point > 0x10FFFF) return std::nullopt;
        if (point < 0x10000) {
            result += static_cast<char16_t>(point);
        } else {
            result += static_cast<char16_t>(0xD7C0 + (point >> 10));
            result += static_cast<char16_t>(0xDC00 | (point & 0x3FF));
        }
        i += length;
    }
    return result;
}

std::optional<unsigned> parseNumber(std::string_view text, unsigned most) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > most) return std::nullopt;
    return value;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string nameOf(const std::string& path) { return path.substr(folderOf(path).size()); }

}  // namespace korrc
