#include "texts.h"

#include <algorithm>
#include <array>
#include <optional>

namespace korrc {
namespace {

constexpr unsigned kBlock = 16;
constexpr std::size_t kLongestText = 0xFFFF;

// Resolves the escapes; nothing for one that does not exist.
std::optional<std::string> unescape(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        if (++i == text.size()) return std::nullopt;
        switch (text[i]) {
            case 'r':
                result += '\r';
                break;
            case 'n':
                result += '\n';
                break;
            case 't':
                result += '\t';
                break;
            case '\\':
                result += '\\';
                break;
            default:
                return std::nullopt;
        }
    }
    return result;
}

std::u16string parseText(const std::string& path, int line, std::string_view raw) {
    const auto escaped = unescape(raw);
    if (!escaped) throw SourceError(path, line, R"(unknown escape, only \r \n \t \\ exist)");
    const auto text = fromUtf8(*escaped);
    if (!text) throw SourceError(path, line, "the text is not UTF-8");
    if (text->empty()) throw SourceError(path, line, "the text is empty");
    if (text->find(u'\0') != std::u16string::npos)
        throw SourceError(path, line, "the text holds a null character");
    if (text->size() > kLongestText) throw SourceError(path, line, "the text is too long");
    return *text;
}

std::uint16_t languageOf(const std::string& path) {
    const std::string name = nameOf(path);
    const auto language = parseNumber(std::string_view(name).substr(0, name.find('.')), 0xFFFF);
    if (!language || !name.ends_with(".txt")) {
        throw SourceError(path, "the file is not named after its language, as in 1033.txt");
    }
    return static_cast<std::uint16_t>(*language);
}

}  // namespace

Texts readTexts(const std::string& path) {
    Texts texts{languageOf(path), {}};
    std::map<unsigned, int> lineOf;
    for (const Line& line : readLines(path)) {
        const std::size_t tab = line.text.find('\t');
        if (tab == std::string::npos) throw SourceError(path, line.number, "no tab between number and text");
        const auto id = parseNumber(std::string_view(line.text).substr(0, tab), 0xFFFF);
        if (!id || *id == 0) throw SourceError(path, line.number, "the number is not one from 1 to 65535");
        const auto [first, isNew] = lineOf.emplace(*id, line.number);
        if (!isNew) {
            throw SourceError(path, line.number,
                              "number " + std::to_string(*id) + " stands in line " +
                                  std::to_string(first->second) + " already");
        }
        texts.byId[*id] = parseText(path, line.number, std::string_view(line.text).substr(tab + 1));
    }
    return texts;
}

std::vector<Resource> stringBlocks(const Texts& texts) {
    std::map<unsigned, std::array<std::u16string_view, kBlock>> blocks;
    for (const auto& [id, text] : texts.byId)
        blocks[id / kBlock][id % kBlock] = text;
    std::vector<Resource> resources;
    for (const auto& [number, block] : blocks) {
        Resource resource{kString, static_cast<std::uint16_t>(number + 1), texts.language, {}};
        Writer writer(resource.bytes);
        for (const std::u16string_view text : block) {
            writer.word(text.size());
            writer.units(text);
        }
        resources.push_back(std::move(resource));
    }
    return resources;
}

}  // namespace korrc
