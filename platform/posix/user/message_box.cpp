#include "korutil/platform/message_box.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/display_text.h"
#include "platform/posix/kernel/with_memory.h"
#include "platform/posix/user/terminal.h"

namespace {

struct Button {
    int id;
    const char* name;
};

constexpr std::array<std::array<Button, 3>, 7> kButtons{{
    {{{IDOK, "OK"}}},
    {{{IDOK, "OK"}, {IDCANCEL, "Cancel"}}},
    {{{IDABORT, "Abort"}, {IDRETRY, "Retry"}, {IDIGNORE, "Ignore"}}},
    {{{IDYES, "Yes"}, {IDNO, "No"}, {IDCANCEL, "Cancel"}}},
    {{{IDYES, "Yes"}, {IDNO, "No"}}},
    {{{IDRETRY, "Retry"}, {IDCANCEL, "Cancel"}}},
    {{{IDCANCEL, "Cancel"}, {IDTRYAGAIN, "Try Again"}, {IDCONTINUE, "Continue"}}},
}};

std::span<const Button> buttonsOf(UINT style) {
    const auto& row = kButtons[style & MB_TYPEMASK];
    const auto end =
        std::find_if(row.begin(), row.end(), [](const Button& button) { return button.id == 0; });
    return {row.begin(), end};
}

// A default button beyond the last one is the first one.
std::size_t defaultOf(std::span<const Button> buttons, UINT style) {
    const std::size_t index = (style & MB_DEFMASK) / MB_DEFBUTTON2;
    return index < buttons.size() ? index : 0;
}

// What of a text is plain ASCII, a piece at a time.
void printPlain(const char* text) {
    for (; text && *text; ++text) {
        const bool plain = (*text >= ' ' && *text <= '~') || *text == '\n';
        if (plain && write(STDERR_FILENO, text, 1) < 0 && errno != EINTR) return;
    }
}

// A box may say that memory is short, and must then do without.
void show(const char* caption, const char* text) {
    try {
        std::string shown = kor::displayText(caption) + ": " + kor::displayText(text);
        shown.erase(shown.find_last_not_of('\n') + 1);
        kor::print(shown + "\n");
    } catch (const std::bad_alloc&) {
        for (const char* part : {caption, ": ", text, "\n"})
            printPlain(part);
    }
}

// The one button whose name starts with the answer, without regard to case; null when there is none, or
// several.
const Button* chosen(std::span<const Button> buttons, const std::string& answer) {
    const Button* found = nullptr;
    for (const Button& button : buttons) {
        if (strncasecmp(button.name, answer.c_str(), answer.size()) != 0) continue;
        if (found) return nullptr;
        found = &button;
    }
    return found;
}

int ask(std::span<const Button> buttons, std::size_t standard) {
    constexpr std::size_t kLongestAnswer = 256;
    std::string prompt;
    for (const Button& button : buttons)
        prompt += std::string(prompt.empty() ? "" : " / ") + button.name;
    prompt += std::string(" [") + buttons[standard].name + "]: ";
    std::string answer;
    for (;;) {
        kor::print(prompt);
        if (!kor::readLine(answer, kLongestAnswer)) kor::print("\n");
        answer.erase(0, answer.find_first_not_of(" \t"));
        answer.erase(answer.find_last_not_of(" \t\r") + 1);
        if (answer.empty()) return buttons[standard].id;
        if (const Button* button = chosen(buttons, answer)) return button->id;
    }
}

// A text of the parameter record: itself, or the string of that number.
std::string textOrString(HINSTANCE module, LPCSTR text) {
    if (!IS_INTRESOURCE(text)) return text;
    if (!text) return {};
    std::array<char, 4096> buffer{};
    LoadStringA(module, LOWORD(reinterpret_cast<ULONG_PTR>(text)), buffer.data(),
                static_cast<int>(buffer.size()));
    return buffer.data();
}

}  // namespace

int WINAPI MessageBoxA(HWND, LPCSTR text, LPCSTR caption, UINT style) {
    if ((style & MB_TYPEMASK) >= kButtons.size()) {
        SetLastError(ERROR_INVALID_MSGBOX_STYLE);
        return 0;
    }
    const std::span<const Button> buttons = buttonsOf(style);
    const std::size_t standard = defaultOf(buttons, style);
    const std::lock_guard guard(kor::terminalLock());
    show(caption ? caption : "Error", text);
    const bool canAsk = buttons.size() > 1 && kor::canAsk();
    if (!canAsk) return buttons[standard].id;
    return kor::withMemory(0, [&] { return ask(buttons, standard); });
}

int WINAPI MessageBoxIndirectA(const MSGBOXPARAMSA* parameters) {
    if (!parameters || parameters->cbSize != sizeof(MSGBOXPARAMSA)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return kor::withMemory(0, [parameters] {
        const std::string text = textOrString(parameters->hInstance, parameters->lpszText);
        const std::string caption = textOrString(parameters->hInstance, parameters->lpszCaption);
        return MessageBoxA(parameters->hwndOwner, text.c_str(),
                           parameters->lpszCaption ? caption.c_str() : nullptr, parameters->dwStyle);
    });
}

BOOL WINAPI MessageBeep(UINT) {
    if (isatty(STDERR_FILENO)) kor::print("\a");
    return TRUE;
}
