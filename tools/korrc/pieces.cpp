#include "pieces.h"

#include <set>
#include <sstream>
#include <utility>

#include "cursor.h"

namespace korrc {
namespace {

constexpr unsigned kMostUnits = 0x7FFF;  // of a coordinate in a dialog

struct Control {
    int line;
    std::string kind;
    unsigned id, x, y, width, height, caption;
};

struct Dialog {
    int line;
    unsigned id, width, height, caption;
    std::vector<Control> controls;
};

// Window styles of the platform.
constexpr std::size_t kChildVisible = 0x50000000;
constexpr std::size_t kTabStop = 0x00010000;
constexpr std::size_t kDefaultButton = 0x1;
constexpr std::size_t kNoPrefix = 0x80;
constexpr std::size_t kStaticIcon = 0x3;
constexpr std::size_t kDialogStyle = 0x80C800C0;  // a modal frame with caption and system menu, own font
constexpr std::size_t kButtonClass = 0x80;
constexpr std::size_t kStaticClass = 0x82;

class Parser {
  public:
    Parser(const std::string& path, const std::vector<Texts>& languages)
        : path_(path), languages_(languages), lines_(readLines(path)) {}

    std::vector<Resource> run() {
        while (next_ < lines_.size()) {
            begin(lines_[next_++]);
            std::string kind;
            words_ >> kind;
            if (kind == "dialog") {
                dialog();
            } else if (kind == "cursor") {
                cursor();
            } else if (kind == "data") {
                data();
            } else if (kind == "numbers") {
                numbers();
            } else {
                fail("unknown piece '" + kind + "'");
            }
        }
        return std::move(resources_);
    }

  private:
    [[noreturn]] void fail(const std::string& reason) const { throw SourceError(path_, line_, reason); }

    void begin(const Line& line) {
        line_ = line.number;
        words_ = std::istringstream(line.text);
    }

    unsigned number(const char* what, unsigned most = kMostUnits) {
        std::string word;
        words_ >> word;
        const auto value = parseNumber(word, most);
        if (!value) fail(std::string(what) + " is not a number from 0 to " + std::to_string(most));
        return *value;
    }

    void endOfLine() {
        std::string word;
        if (words_ >> word) fail("'" + word + "' is too much");
    }

    void add(unsigned type, unsigned id, std::uint16_t language, Bytes bytes) {
        if (!known_.emplace(type, id, language).second)
            fail("number " + std::to_string(id) + " stands here twice");
        resources_.push_back(
            {static_cast<std::uint16_t>(type), static_cast<std::uint16_t>(id), language, std::move(bytes)});
    }

    // The next line of a piece that ends with "end"; false at its end.
    bool nextLine() {
        if (next_ == lines_.size()) fail("the piece has no end");
        begin(lines_[next_++]);
        std::string word;
        words_ >> word;
        if (word == "end") return false;
        words_ = std::istringstream(lines_[next_ - 1].text);
        return true;
    }

    void dialog() {
        Dialog result{line_,
                      number("the number", 0xFFFF),
                      number("the width"),
                      number("the height"),
                      number("the caption", 0xFFFF),
                      {}};
        endOfLine();
        while (nextLine())
            result.controls.push_back(control());
        for (const Texts& texts : languages_) {
            line_ = result.line;
            Bytes bytes = compile(result, texts);
            add(kDialog, result.id, texts.language, std::move(bytes));
        }
    }

    Control control() {
        std::string kind;
        words_ >> kind;
        if (kind != "text" && kind != "icon" && kind != "button") fail("unknown control '" + kind + "'");
        Control result{line_,
                       kind,
                       number("the number", 0xFFFF),
                       number("x"),
                       number("y"),
                       number("the width"),
                       number("the height"),
                       kind == "icon" ? 0 : number("the caption", 0xFFFF)};
        endOfLine();
        return result;
    }

    std::u16string caption(unsigned id, const Texts& texts) const {
        if (id == 0) return {};
        const auto found = texts.byId.find(id);
        if (found == texts.byId.end()) {
            fail("language " + std::to_string(texts.language) + " has no text " + std::to_string(id));
        }
        return found->second;
    }

    Bytes compile(const Dialog& dialog, const Texts& texts) {
        Bytes bytes;
        Writer writer(bytes);
        writer.dword(kDialogStyle);
        writer.dword(0);
        writer.word(dialog.controls.size());
        for (const unsigned field : {0u, 0u, dialog.width, dialog.height})
            writer.word(field);
        writer.word(0);  // no menu
        writer.word(0);  // the system's dialog class
        writer.text(caption(dialog.caption, texts));
        writer.word(8);
        writer.text(u"MS Shell Dlg");
        bool defaultGiven = false;
        for (const Control& control : dialog.controls) {
            line_ = control.line;
            const bool button = control.kind == "button";
            std::size_t style = kChildVisible | (button                   ? kTabStop
                                                 : control.kind == "icon" ? kStaticIcon
                                                                          : kNoPrefix);
            if (button && !std::exchange(defaultGiven, true)) style |= kDefaultButton;
            writer.align(4);
            writer.dword(style);
            writer.dword(0);
            for (const unsigned field : {control.x, control.y, control.width, control.height, control.id}) {
                writer.word(field);
            }
            writer.word(0xFFFF);
            writer.word(button ? kButtonClass : kStaticClass);
            writer.text(caption(control.caption, texts));
            writer.word(0);  // no creation data
        }
        return bytes;
    }

    void cursor() {
        const unsigned id = number("the number", 0xFFFF);
        Picture picture{number("x", kCursorSide - 1), number("y", kCursorSide - 1), {}};
        endOfLine();
        if (id == 0) fail("the number is 0");
        while (nextLine()) {
            const std::string& row = lines_[next_ - 1].text;
            const std::size_t start = std::min(row.find_first_not_of(' '), row.size());
            picture.rows.push_back(row.substr(start));
            if (const char* fault = picture.fault()) fail(fault);
        }
        ++cursors_;
        add(kCursor, cursors_, kNeutral, cursorImage(picture));
        add(kGroupCursor, id, kNeutral, cursorGroup(cursors_));
    }

    void data() {
        const unsigned type = number("the type", 0xFFFF), id = number("the number", 0xFFFF);
        std::string file;
        words_ >> file;
        if (file.empty()) fail("no file is named");
        endOfLine();
        add(type, id, kNeutral, readFile(folderOf(path_) + file));
    }

    void numbers() {
        const unsigned type = number("the type", 0xFFFF), id = number("the number", 0xFFFF);
        Bytes bytes;
        Writer writer(bytes);
        while (words_ >> std::ws, words_.peek() != std::istringstream::traits_type::eof()) {
            writer.dword(number("the value", 0xFFFFFFFF));
        }
        add(type, id, kNeutral, std::move(bytes));
    }

    const std::string& path_;
    const std::vector<Texts>& languages_;
    std::vector<Line> lines_;
    std::size_t next_ = 0;
    int line_ = 0;
    std::istringstream words_;
    unsigned cursors_ = 0;
    std::set<std::tuple<unsigned, unsigned, std::uint16_t>> known_;
    std::vector<Resource> resources_;
};

}  // namespace

std::vector<Resource> readPieces(const std::string& path, const std::vector<Texts>& languages) {
    return Parser(path, languages).run();
}

}  // namespace korrc
