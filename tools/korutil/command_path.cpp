#include <string>

#include "korutil/path.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"

namespace kor::command {
namespace {

constexpr DWORD kListRoom = 32768;  // what settings hold

constexpr std::array kBaseOptions = {
    Option{"base", "B", "full path of a file; a folder ends in a backslash", 0, true}};

#define KOR_AS_IT_STANDS \
    "PATH is a Windows path in UTF-8 and is taken as it stands, whatever lies on the disk. "

constexpr std::string_view kRelativeHelp = KOR_AS_IT_STANDS
    "It is shown as\n"
    "it is seen from the folder of the file B: c:\\a\\b\\c.txt from c:\\a\\x\\y is ..\\b\\c.txt. A path on "
    "another\n"
    "drive, and one that is relative already, stays as it is. Several paths joined by ; are made absolute\n"
    "instead; that is how settings keep lists of paths.\n";

constexpr std::string_view kAbsoluteHelp = KOR_AS_IT_STANDS
    "It is seen\n"
    "from the folder of the file B: ..\\d.txt from c:\\a\\b\\file is c:\\a\\d.txt. Several paths are joined "
    "by ;\n"
    "and those that cannot be made absolute are left out, which is told on standard error. Short names in\n"
    "capitals get a readable case, as beautify gives it.\n";

constexpr std::string_view kBeautifyHelp = KOR_AS_IT_STANDS
    "Short\n"
    "names in capitals get a readable case: C:\\WINNT\\FILE.DAT becomes C:\\Winnt\\File.dat.\n";

constexpr std::string_view kExpandHelp = KOR_AS_IT_STANDS
    "A folder\n"
    "in angle brackets or per cent signs at its beginning, <Images>\\a.tif or %Images%\\a.tif, is replaced "
    "by\n"
    "the folder that the installation's registry key \"Directories\" has under that name.\n";

#undef KOR_AS_IT_STANDS

// A buffer with the path, as large as the library's functions may need.
std::string bufferWith(std::string_view utf8, std::string_view what) {
    if (utf8.empty()) throw Failure(what, "the path is empty");
    std::string path = code_page::fromUtf8(utf8, what);
    const bool isList = path.find(';') != std::string::npos;
    if (path.size() >= (isList ? kListRoom : kPathRoom))
        throw Failure(what, "the path is too long for the library");
    path.resize(kListRoom);
    return path;
}

void show(const std::string& path, Output& output) { output.write(code_page::toUtf8(path.c_str()) + '\n'); }

std::size_t entriesOf(std::string_view list) {
    std::size_t count = 0;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        count += end > 0;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return count;
}

ExitStatus convert(const Arguments& arguments, Output& output, decltype(&sysCvtToAbsPath) function) {
    const std::string& given = arguments.operand(0);
    std::string path = bufferWith(given, "PATH");
    const std::string base = bufferWith(*arguments.valueOf("base"), "B").c_str();
    if (!sysIsAbsPath(base.c_str()) || base.size() >= kPathRoom)
        throw Failure(*arguments.valueOf("base"), "the base is no absolute path, like c:\\folder\\file");
    const std::size_t entries = entriesOf(path.c_str());
    const int count = function(path.data(), base.c_str(), kListRoom);
    if (count <= 0) throw Failure(given, "it cannot be converted for this base");
    if (given.find(';') != std::string::npos && static_cast<std::size_t>(count) < entries) {
        reportLine(given + ": " + std::to_string(entries - static_cast<std::size_t>(count)) + " of " +
                   std::to_string(entries) + " paths cannot be converted and are left out");
    }
    show(path, output);
    return kDone;
}

ExitStatus runRelative(const Arguments& arguments, Output& output) {
    return convert(arguments, output, sysCvtToRelPath);
}

ExitStatus runAbsolute(const Arguments& arguments, Output& output) {
    return convert(arguments, output, sysCvtToAbsPath);
}

ExitStatus runBeautify(const Arguments& arguments, Output& output) {
    std::string path = bufferWith(arguments.operand(0), "PATH");
    sysBeautifyPathname(path.data(), kListRoom);
    show(path, output);
    return kDone;
}

ExitStatus runExpand(const Arguments& arguments, Output& output) {
    std::string path = bufferWith(arguments.operand(0), "PATH");
    if (!sysExpandPath(path.data(), kPathRoom)) {
        throw Failure(
            arguments.operand(0),
            "it cannot be expanded: its closing character is missing, the registry has no folder of "
            "that name, or the path is too long");
    }
    show(path, output);
    return kDone;
}

}  // namespace

const Command kPathRelative = {"path relative", "PATH",       1,          "Shows a path relative to a file",
                               kRelativeHelp,   kBaseOptions, runRelative};

const Command kPathAbsolute = {"path absolute", "PATH",       1,          "Makes a path absolute",
                               kAbsoluteHelp,   kBaseOptions, runAbsolute};

const Command kPathBeautify = {"path beautify", "PATH", 1,          "Gives names in capitals a readable case",
                               kBeautifyHelp,   {},     runBeautify};

const Command kPathExpand = {
    "path expand", "PATH", 1, "Replaces a symbolic folder at a path's beginning", kExpandHelp, {}, runExpand};

}  // namespace kor::command
