// korrc: the resource compiler. Text files in; what each target links in, and resource-only libraries, out.

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <map>
#include <optional>
#include <tuple>

#include "outputs.h"
#include "pieces.h"
#include "texts.h"
#include "version.h"

namespace {

constexpr const char* kUsage =
    "usage: korrc --name NAME --version A.B.C --texts LANGID.txt... [--pieces FILE] [--description TEXT] "
    "OUTPUT...\n"
    "\n"
    "  --name NAME         the module's name without extension\n"
    "  --version A.B.C     its version; A.B is what RequiredResourceDllVersion tells\n"
    "  --texts FILE        lines of number, tab and text (UTF-8); the file is named after its language, "
    "1033.txt\n"
    "  --pieces FILE       dialogs, cursors and data\n"
    "  --description TEXT  for the version information\n"
    "outputs:\n"
    "  --res FILE          a compiled resource file for the Windows linker\n"
    "  --table FILE        a source file with the table for a native module\n"
    "  --library FILE      a resource-only library\n";

struct Job {
    std::string name;
    std::string description;
    std::string pieces;
    std::string version;
    std::vector<std::string> texts;
    std::vector<std::pair<std::string, std::string>> outputs;  // option and file
};

std::optional<Job> parseArguments(int count, char** arguments) {
    Job job;
    for (int i = 1; i < count; i += 2) {
        const std::string option = arguments[i];
        if (i + 1 == count) return std::nullopt;
        const std::string value = arguments[i + 1];
        if (option == "--name")
            job.name = value;
        else if (option == "--description")
            job.description = value;
        else if (option == "--pieces")
            job.pieces = value;
        else if (option == "--version")
            job.version = value;
        else if (option == "--texts")
            job.texts.push_back(value);
        else if (option == "--res" || option == "--table" || option == "--library")
            job.outputs.emplace_back(option, value);
        else
            return std::nullopt;
    }
    if (job.name.empty() || job.version.empty() || job.texts.empty() || job.outputs.empty())
        return std::nullopt;
    return job;
}

std::array<unsigned, 3> parseVersion(const std::string& text) {
    std::array<unsigned, 3> version{};
    std::string_view rest = text;
    for (unsigned& part : version) {
        const std::size_t point = rest.find('.');
        const auto number = korrc::parseNumber(rest.substr(0, point), 0xFFFF);
        const bool last = &part == &version.back();
        if (!number || last != (point == std::string_view::npos)) {
            throw korrc::SourceError("--version", "'" + text + "' is not a version as 1.2.0");
        }
        part = *number;
        if (!last) rest.remove_prefix(point + 1);
    }
    return version;
}

std::u16string argumentText(const char* option, const std::string& text) {
    auto wide = korrc::fromUtf8(text);
    if (!wide) throw korrc::SourceError(option, "the text is not UTF-8");
    return *std::move(wide);
}

void run(const Job& job) {
    std::vector<korrc::Texts> languages;
    for (const std::string& path : job.texts) {
        languages.push_back(korrc::readTexts(path));
        for (std::size_t i = 0; i + 1 < languages.size(); ++i) {
            if (languages[i].language == languages.back().language)
                throw korrc::SourceError(path, "the language is given twice");
        }
    }
    const auto number = parseVersion(job.version);
    std::vector<korrc::Resource> resources;
    for (const korrc::Texts& texts : languages) {
        for (korrc::Resource& block : korrc::stringBlocks(texts))
            resources.push_back(std::move(block));
    }
    if (!job.pieces.empty()) {
        for (korrc::Resource& piece : korrc::readPieces(job.pieces, languages))
            resources.push_back(std::move(piece));
    }
    const std::string description = job.description.empty() ? job.name + " resources" : job.description;
    resources.push_back(
        korrc::versionResource({number, argumentText("--name", job.name),
                                argumentText("--description", description), languages.front().language}));
    std::sort(resources.begin(), resources.end(), [](const korrc::Resource& a, const korrc::Resource& b) {
        return std::tie(a.type, a.name, a.language) < std::tie(b.type, b.name, b.language);
    });
    for (const auto& [option, path] : job.outputs) {
        korrc::writeFile(path, option == "--res"     ? korrc::resourceFile(resources)
                               : option == "--table" ? korrc::tableSource(resources)
                                                     : korrc::library(resources, job.name + ".dll",
                                                                      number[0] << 16 | number[1]));
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2 && std::strcmp(arguments[1], "--help") == 0) {
        std::cout << kUsage;
        return 0;
    }
    const auto job = parseArguments(count, arguments);
    if (!job) {
        std::cerr << kUsage;
        return 2;
    }
    try {
        run(*job);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "korrc: " << error.what() << "\n";
        return 1;
    }
}
