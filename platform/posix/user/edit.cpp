// Edit controls.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "korutil/platform/control.h"
#include "platform/posix/user/control_procedure.h"
#include "platform/posix/user/cut_text.h"
#include "platform/posix/user/edit_text.h"
#include "platform/posix/user/window_word.h"

namespace kor {
namespace {

constexpr char kBackspace = '\b';

class Edit final : public ControlState {
  public:
    explicit Edit(bool hasLines) : text(hasLines), isMultiLine(hasLines) {}

    EditText text;
    const bool isMultiLine;
    bool isModified = false;
};

bool isReadOnly(HWND window) { return (styleOf(window) & ES_READONLY) != 0; }

// A position or a line number of a message; -1 becomes SIZE_MAX, and so does whatever is not one.
std::size_t positionOf(LPARAM value) {
    const auto number = static_cast<int>(value);
    return number < 0 ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(number);
}

bool isMinusOne(LPARAM value) { return static_cast<int>(value) == -1; }

void tellChange(HWND window) {
    notifyParent(window, EN_UPDATE);
    notifyParent(window, EN_CHANGE);
}

LRESULT setText(HWND window, Edit& edit, LPCSTR text) {
    edit.text.assign(text ? text : "");
    edit.isModified = false;
    // Required: a multi-line control is silent about a text that it is given.
    if (!edit.isMultiLine) tellChange(window);
    return TRUE;
}

void replace(HWND window, Edit& edit, LPCSTR text) {
    const std::size_t before = edit.text.text().size();
    const bool hadSelection = edit.text.start() != edit.text.end();
    const EditText::Change change = edit.text.replace(text ? text : "");
    if (change == EditText::Change::cut) notifyParent(window, EN_MAXTEXT);
    const bool changed =
        change != EditText::Change::none && (hadSelection || edit.text.text().size() != before);
    if (!changed) return;
    edit.isModified = true;
    tellChange(window);
}

LRESULT selection(const EditText& text, WPARAM start, LPARAM end) {
    if (start) *reinterpret_cast<DWORD*>(start) = static_cast<DWORD>(text.start());
    if (end) *reinterpret_cast<DWORD*>(end) = static_cast<DWORD>(text.end());
    constexpr std::size_t kMost = 0xFFFF;
    return text.end() > kMost ? -1 : LRESULT{MAKELONG(text.start(), text.end())};
}

LRESULT select(EditText& text, WPARAM start, LPARAM end) {
    if (isMinusOne(static_cast<LPARAM>(start))) {
        text.selectNothing();
    } else {
        text.select(positionOf(static_cast<LPARAM>(start)), positionOf(end));
    }
    return TRUE;
}

LRESULT lineIndex(EditText& text, LPARAM number) {
    if (isMinusOne(number)) return static_cast<LRESULT>(text.lineStart(text.lineAt(text.caret())));
    const std::size_t line = positionOf(number);
    return line < text.lineCount() ? static_cast<LRESULT>(text.lineStart(line)) : -1;
}

LRESULT lineLength(EditText& text, LPARAM position) {
    if (!isMinusOne(position)) {
        const std::size_t at = positionOf(position);
        return at > text.text().size() ? 0 : static_cast<LRESULT>(text.line(text.lineAt(at)).size());
    }
    const std::size_t first = text.lineAt(text.start()), last = text.lineAt(text.end());
    const std::size_t before = text.start() - text.lineStart(first);
    const std::size_t end = text.lineStart(last) + text.line(last).size();
    return static_cast<LRESULT>(before + (end > text.end() ? end - text.end() : 0));
}

LRESULT copyLine(EditText& text, LPARAM number, char* buffer) {
    WORD size = 0;
    if (!buffer) return 0;
    std::memcpy(&size, buffer, sizeof size);
    // Required: a single-line control has its line under every number.
    const std::size_t wanted = text.lineCount() == 1 ? 0 : positionOf(number);
    if (wanted >= text.lineCount()) return 0;
    const std::string_view line = text.line(wanted);
    const std::size_t length = characterStart(line, size);
    std::memcpy(buffer, line.data(), length);
    return static_cast<LRESULT>(length);
}

void setLimit(Edit& edit, WPARAM limit) {
    constexpr std::size_t kMostInLine = 0x7FFF'FFFE, kMost = 0xFFFF'FFFF;
    const std::size_t most = edit.isMultiLine ? kMost : kMostInLine;
    edit.text.setLimit(limit ? std::min<std::size_t>(limit, most) : most);
}

// What a key brings.
void type(HWND window, Edit& edit, char character) {
    if (isReadOnly(window)) return;
    const bool isControl = static_cast<unsigned char>(character) < ' ' && character != '\t';
    if (character == kBackspace) {
        const std::size_t start = edit.text.start();
        if (start == edit.text.end() && start > 0) {
            const bool isLineEnd = start > 1 && edit.text.text().compare(start - 2, 2, "\r\n") == 0;
            edit.text.select(start - (isLineEnd ? 2 : 1), start);
        }
        replace(window, edit, "");
    } else if (character == '\r' && edit.isMultiLine) {
        replace(window, edit, "\r\n");
    } else if (!isControl) {
        const char text[] = {character, '\0'};
        replace(window, edit, text);
    }
}

// The messages about lines; nothing for another one.
LRESULT handleLine(EditText& text, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto number = static_cast<LPARAM>(wParam);
    switch (message) {
        case EM_GETLINECOUNT:
            return static_cast<LRESULT>(text.lineCount());
        case EM_LINEINDEX:
            return lineIndex(text, number);
        case EM_LINELENGTH:
            return lineLength(text, number);
        case EM_GETLINE:
            return copyLine(text, number, reinterpret_cast<char*>(lParam));
        default:  // EM_LINEFROMCHAR
            return static_cast<LRESULT>(text.lineAt(isMinusOne(number) ? text.start() : positionOf(number)));
    }
}

LRESULT handleText(HWND window, Edit& edit, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETTEXT:
            return setText(window, edit, reinterpret_cast<LPCSTR>(lParam));
        case WM_GETTEXT:
            return copyCut(edit.text.text(), reinterpret_cast<char*>(lParam), wParam);
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(edit.text.text().size());
        case EM_REPLACESEL:
            replace(window, edit, reinterpret_cast<LPCSTR>(lParam));
            return TRUE;
        case WM_CLEAR:
            if (!isReadOnly(window)) replace(window, edit, "");
            return 0;
        default:  // WM_CHAR
            type(window, edit, static_cast<char>(wParam));
            return TRUE;
    }
}

LRESULT handleRest(HWND window, Edit& edit, UINT message, WPARAM wParam, LPARAM lParam) {
    constexpr LRESULT kCode = DLGC_WANTCHARS | DLGC_HASSETSEL | DLGC_WANTARROWS;
    switch (message) {
        case EM_GETMODIFY:
            return edit.isModified;
        case EM_SETMODIFY:
            edit.isModified = wParam != 0;
            return 0;
        case EM_GETSEL:
            return selection(edit.text, wParam, lParam);
        case EM_SETSEL:
            return select(edit.text, wParam, lParam);
        case EM_SETLIMITTEXT:
            setLimit(edit, wParam);
            return 0;
        case EM_GETLIMITTEXT:
            return static_cast<LRESULT>(edit.text.limit());
        case EM_SETREADONLY:
            changeStyle(window, wParam ? ES_READONLY : 0, wParam ? 0 : ES_READONLY);
            return TRUE;
        case WM_GETDLGCODE:
            return edit.isMultiLine ? kCode | DLGC_WANTALLKEYS : kCode;
        case WM_SETFOCUS:
            notifyParent(window, EN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            notifyParent(window, EN_KILLFOCUS);
            return 0;
        case EM_CANUNDO:
        case EM_EMPTYUNDOBUFFER:
        case EM_GETFIRSTVISIBLELINE:
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT handle(HWND window, Edit& edit, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case EM_GETLINECOUNT:
        case EM_LINEINDEX:
        case EM_LINELENGTH:
        case EM_GETLINE:
        case EM_LINEFROMCHAR:
            return handleLine(edit.text, message, wParam, lParam);
        case WM_SETTEXT:
        case WM_GETTEXT:
        case WM_GETTEXTLENGTH:
        case EM_REPLACESEL:
        case WM_CLEAR:
        case WM_CHAR:
            return handleText(window, edit, message, wParam, lParam);
        default:
            return handleRest(window, edit, message, wParam, lParam);
    }
}

LRESULT create(HWND window, const CREATESTRUCTA* given) {
    auto edit = std::make_shared<Edit>((styleOf(window) & ES_MULTILINE) != 0);
    if (given && given->lpszName) edit->text.assign(given->lpszName);
    setControlState(window, std::move(edit));
    return TRUE;
}

}  // namespace

LRESULT CALLBACK editProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return withMemory(LRESULT{0}, [&]() -> LRESULT {
        if (message == WM_NCCREATE) return create(window, reinterpret_cast<const CREATESTRUCTA*>(lParam));
        const auto edit = controlState<Edit>(window);
        if (!edit) return DefWindowProcA(window, message, wParam, lParam);
        try {
            return handle(window, *edit, message, wParam, lParam);
        } catch (const std::bad_alloc&) {
            notifyParent(window, EN_ERRSPACE);
            throw;
        }
    });
}

}  // namespace kor
